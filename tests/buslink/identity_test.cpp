// Who is at an address: every way an identification can take, on a port in memory.
#include "buslink/identity.h"

#include <gtest/gtest.h>

#include "platform/run_time_error.h"
#include "tests/support/bus_rig.h"
#include "tests/support/hex_bytes.h"

namespace ampdesk {
namespace {

using State = Identification::State;

const std::string k_status = hex_bytes("06 07 02 11 01 E5 24");
const std::string k_number = "RDS/N=0123\x03\r";
const std::string k_cut = "~";
const std::string k_model = "TWT*ABC 12 34*9*1\x03\r";

// What has been sent, by letters: the probe, the questions for number and model.
std::string questions(const std::vector<std::string>& frames) {
    const std::map<std::string, char> known{{"01 07 01 11 71 A1", 'p'},
                                            {"02 3E 30 37 20 52 44 53 2F 4E 03 30 32 0D", 'n'},
                                            {"02 3E 30 37 20 2A 49 44 4E 3F 03 30 32 0D", 'm'}};
    std::string letters;
    for (const std::string& frame : frames) letters += known.at(to_hex(frame));
    return letters;
}

// An amplifier that is asked for what it has said already, taken for another one, or given up too early;
// a number or model that nobody has said.
TEST(Identification, EveryWay) {
    struct Case {
        const char* fault;
        std::deque<std::string> replies;  // empty: silence; k_cut: it is not waited for
        std::string sent;
        std::string found;  // serial number, number, model
        State state = State::done;
        std::optional<std::string> given{};  // by a person; nothing: must not be asked for
    };
    using enum Identification::State;
    const Case cases[] = {
        {"all is told", {k_status, k_number, k_model}, "pnm", "0123|123|ABC"},
        {"nobody", {""}, "p", "||", no_status},
        {"a reply without content", {hex_bytes("06 07 00 E2 31")}, "p", "||", no_status},
        {"a cut probe is no silence", {k_cut, k_status, k_number, k_model}, "ppnm", "0123|123|ABC"},
        {"each text once more", {k_status, "", k_number, "", k_model}, "pnnmm", "0123|123|ABC"},
        {"a number is given", {k_status, "", "", k_model}, "pnnm", "77|77|ABC", done, " 77 "},
        {"for an empty one", {k_status, "=\x03\r", k_model}, "pnm", "5|5|ABC", done, "5"},
        {"a blank is given", {k_status, "", ""}, "pnn", "||", given_up, " "},
        {"no file has that name", {k_status, "3e9\x03\r"}, "pn", "3e9||", number_too_large},
        {"nor that given one", {k_status, "", ""}, "pnn", "3e9||", number_too_large, "3e9"},
        {"a band is given", {k_status, k_number}, "pnmm", "0123|123|K", done, "K"},
        {"an empty model", {k_status, k_number, "*A\x03\r"}, "pnm", "0123|123|"},
        {"another line", {k_status, "", ""}, "pnn", "77|77|", another_line, "77"},
        {"another at the end", {k_status, k_number}, "pnmm", "0123|123|K", another_line, "K"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.fault);
        BusRig rig;
        BusLink& bus = rig.bus;
        for (const std::string& reply : c.replies) rig.port.answer(reply);
        Identification asking(bus, 7);
        if (c.replies.front() == k_cut) {
            bus.begin(*asking.next());
            EXPECT_EQ(asking.due(), std::nullopt);
            rig.clock.sleep_until(bus.due());
            bus.poll();
            bus.cut();
            asking.ended(*bus.poll());
        }
        carry_out(bus, asking);
        if (c.state == another_line)
            bus.open_bus_port("COM2:", 9600, 0, 8, 1);
        if (c.given && asking.state() == needs_number)
            asking.give_serial_number(*c.given);
        else if (c.given && asking.state() == needs_band)
            asking.give_band(*c.given);
        carry_out(bus, asking);
        EXPECT_EQ(asking.state(), c.state);
        EXPECT_EQ(asking.serial_number() + "|" + asking.number() + "|" + asking.model(), c.found);
        EXPECT_EQ(asking.failure(), c.state == number_too_large ? "Overflow" : "");
        EXPECT_EQ(questions(rig.port.written), c.sent);
        EXPECT_EQ(asking.due(), std::nullopt);
    }
}

// A serial number with the frame's characters in it would name the wrong files.
TEST(Identity, SerialNumberAndModel) {
    using Table = const std::pair<const char*, const char*>[];
    for (const auto& [reply, serial] : Table{{"RDS/N=1234\x03xy\r", "1234"},
                                             {"\x02SN 34\x03\r", "SN 34"},
                                             {"1234\r", "1234"},
                                             {"\x02RDS/N= 12 34 \x03\r", "12 34"},
                                             {"RDS/N=A=B\x03\r", "A=B"},
                                             {"RDS/N=  \x03\r", ""}})
        EXPECT_EQ(serial_number_of(reply), serial) << reply;
    for (const auto& [reply, model] : Table{{"*ABC 12 34", "ABC"},
                                            {"*ABC", ""},
                                            {"\x02>01 X* ABC  12*D 1\x03", "ABC"},
                                            {"\x02XYZ 12\x03", "XYZ"},
                                            {"*  ", ""}})
        EXPECT_EQ(model_of(reply), model) << reply;
    EXPECT_EQ(amplifier_number(" 0012 34A"), "1234");
    EXPECT_EQ(amplifier_number("SN"), "0");
    EXPECT_EQ(amplifier_number("2147483647"), "2147483647");
    EXPECT_THROW(amplifier_number("2147483648"), RunTimeError);
}

}  // namespace
}  // namespace ampdesk
