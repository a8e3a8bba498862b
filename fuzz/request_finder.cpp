// The simulator's search for command frames in noise, cut anywhere.
//
// input: stretches, each a number that chooses one of the kinds below, and what that kind needs.
#include "demo/request_finder.h"
#include "buslink/wire/binary_frame.h"
#include "buslink/wire/text_frame.h"
#include "fuzz/input.h"
#include "platform/run_time_error.h"

namespace {

using namespace ampdesk;
using fuzz::check;

const Crc16 k_crc;

std::string frame(const demo::Request& request) {
    return request.text
               ? build_text_frame(request.address, request.command)
               : build_command_frame(k_crc, static_cast<std::uint8_t>(request.address), request.command);
}

std::string stretch(fuzz::Input& input) {
    enum Kind { binary, text, spoilt, kinds };
    const unsigned choice = input.number();
    if (choice % 4 >= kinds)
        return input.take(choice / 4);
    demo::Request request{.text = choice % 4 == text, .address = static_cast<int>(input.number())};
    request.command = input.stretch();
    std::string bytes;
    try {
        bytes = frame(request);
    } catch (const RunTimeError&) {
        return request.command;  // no text frame holds that sum
    }
    if (choice % 4 == spoilt) {
        char& hit = bytes[input.number() % bytes.size()];
        hit = static_cast<char>(static_cast<unsigned char>(hit) ^ input.number());
    }
    return bytes;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    demo::RequestFinder by_stretch(k_crc);
    demo::RequestFinder by_byte(k_crc);
    std::string stream;
    const auto feed = [&](demo::RequestFinder& finder, std::string_view bytes) {
        const std::vector<demo::Request> found = finder.feed(bytes);
        for (const demo::Request& request : found) {
            check(stream.find(frame(request)) != std::string::npos, "a request has come in one piece");
            check(!request.text || (request.address >= 0 && request.address <= 99), "two digits of address");
        }
        return found;
    };
    const auto feed_both = [&](const std::string& bytes) {
        stream += bytes;
        std::vector<demo::Request> found;
        for (const char byte : bytes)
            for (demo::Request& request : feed(by_byte, {&byte, 1})) found.push_back(std::move(request));
        return std::pair(feed(by_stretch, bytes), found);
    };
    while (!input.empty()) feed_both(stretch(input));

    // Whatever has begun, a frame's length of bytes that begin nothing ends it.
    feed_both(std::string(2 * k_longest_frame, '\x7F'));
    for (const demo::Request& request :
         {demo::Request{false, 7, "\x11"}, demo::Request{true, 42, "RDBAND"}}) {
        const auto [found, found_by_byte] = feed_both(frame(request));
        check(found == std::vector{request} && found_by_byte == found, "a sound request is found");
    }
    return 0;
}
