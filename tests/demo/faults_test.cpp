// The named faults: what each does to a reply, that "clear" ends it, and what is said to mistakes.
#include "demo/faults.h"

#include <gtest/gtest.h>

#include <set>

#include "tests/support/hex_bytes.h"
#include "tests/support/manual_clock.h"

namespace ampdesk::demo {
namespace {

using namespace std::chrono_literals;

constexpr const char* k_idle = "06 01 07 11 00 11 02 00 00 02 D1 12";
constexpr const char* k_status = "01 01 01 11 91 A0";
constexpr const char* k_analog = "01 01 01 12 D1 A1";
constexpr const char* k_alarm = "01 01 03 A0 17 00 33 87";
constexpr const char* k_shutdown = "01 01 03 A0 18 00 36 77";
constexpr const char* k_hv_on = "01 01 02 10 12 10 31";

struct FaultTest : testing::Test {
    FaultTest() {
        bus.add({.address = 1, .noise = 0});
        bus.add({.address = 2, .noise = 0});
    }
    // The whole reply of amplifier 1; of the reads of shutdown and alarm state only the text.
    std::string ask(const std::string& frame_hex) {
        bus.receive(hex_bytes(frame_hex));
        clock.advance(1h);
        const std::string reply = bus.take_due();
        return frame_hex == k_alarm || frame_hex == k_shutdown ? reply.substr(6, reply.size() - 8)
                                                               : to_hex(reply);
    }
    // What is in force on amplifier 1, as "name argument;name argument".
    std::string listed() const {
        std::string text;
        for (const ActiveFault& active : active_faults(*bus.find(1)))
            text += (text.empty() ? "" : ";") + std::string(active.fault->name) +
                    (active.argument.empty() ? "" : " ") + active.argument;
        return text;
    }
    ManualClock clock;
    SimBus bus{clock};
};

// A fault without its effect, an effect on the wrong amplifier, a fault that is not listed while it
// lasts, or that neither its own "clear" nor the general one ends; a fault of the table left out here.
TEST_F(FaultTest, EachFaultShowsIsListedAndIsCleared) {
    const struct {
        std::vector<std::string> lines;
        const char* request;
        std::string reply;
        std::string listed;
    } cases[] = {
        {{"helix"}, k_shutdown, "12, Helix Over-Current", "helix"},
        {{"helix"}, k_hv_on, "15 01 03 10 12 04 33 E7", "helix"},
        {{"arc"}, k_status, "06 01 07 11 10 11 02 00 00 02 D3 82", "arc"},
        {{"overtemp"}, k_shutdown, "3, Over-Temperature", "overtemp"},
        {{"cabinet"}, k_shutdown, "4, Cabinet Temperature", "cabinet"},
        {{"arc"}, k_shutdown, "7, HV Arc", "arc"},
        {{"interlock open"}, k_shutdown, "1, External Interlock", "interlock"},
        {{"interlock open"}, "01 01 02 10 15 51 F3", "15 01 03 10 15 04 31 D7", "interlock"},
        {{"airflow low"}, k_shutdown, "2, Low Air Flow", "airflow"},
        {{"airflow low", "airflow normal"},
         k_shutdown,
         "2, Low Air Flow",
         "airflow cause gone, not acknowledged"},
        {{"  @1   shutdown  7  A, b "}, k_shutdown, "7, A, b", "shutdown 7 A, b"},
        {{"alarm Hot"}, k_alarm, "1,Hot", "alarm Hot"},
        {{"fan stopped"}, k_alarm, "0,Standby RF off", "fan"},
        {{"overforward"}, k_alarm, "1,Fwd Power High", "overforward"},
        {{"underforward"}, k_alarm, "1,Fwd Power Low", "underforward"},
        {{"overforward", "underforward"}, k_alarm, "1,Fwd Power Low", "underforward"},
        {{"overreverse"}, k_alarm, "1,Rev Power High", "overreverse"},
        {{"hotcabinet"}, k_alarm, "1,Cabinet Temp", "hotcabinet"},
        {{"hottube"}, k_alarm, "1,TWT Temp", "hottube"},
        {{"highhelix"}, k_alarm, "1,Helix Current", "highhelix"},
        {{"remote off"}, k_hv_on, "15 01 03 10 12 03 72 25", "remote"},
        {{"@2 silent on"}, k_status, k_idle, ""},
        {{"badcrc 1"}, k_status, "06 01 07 11 00 11 02 00 00 02 D1 47", "badcrc 1"},
        {{"noise 3", "silent on"}, k_status, "", "silent;noise 3"},
        {{"refuse 26"}, k_hv_on, "15 01 03 10 12 1A B3 EF", "refuse 26"},
        {{"refuse 0x1A", "refuse 0"}, k_hv_on, "06 01 02 10 12 A5 F1", ""},
        {{"delay 60000"}, k_status, k_idle, "delay 60000 ms"},
        {{"late 800", "drip 20"}, k_status, k_idle, "late 800 ms;drip 20 ms"},
        {{"address 9"}, k_status, "06 09 07 11 00 11 02 00 00 02 B6 D2", "address 9"},
        {{"short 2", "analog 2 513"}, k_analog, "06 01 05 12 00 00 01 02 A8 ED", "short 2;analog 2 513"},
        {{"short 2"}, "01 01 03 A0 15 00 32 E7", "06 01 07 A0 15 00 32 00 5F 00 39 EE", "short 2"},
        {{"short 1", "overflow on"}, k_analog, "06 01 03 12 00 80 9C 47", "short 1;overflow"},
        {{"short 1", "analog 1 -2"}, k_analog, "06 01 03 12 FE FF 9D C7", "short 1;analog 1 65534"},
        {{"status 1 4", "status 6 0"},
         k_status,
         "06 01 07 11 04 11 02 00 00 00 51 57",
         "status 1 4;status 6 0"},
        {{"status 2 16"}, k_hv_on, "15 01 03 10 12 03 72 25", "status 2 16"},
    };
    std::set<std::string_view> made;
    for (const auto& c : cases) {
        for (const bool by_itself : {true, false}) {
            SCOPED_TRACE(c.lines[0] + (by_itself ? " by itself" : ""));
            for (const std::string& line : c.lines) EXPECT_EQ(make_fault(bus, line).text, "ok");
            EXPECT_EQ(listed(), c.listed);
            const std::vector<ActiveFault> active = active_faults(*bus.find(1));
            for (const ActiveFault& fault : active) made.insert(fault.fault->name);
            EXPECT_EQ(ask(c.request), c.reply);
            bus.find(1)->set_hv(false);
            if (by_itself) {
                for (const ActiveFault& fault : active) EXPECT_EQ(make_fault(bus, fault.clear).text, "ok");
                make_fault(bus, "@2 clear");
            } else {
                EXPECT_EQ(make_fault(bus, "clear").text, "ok");
            }
            EXPECT_EQ(listed(), "");
            EXPECT_EQ(ask(k_shutdown), "0, No Shutdown");
            EXPECT_EQ(ask(k_alarm), "0,Standby RF off");
            EXPECT_EQ(ask(k_status), k_idle);
            EXPECT_EQ(ask(k_analog).substr(0, 21), "06 01 1F 12 00 00 00 ");
            EXPECT_EQ(ask(k_hv_on), "06 01 02 10 12 A5 F1");
            bus.find(1)->set_hv(false);
        }
    }
    for (const Fault& fault : fault_table()) {
        EXPECT_NE(made.contains(fault.name), fault.group == FaultGroup::commands) << fault.name;
    }
}

// A fault that takes another one's place, or another one with it when it ends.
TEST_F(FaultTest, FaultsStack) {
    for (const char* line : {"interlock open", "helix", "remote off", "refuse 4", "analog 4 300",
                             "analog 9 40", "status 2 0", "status 5 1"})
        make_fault(bus, line);
    EXPECT_EQ(ask(k_shutdown), "12, Helix Over-Current");
    for (const char* line : {"clear helix", "clear analog 4", "clear remote", "clear status 2"})
        EXPECT_EQ(make_fault(bus, line).text, "ok");
    EXPECT_EQ(listed(), "interlock;refuse 4;analog 9 40;status 5 1");
    EXPECT_EQ(ask(k_shutdown), "1, External Interlock");
}

// A count that spoils one reply too many or too few.
TEST_F(FaultTest, CountedFaultsSpoilSoManyReplies) {
    make_fault(bus, "noise 2");
    for (const bool noisy : {true, true, false}) {
        const std::string reply = ask(k_status);
        EXPECT_TRUE(reply.ends_with(k_idle));
        EXPECT_EQ(reply != k_idle, noisy);
    }
    make_fault(bus, "badcrc 2");
    for (const bool spoilt : {true, true, false}) EXPECT_EQ(ask(k_status) != k_idle, spoilt);
    make_fault(bus, "noise 50");  // before a text none may be an ETX or a CR
    const std::string band = "02 52 44 42 41 4E 44 3D 30 03 30 32 0D";
    for (int i = 0; i < 50; ++i) {
        const std::string reply = ask("02 3E 30 31 20 52 44 42 41 4E 44 03 30 32 0D");
        EXPECT_TRUE(reply.ends_with(band) && reply.find("0D") == reply.size() - 2 &&
                    reply.find("03") > reply.find("02"))
            << reply;
    }
}

// A mistake that is taken for a command, or changes something before it is noticed.
TEST_F(FaultTest, MistakesAreToldAndChangeNothing) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "error: no command"},
        {"explode", "error: no fault is named \"explode\""},
        {"@3 clear", "error: no amplifier at @3"},
        {"alarm a\tb", "error: alarm wants a text of 1 to 60 characters"},
        {"clear all", "error: clear wants nothing or the name of a fault"},
        {"clear silent on", "error: clear wants nothing behind silent"},
        {"clear status 7", "error: clear wants a number from 1 to 6"},
        {"helix arc", "error: helix takes no argument"},
        {"late 60001", "error: late wants a number from 0 to 60000"},
        {"address on", "error: address wants a number from 0 to 255 or off"},
    };
    for (const auto& [line, answer] : cases) {
        SCOPED_TRACE(line);
        const FaultAnswer given = make_fault(bus, line);
        EXPECT_EQ(given.text, answer);
        EXPECT_FALSE(given.quit);
        EXPECT_EQ(ask(k_status), k_idle);
    }
    EXPECT_TRUE(make_fault(bus, "quit").quit);
}

}  // namespace
}  // namespace ampdesk::demo
