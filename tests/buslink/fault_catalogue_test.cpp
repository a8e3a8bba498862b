// The faults of the line, one by one: what an exchange gives and how long it takes, and that the
// exchange after it, with whomever, gets the answer of its own and not what was left over.
#include <gtest/gtest.h>

#include "buslink/bus_link.h"
#include "buslink/wire/binary_frame.h"
#include "buslink/wire/control_characters.h"
#include "buslink/wire/text_frame.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/line_faults.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;
using Result = LineFault::Result;

struct Request {
    std::int16_t address;
    std::string command;
    bool text = false;
};

const Request k_first{1, "\x11"};
const Request k_first_text{1, "RDBAND", true};

// A line of amplifiers that number their answers.
struct Line {
    Line(bool address_checked, bool watched)
        : bus(port, clock,
              {.crc = {},
               .reply_address = address_checked ? ReplyAddress::checked : ReplyAddress::ignored,
               .ports = {}}) {
        if (watched)  // input is thrown away in another manner then
            bus.on_traffic = [](const BusTraffic&) {};
        port.responder = [this](const std::string& frame) {
            return fault != nullptr ? fault->line(frame, own) : ScriptedPort::Answer{{delay, own}};
        };
        bus.open_bus_port("COM2:", 9600, 0, 8, 1);
        exchange(k_first);  // after an answer nothing old is waited for
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
        took = std::chrono::duration_cast<milliseconds>(clock.now() - start);
        const int answered = request.text ? 0 : static_cast<int>(reply.size());
        EXPECT_EQ(result, reply.empty() && request.text ? 1 : answered);
        return reply;
    }

    ManualClock clock;
    ScriptedPort port{clock};
    BusLink bus;
    int number = 0;
    std::string own;  // the true reply to the request under way
    const LineFault* fault = nullptr;
    milliseconds delay{0};  // before a reply that no fault hits
    milliseconds took{};
};

class FaultCatalogue : public testing::TestWithParam<LineFault> {
  protected:
    // One exchange that the fault hits; its reply, as it must be.
    static std::string spoilt(Line& line, const Request& request, bool address_checked) {
        const LineFault& fault = GetParam();
        line.fault = &fault;
        const std::string reply = line.exchange(request);
        line.fault = nullptr;
        const std::string frame = line.port.written.front();
        std::string sent;
        for (const auto& arrival : fault.line(frame, line.own)) sent += arrival.bytes;
        std::string expected;
        if (fault.result == Result::own || (fault.result == Result::anothers && address_checked))
            expected = line.own;
        else if (fault.result == Result::as_sent)
            expected = sent;
        else if (fault.result == Result::anothers)
            expected = sent.substr(0, sent.size() - line.own.size());
        EXPECT_EQ(to_hex(reply), to_hex(expected));
        EXPECT_EQ(line.took.count(), fault.ends);
        // A binary frame goes out once, a text once more when nobody has answered in time.
        const bool again = request.text && fault.ends > 394;
        EXPECT_EQ(line.port.written, std::vector(again ? 2U : 1U, frame));
        return line.own;
    }
};

// Catches whatever a fault can do: a reply that is none, a good one that is lost, a wait that is cut,
// stretched or never ends, and a leftover that is taken for the answer to the next request.
TEST_P(FaultCatalogue, EndsInTimeAndLeavesNothingBehind) {
    const LineFault& fault = GetParam();
    const bool text = fault.name.starts_with("Text");
    const Request first = text ? k_first_text : k_first;
    const Request nexts[] = {
        first, {2, first.command, text}, {1, "\xA0\x16", false}, text ? k_first : k_first_text};
    for (const Request& next : nexts) {
        for (int way = 0; way < 8; ++way) {
            const bool checked = (way & 1) != 0;
            const milliseconds delay((way & 2) != 0 ? 200 : 0);
            SCOPED_TRACE("then " + to_hex(next.command) + " to " + std::to_string(next.address) + ", way " +
                         std::to_string(way));
            Line line(checked, (way & 4) != 0);
            const std::string late = spoilt(line, first, checked);
            const bool settling = fault.result == Result::nothing;

            // A reply tells the command that it answers and, where amplifiers send it, the address;
            // which request of the same words it answers nothing tells. A text reply tells nothing.
            const bool alike = next.text == text && next.command == first.command &&
                               (text || next.address == first.address || !checked);
            line.delay = delay;
            std::string reply = line.exchange(next);
            const bool confused = fault.outlives && alike && delay.count() > 0;
            if (next.text && !text && reply.ends_with(line.own))
                reply = line.own;  // it has no start, so what is left over stands in front of it
            EXPECT_EQ(to_hex(reply), to_hex(confused ? late : line.own));
            if (!confused) {
                EXPECT_LE(line.took, delay + milliseconds(settling ? 300 : 0));
            }

            // After half a second, when the next visit comes, even that is over.
            line.clock.advance(milliseconds(500));
            const std::string last = line.exchange(first);
            EXPECT_EQ(to_hex(last), to_hex(line.own));
            EXPECT_EQ(line.took, delay);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Line, FaultCatalogue, testing::ValuesIn(binary_faults()),
                         name_of_fault<testing::TestParamInfo<LineFault>>);
INSTANTIATE_TEST_SUITE_P(TextLine, FaultCatalogue, testing::ValuesIn(text_faults()),
                         name_of_fault<testing::TestParamInfo<LineFault>>);

}  // namespace
}  // namespace ampdesk
