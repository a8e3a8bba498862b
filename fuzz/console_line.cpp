// Commands typed into the console: what goes out is what was typed, in one sound frame, or nothing.
//
// input: flags (1 text mode), the typed text up to a line feed, and the bytes that come back.
#include "buslink/wire/crc16.h"
#include "fuzz/input.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scripted_port.h"
#include "tests/support/sent_frame.h"
#include "tools/console.h"

namespace {

using namespace ampdesk;
using fuzz::check;

int digit(char c) {
    const std::string_view digits = "0123456789ABCDEF0123456789abcdef";
    const std::size_t at = digits.find(c);
    return at == std::string_view::npos ? -1 : static_cast<int>(at % 16);
}

// The payload as a person reads the fields; nothing when one is longer than two characters.
std::optional<std::string> typed(const std::string& text) {
    std::string payload(1, '\0');
    std::size_t length = 0;
    bool number = true;
    for (const char c : text) {
        if (c == ' ') {
            payload += '\0';
            length = 0;
            number = true;
            continue;
        }
        number = number && digit(c) >= 0;
        if (number)
            payload.back() = static_cast<char>(payload.back() * 16 + digit(c));
        if (++length > 2)
            return std::nullopt;
    }
    return payload;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const bool in_text = (input.number() & 1U) != 0;
    const std::string text = input.line();
    const std::string answer = input.rest();
    ManualClock clock;
    ScriptedPort port(clock);
    RecordingOperator person;
    BusLink bus(port, clock);
    bus.open_bus_port("COM2:", 9600, 0, 8, 1);
    port.responder = [&](const std::string&) { return ScriptedPort::Answer{{{}, answer}}; };

    Console console(bus, person);
    console.console_mode = in_text ? 0 : Console::k_hex_mode;
    std::optional<Console::Result> result;
    console.on_result = [&](const Console::Result& r) {
        check(!result, "one result");
        result = r;
    };
    console.begin(42, text);
    carry_out(bus, console);
    const auto payload = in_text ? std::optional(text) : typed(text);
    check(result.has_value() == payload.has_value(), "a command is sent, anything else is refused");
    check(person.messages.size() == (payload ? 0U : 1U), "one message for what is refused");
    const bool fits = payload && payload->size() <= 255;
    check(port.written.size() == (fits ? 1U : 0U), "sent once, or not at all");
    if (fits) {
        const std::string& frame = port.written.front();
        check(Crc16().c_chkCRC(frame) == 0 && frame[0] == 1 && frame[1] == 42,
              "a sound frame to the amplifier");
        check(sent_frame(frame).command == *payload, "the payload is what was typed");
    }
    if (result) {
        check(result->answered || result->output.find("Data Recv") != std::string::npos, "an output");
        for (const char c : result->output)
            check(!in_text || (c >= ' ' && c <= '~'), "text mode shows what can be shown");
    }
    return 0;
}
