// What comes in on the terminal's line, cut into chunks anywhere: requests are only found behind their
// marker, what is kept is bounded, and what the text box gets is what came. The same bytes go to an
// XMODEM receiver, which must bear them, too.
//
// input: the length of a chunk, that many bytes, and so on.
#include "fuzz/input.h"
#include "terminal/line_buffer.h"
#include "terminal/received_text.h"
#include "terminal/xmodem_receiver.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ampdesk;
    using fuzz::check;
    fuzz::Input input(data, size);
    LineBuffer buffer;
    Instant now{};
    XmodemReceiver receiver(now);
    std::string received;
    std::size_t shown = 0;
    while (!input.empty()) {
        const std::string chunk = input.stretch();
        received += chunk;
        const std::size_t kept = buffer.size();
        const LineBuffer::Received found = buffer.receive(chunk);
        check(found.marked == (chunk.find("\x06\x06") != std::string::npos), "a marker is seen");
        check(!found.overflowed || kept > LineBuffer::k_limit, "only too much is thrown away");
        check(buffer.size() <= LineBuffer::k_limit + chunk.size(), "what is kept is bounded");
        check(found.remote_request != found.requests.empty(), "a request is told");
        for (const std::string& request : found.requests)
            check(request.find('\r') == std::string::npos &&
                      received.find("\x06\x06" + request + '\r') != std::string::npos,
                  "a request is what stood behind a marker");

        const ShownText text = ShowData(shown, chunk);
        check(text.drop <= shown && text.insert.size() <= chunk.size(), "no more is shown than came");
        check(text.insert.find_first_of("\b\n") == std::string::npos, "no control that the box cannot show");
        shown += text.insert.size() - text.drop;
        check(shown <= k_terminal_limit + 255, "the text box is bounded");

        now += std::chrono::milliseconds(100);
        receiver.feed(chunk, now);
        receiver.tick(now);
        receiver.take_output(1024);
        check(receiver.file().size() <= received.size(), "a file is no longer than what came");
        check(receiver.state() != TransferState::done || receiver.file().size() % 128 == 0, "whole blocks");
    }
    return 0;
}
