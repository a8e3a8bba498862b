// TextReplyParser on noise, echoes of its own frame and replies, cut anywhere.
//
// input: unit address, command, then stretches: 0 is our own frame, any other number n is n bytes.
#include <algorithm>

#include "buslink/wire/control_characters.h"
#include "buslink/wire/text_frame.h"
#include "fuzz/input.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ampdesk;
    using fuzz::check;
    fuzz::Input input(data, size);
    const int address = static_cast<int>(input.number());
    std::string command = input.take(input.number() % 16);
    for (char& c : command) c = static_cast<char>(c | ' ');  // the program's own words are plain
    const std::string sent = build_text_frame(address, command);
    check(sent.substr(0, 2) == "\x02>" && sent[4] == ' ' && sent.back() == k_cr, "a well-formed frame");

    TextReplyParser parser(sent);
    std::string stream;
    std::optional<std::string> reply;
    while (!input.empty() && !reply) {
        const unsigned count = input.number();
        const std::string bytes = count == 0 ? sent : input.take(count);
        stream += bytes;
        reply = parser.feed(bytes);
        // The simplest reply there is: it must get through whatever came before it.
        if (!reply && input.empty()) {
            stream += "\rX=1\x03\r";
            reply = parser.feed("\rX=1\x03\r");
            check(reply.has_value(), "a reply behind noise is found");
        }
    }
    if (reply) {
        check(reply->find(k_cr) == reply->size() - 1, "the reply ends at its first CR");
        check(stream.find(*reply) != std::string::npos, "the reply has come in one piece");
        check(!reply->ends_with(sent), "our own frame is no reply");
        check(reply->find(k_etx) != std::string::npos, "no reply without ETX");
    }
    return 0;
}
