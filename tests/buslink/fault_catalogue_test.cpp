// The faults of the line, one by one: what an exchange gives and how long it takes, and that the
// exchange after it, with whomever, gets the answer of its own and not what was left over.
#include <gtest/gtest.h>

#include "buslink/bus_link.h"
#include "buslink/wire/binary_frame.h"
#include "buslink/wire/control_characters.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/line_faults.h"

namespace ampdesk {
namespace {

using namespace std::chrono_literals;
using Result = LineFault::Result;

struct Request {
    std::int16_t address;
    std::string command;
    bool text = false;
};

// A line of amplifiers that number their answers.
struct Line {
    explicit Line(bool address_checked)
        : bus(port, clock,
              {.crc = {},
               .reply_address = address_checked ? ReplyAddress::checked : ReplyAddress::ignored,
               .ports = {}}) {
        port.responder = [this](const std::string& frame) {
            return fault != nullptr ? fault->line(frame, own) : ScriptedPort::Answer{{delay, own}};
        };
        bus.open_bus_port("COM2:", 9600, 0, 8, 1);
        exchange({1, "\x11"});  // after an answer nothing old is waited for
        port.written.clear();
    }

    // The reply, empty for none.
    std::string exchange(const Request& request) {
        const std::string value = std::to_string(++number) + "@" + std::to_string(request.address);
        own = request.text ? "RDBAND=" + value + "\x03\r"
                           : build_reply_frame(Crc16{}, k_ack, static_cast<std::uint8_t>(request.address),
                                               request.command + value);
        const Instant start = clock.now();
        std::string reply = "left over";
        const int result = request.text ? bus.text_command(request.address, request.command, reply)
                                        : bus.bus_command(request.address, request.command, reply);
        took = std::chrono::duration_cast<std::chrono::milliseconds>(clock.now() - start);
        EXPECT_EQ(result, request.text ? reply.empty() : reply.size());
        return reply;
    }

    ManualClock clock;
    ScriptedPort port{clock};
    BusLink bus;
    int number = 0;
    std::string own;  // the true reply to the request under way
    const LineFault* fault = nullptr;
    std::chrono::milliseconds delay{0};  // before a reply that no fault hits
    std::chrono::milliseconds took{};
};

// What the exchange that the fault hits must give.
std::string expected_of(const LineFault& fault, const Line& line, bool address_checked) {
    std::string sent;
    for (const auto& arrival : fault.line(line.port.written.front(), line.own)) sent += arrival.bytes;
    switch (fault.result) {
        case Result::own:
            return line.own;
        case Result::as_sent:
            return sent;
        case Result::anothers:
            return address_checked ? line.own : sent.substr(0, sent.size() - line.own.size());
        default:
            return {};
    }
}

class FaultCatalogue : public testing::TestWithParam<LineFault> {};

// Catches whatever a fault can do: a reply that is none, a good one that is lost, a wait that is cut,
// stretched or never ends, and a leftover that is taken for the answer to the next request.
TEST_P(FaultCatalogue, EndsInTimeAndLeavesNothingBehind) {
    const LineFault& fault = GetParam();
    const bool text = fault.name.starts_with("Text");
    const Request binary_one{1, "\x11"};
    const Request text_one{1, "RDBAND", true};
    const Request& first = text ? text_one : binary_one;
    for (const Request& next :
         {first, {2, first.command, text}, {1, "\xA0\x16"}, text ? binary_one : text_one}) {
        for (int way = 0; way < 4; ++way) {
            const bool checked = (way & 1) != 0;
            SCOPED_TRACE("then " + to_hex(next.command) + " to " + std::to_string(next.address) + ", way " +
                         std::to_string(way));
            Line line(checked);
            line.fault = &fault;
            const std::string spoilt = line.exchange(first);
            line.fault = nullptr;
            EXPECT_EQ(to_hex(spoilt), to_hex(expected_of(fault, line, checked)));
            EXPECT_EQ(line.took.count(), fault.ends);
            // A binary frame goes out once, a text once more when nobody has answered in time.
            const std::size_t sendings = text && fault.ends > 394 ? 2 : 1;
            EXPECT_EQ(line.port.written, std::vector(sendings, line.port.written.front()));

            // A reply tells the command that it answers and, where amplifiers send it, the address;
            // which request of the same words it answers nothing tells. A text reply tells nothing.
            const bool alike = next.text == text && next.command == first.command &&
                               (text || next.address == first.address || !checked);
            const std::string late = line.own;
            line.delay = (way & 2) != 0 ? 200ms : 0ms;
            std::string reply = line.exchange(next);
            const bool confused = fault.outlives && alike && line.delay > 0ms;
            if (next.text && !text && reply.ends_with(line.own))
                reply = line.own;  // it has no start, so what is left over stands in front of it
            EXPECT_EQ(to_hex(reply), to_hex(confused ? late : line.own));
            if (!confused) {
                EXPECT_LE(line.took, line.delay + (fault.result == Result::nothing ? 300ms : 0ms));
            }

            // After half a second, when the next visit comes, even that is over.
            line.clock.advance(500ms);
            const std::string last = line.exchange(first);
            EXPECT_EQ(to_hex(last), to_hex(line.own));
            EXPECT_EQ(line.took, line.delay);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Line, FaultCatalogue, testing::ValuesIn(binary_faults()),
                         name_of_fault<testing::TestParamInfo<LineFault>>);
INSTANTIATE_TEST_SUITE_P(TextLine, FaultCatalogue, testing::ValuesIn(text_faults()),
                         name_of_fault<testing::TestParamInfo<LineFault>>);

}  // namespace
}  // namespace ampdesk
