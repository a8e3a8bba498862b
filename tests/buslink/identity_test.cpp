// Who is at an address: every way an identification can take, on a port in memory.
#include "buslink/identity.h"

#include <gtest/gtest.h>

#include "tests/support/hex_bytes.h"
#include "tests/support/scripted_port.h"

namespace ampdesk {
namespace {

using State = Identification::State;
using Texts = std::vector<std::string>;

const std::string k_probe = "01 07 01 11 71 A1";
const std::string k_ask_number = "02 3E 30 37 20 52 44 53 2F 4E 03 30 32 0D";
const std::string k_ask_model = "02 3E 30 37 20 2A 49 44 4E 3F 03 30 32 0D";
const std::string k_status = hex_bytes("06 07 02 11 01 E5 24");
const std::string k_no_content = hex_bytes("06 07 00 E2 31");
const std::string k_number = "RDS/N=0123\x03\r";
const std::string k_model = "TWT*ABC 12 34*9*1\x03\r";

// An amplifier that is asked for what it has said already, taken for another one, or given up too early;
// a number or model that nobody has said.
TEST(Identification, EveryWay) {
    struct Case {
        const char* fault;
        std::deque<std::string> replies;  // empty: silence
        Texts sent;
        State state = State::done;
        Texts found{"0123", "123", "ABC"};          // serial number, number, model
        std::optional<std::string> given_number{};  // nothing: must not be asked for
        std::optional<std::string> given_band{};
        State before = State::working;  // another line is opened when it is there
        bool cut = false;               // the first exchange is
    };
    const Texts all{k_probe, k_ask_number, k_ask_model};
    const Texts no_number{k_probe, k_ask_number, k_ask_number};
    const Texts no_model{k_probe, k_ask_number, k_ask_model, k_ask_model};
    const Texts numberless{k_probe, k_ask_number, k_ask_number, k_ask_model};
    const std::string too_large = "3e9\x03\r";
    const Case cases[] = {
        {"all is told", {k_status, k_number, k_model}, all},
        {"nobody", {""}, {k_probe}, State::no_status, {"", "", ""}},
        {"a reply without content", {k_no_content}, {k_probe}, State::no_status, {"", "", ""}},
        {"a cut probe is no silence",
         {"", k_status, k_number, k_model},
         {k_probe, k_probe, k_ask_number, k_ask_model},
         State::done,
         {"0123", "123", "ABC"},
         {},
         {},
         State::working,
         true},
        {"each text once more",
         {k_status, "", k_number, "", k_model},
         {k_probe, k_ask_number, k_ask_number, k_ask_model, k_ask_model}},
        {"a number is given",
         {k_status, "", "", k_model},
         numberless,
         State::done,
         {"77", "77", "ABC"},
         " 77 "},
        {"an empty number is an answer",
         {k_status, "=\x03\r", k_model},
         all,
         State::done,
         {"5", "5", "ABC"},
         "5"},
        {"no number is given", {k_status, "", ""}, no_number, State::given_up, {"", "", ""}, " "},
        {"a number that no file can be named after",
         {k_status, too_large},
         {k_probe, k_ask_number},
         State::number_too_large,
         {"3e9", "", ""}},
        {"a given one that is too large",
         {k_status, "", ""},
         no_number,
         State::number_too_large,
         {"3e9", "", ""},
         "3e9"},
        {"a band is given", {k_status, k_number}, no_model, State::done, {"0123", "123", "K"}, {}, "K"},
        {"an empty model", {k_status, k_number, "*A\x03\r"}, all, State::done, {"0123", "123", ""}},
        {"another line behind a question",
         {k_status, "", ""},
         no_number,
         State::another_line,
         {"77", "77", ""},
         "77",
         {},
         State::needs_number},
        {"another line behind the last question",
         {k_status, k_number},
         no_model,
         State::another_line,
         {"0123", "123", "K"},
         {},
         "K",
         State::needs_band},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.fault);
        ManualClock clock;
        ScriptedPort port(clock);
        BusLink bus(port, clock);
        bus.open_bus_port("COM1:", 9600, 0, 8, 1);
        for (const std::string& reply : c.replies) port.answer(reply);
        Identification asking(bus, 7);
        const auto another_line = [&] {
            if (asking.state() == c.before && c.before != State::working)
                bus.open_bus_port("COM2:", 9600, 0, 8, 1);
        };
        if (c.cut) {
            bus.begin(*asking.next());
            EXPECT_EQ(asking.due(), std::nullopt);
            clock.sleep_until(bus.due());
            bus.poll();
            bus.cut();
            asking.ended(*bus.poll());
        }
        carry_out(bus, asking);
        EXPECT_EQ(asking.state() == State::needs_number, c.given_number.has_value());
        if (c.given_number) {
            another_line();
            asking.give_serial_number(*c.given_number);
            carry_out(bus, asking);
        }
        EXPECT_EQ(asking.state() == State::needs_band, c.given_band.has_value());
        if (c.given_band) {
            another_line();
            asking.give_band(*c.given_band);
        }
        EXPECT_EQ(asking.state(), c.state);
        EXPECT_EQ((Texts{asking.serial_number(), asking.number(), asking.model()}), c.found);
        EXPECT_EQ(asking.failure(), c.state == State::number_too_large ? "Overflow" : "");
        Texts sent;
        for (const std::string& frame : port.written) sent.push_back(to_hex(frame));
        EXPECT_EQ(sent, c.sent);
        EXPECT_EQ(asking.due(), std::nullopt);
    }
}

}  // namespace
}  // namespace ampdesk
