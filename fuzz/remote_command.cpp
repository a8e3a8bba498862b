// Command lines of a remote station: nothing goes out but what the line says, to whom it says.
//
// input: flags (1 port open, 2 a good "rs422.dat" is there), the line up to a line feed, and the bytes
// that come back.
#include <algorithm>
#include <filesystem>

#include "buslink/remote_command.h"
#include "buslink/wire/control_characters.h"
#include "fuzz/input.h"
#include "platform/numbers.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/scripted_port.h"

namespace {

using namespace ampdesk;
using fuzz::check;

struct Frame {
    int address = -1;
    std::string command;
    bool text = false;
};

// Takes a frame apart without any help of the code that built it.
Frame taken_apart(const std::string& bytes) {
    const std::size_t size = bytes.size();
    if (bytes[0] == k_soh) {
        check(size >= 5 && size == static_cast<unsigned char>(bytes[2]) + 5U, "the length is right");
        check(Crc16().c_chkCRC(bytes) == 0, "the CRC is right");
        return {static_cast<unsigned char>(bytes[1]), bytes.substr(3, size - 5)};
    }
    check(size >= 9 && bytes.starts_with("\x02>") && bytes[4] == ' ', "a text frame's beginning");
    check(bytes[size - 4] == k_etx && bytes.back() == k_cr, "a text frame's end");
    unsigned sum = 0;
    for (std::size_t i = 1; i < size - 3; ++i) sum += static_cast<unsigned char>(bytes[i]);
    check(std::stoul(bytes.substr(size - 3, 2), nullptr, 16) == sum >> 8U, "the checksum is the high byte");
    return {(bytes[2] - '0') * 10 + (bytes[3] - '0'), bytes.substr(5, size - 9), true};
}

// The address as a person reads it; nothing when the text is not digits only.
std::optional<int> plain_address(std::string_view text) {
    const std::string_view digits = trimmed(text);
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string_view::npos)
        return std::nullopt;
    const std::size_t significant = std::min(digits.find_first_not_of('0'), digits.size());
    return digits.size() - significant > 2 ? 1000
                                           : std::stoi(std::string(digits.substr(significant)) + "0") / 10;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFolder folder;
    static const std::string without = folder.path() + "/none";
    static const bool prepared = !folder.put("rs422.dat", "RS-422\r\nCOM1:\r\n6\r\n3\r\n0\r\n0\r\n").empty();
    fuzz::Input input(data, size);
    const unsigned flags = input.number();
    const std::string line = input.line();
    const std::string answer = input.rest();

    ManualClock clock;
    ScriptedPort port(clock);
    BusLink bus(port, clock);
    port.responder = [&](const std::string&) { return ScriptedPort::Answer{{{}, answer}}; };
    const bool open = (flags & 1U) != 0;
    if (open)
        bus.open_bus_port("COM2:", 9600, 0, 8, 1);
    std::string output;
    RemoteCommands commands(
        bus, [&](std::string_view text) { output += text; },
        prepared && (flags & 2U) != 0 ? folder.path() : without);
    commands.commCommandProc(line);
    carry_out(bus, commands);

    const bool port_request = line.find("\x02\x02") != std::string::npos;
    const bool as_text = line.find("\x03\x03") != std::string::npos;
    const std::size_t start = line.find('>');
    const std::size_t comma = start == std::string::npos ? start : line.find(',', start);
    std::string_view ordered = trimmed(std::string_view(line).substr(std::min(comma, line.size() - 1) + 1));
    if (ordered.ends_with("\x03\x03"))
        ordered = trimmed(ordered.substr(0, ordered.size() - 2));
    const bool order = comma != std::string::npos && !port_request && open;
    check(order || port.written.empty(), "nothing is sent but for an order, on an open line");
    check(port.written.size() <= (as_text ? 2U : 1U), "nothing is sent twice");
    check(port.opened.size() == (open ? 1U : 0U) || port_request, "only a port request opens the port");
    for (std::size_t i = 0; i < port.written.size(); ++i) {
        const Frame frame = taken_apart(port.written[i]);
        check(frame.text == (as_text && i == 0), "the frame is of the kind that was asked for");
        check(frame.command == (i == 0 ? ordered : "RDSTAT"), "the command is the line's");
        check(frame.address <= 99, "there is such an address");
        const auto address = plain_address(std::string_view(line).substr(start + 1, comma - start - 1));
        check(!address || *address == frame.address, "the address is the line's");
        check(line.size() <= 50 && !frame.command.empty() &&
                  std::all_of(frame.command.begin(), frame.command.end(),
                              [](char c) { return c >= 0x20 && c < 0x7F; }),
              "noise is no order");
    }
    check(output.empty() || (output.ends_with("\r\n") && output.find('\r') == output.size() - 2),
          "one line of answer at most");
    return 0;
}
