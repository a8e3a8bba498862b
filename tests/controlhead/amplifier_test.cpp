// How replies are cut, retried and refused. Replies are literal frames; only the CRC is computed.
#include "amplifier/amplifier.h"

#include "platform/run_time_error.h"
#include "tests/controlhead/head_fixture.h"

namespace ampdesk {
namespace {

using namespace std::string_literals;
using std::chrono::milliseconds;

std::string framed(char first, const std::string& data) {
    return build_reply_frame(Crc16{}, first, 0, data);
}

int error_of(const std::function<void()>& action) {
    try {
        action();
    } catch (const RunTimeError& error) {
        return error.number();
    }
    return 0;
}

// Catches a reply judged good or cut otherwise than byte for byte, and a missing or third try.
TEST_F(HeadTest, BlockReadsAreJudgedAndTriedTwice) {
    const struct {
        const char* what;
        std::string first;  // empty: silence
        std::string second;
        std::string payload;  // empty: error 100
        std::size_t sends;
    } cases[] = {
        {"shortest payload", framed(6, "\x12"s + "AB"), "", "AB", 1},
        {"payload of one", framed(6, "\x12"s + "A"), "", "", 2},
        {"six characters", framed(6, "\x12"), "", "", 2},
        {"NAK, then good", framed(21, "\x12"s + "ABCD"), framed(6, "\x12"s + "EF"), "EF", 2},
        {"silence, then good", "", framed(6, "\x12"s + "EF"), "EF", 2},
        {"silence", "", "", "", 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        std::string payload;
        port.answer(c.first);
        if (c.sends == 2)
            port.answer(c.second);
        port.written.clear();
        EXPECT_EQ(error_of([&] { payload = head.amplifier.read_itemAll(k_analog_request); }),
                  c.payload.empty() ? 100 : 0);
        EXPECT_EQ(payload, c.payload);
        EXPECT_EQ(head.amplifier.comm_error, c.payload.empty() ? 1 : 0);
        EXPECT_EQ(port.written.size(), c.sends);
    }
    head.amplifier.read_itemAll(k_limits_request);
    EXPECT_EQ(port.written.back().substr(0, 6), "\x01\x07\x03\xA0\x15\x00"s);
}

// Catches a value cut at the wrong place, and an amplifier that leaves out the name taken for a silent one.
TEST_F(HeadTest, TextReads) {
    const Texts cases[] = {
        // two replies, and the value
        {"NAME=  12.5\x03junk\r", "", "12.5"},
        {"RDBAND=1=2 \x03"s + "00\r", "", "1=2"},
        {"?\x03\r", "RDBAND=2\x03\r", "2"},
        {"?\x03=\r", "\x02 2 \x03\r", "2"},  // the second one counts as it is
        {"RDBAND=1\r", "", ""},              // error 100: no ETX, which is no reply
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c[0]);
        port.answer(c[0]);
        if (!c[1].empty())
            port.answer(c[1]);
        std::string value;
        EXPECT_EQ(error_of([&] { value = head.amplifier.read_item("RDBAND"); }), c[2].empty() ? 100 : 0);
        EXPECT_EQ(value, c[2]);
    }
    silent = true;
    take_sent();
    EXPECT_EQ(error_of([&] { head.amplifier.read_item("RDBAND"); }), 100);
    EXPECT_EQ(count_sent("RDBAND"), 4U);  // two reads of two sendings each
}

// Catches a setting that is sent twice, a refusal taken for an acceptance, and a wrong box.
TEST_F(HeadTest, SettingsAreSentOnceWhateverComesBack) {
    const std::string command = "\x10\x12";
    const struct {
        std::string reply;
        int status;
        const char* box;
    } cases[] = {
        {framed(6, command), 0, ""},
        {framed(6, ""), 1, ""},
        {"", 1, ""},
        {framed(21, command), 1, ""},
        {framed(21, command + '\x01'), 1, "Command Not Found"},
        {framed(21, command + '\x03'), 1, "Remote Is Not On"},
        {framed(21, command + "xx\x04"), 1, "Invalid Data"},
        {framed(21, command + '\x1A'), 1, "Setting Failed, code H1A"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        port.written.clear();
        port.answer(c.reply);
        EXPECT_EQ(head.amplifier.set_item(command), c.status);
        EXPECT_EQ(port.written.size(), 1U);
        EXPECT_EQ(person.take_texts(), *c.box == '\0' ? Texts{} : Texts{c.box});
    }
    bus.on_traffic = [](const BusTraffic&) { throw RunTimeError::disk_full(); };
    EXPECT_EQ(head.amplifier.set_item(command), 1);
    EXPECT_EQ(person.take_texts(), Texts{"Cannot set the parameter"});
}

// Catches a look for a silent amplifier that is repeated or waits as long as a read.
TEST_F(HeadTest, LooksAreShortAndSingle) {
    for (const auto& [answer_ms, limit_ms] : {std::pair{20, 300}, {150, 450}, {600, 1000}}) {
        SCOPED_TRACE(answer_ms);
        Amplifier amplifier(bus, 7, NegativeWords::overflow);
        port.answer({{milliseconds(answer_ms), framed(6, "\x12"s + "ABCD")}});
        amplifier.read_itemAll(k_analog_request);
        amplifier.look_for_only(true);
        silent = true;
        for (int look = 1; look <= 24; ++look) {
            clock.advance(std::chrono::seconds(1));
            take_sent();
            const Instant start = clock.now();
            EXPECT_EQ(error_of([&] { amplifier.read_itemAll(k_status_request); }), 100);
            EXPECT_EQ(sent.size(), 1U);
            const Duration waited = clock.now() - start;
            const Duration settling = look == 1 ? milliseconds(0) : milliseconds(50);
            EXPECT_EQ(waited - settling, milliseconds(look % 12 == 0 ? 1000 : limit_ms)) << look;
        }
        silent = false;
        EXPECT_EQ(bus.probe_link(), 0);  // the line is no dead one any more
    }
}

}  // namespace
}  // namespace ampdesk
