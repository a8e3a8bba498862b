// How replies are cut, retried and refused. Replies are literal frames; only the CRC is computed.
#include "controlhead/amplifier_access.h"

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

// Catches a byte order, an index off by one, or a wrapped value where an error is due.
TEST_F(HeadTest, WordsAreDecoded) {
    const std::string words = "\x01\x02\xFF\x7F\x00\x80\xE8\xFF\x05"s;  // the ninth byte has no partner
    struct Case {
        std::int16_t item;
        double value;
        double as_signed;
        bool overflow;
    };
    const Case cases[] = {{-1, 0, 0, false},        {0, 0, 0, false},     {1, 513, 513, false},
                          {2, 32767, 32767, false}, {3, 0, -32768, true}, {4, 0, -24, true},
                          {5, 0, 0, false},         {6, 0, 0, false},     {32767, 0, 0, false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.item);
        head.amplifier.ana_block = head.amplifier.lim_block = words;
        services.options.negative_words_signed = false;
        EXPECT_EQ(error_of([&] { EXPECT_EQ(head.amplifier.get_ana_item(c.item), c.value); }),
                  c.overflow ? 6 : 0);
        EXPECT_EQ(error_of([&] { EXPECT_EQ(head.amplifier.get_lim_item(c.item), c.value); }),
                  c.overflow ? 6 : 0);
        services.options.negative_words_signed = true;
        EXPECT_EQ(head.amplifier.get_ana_item(c.item), c.as_signed);
    }
}

// Catches a reply judged good or cut otherwise than byte for byte, and a missing or third try.
TEST_F(HeadTest, BlockReadsAreJudgedAndTriedTwice) {
    struct Case {
        const char* what;
        std::string first;  // empty: silence
        std::string second;
        std::string payload;  // empty: error 100
        std::size_t sends;
    };
    const Case cases[] = {
        {"good", framed(6, "\x12"s + "ABCD"), "", "ABCD", 1},
        {"shortest payload", framed(6, "\x12"s + "AB"), "", "AB", 1},
        {"payload of one", framed(6, "\x12"s + "A"), "", "", 2},
        {"six characters", framed(6, "\x12"), "", "", 2},
        {"NAK, then good", framed(21, "\x12"s + "ABCD"), framed(6, "\x12"s + "EF"), "EF", 2},
        {"silence, then good", "", framed(6, "\x12"s + "EF"), "EF", 2},
        {"silence", "", "", "", 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        head.amplifier.ana_block = "old";
        port.answer(c.first);
        if (c.sends == 2)
            port.answer(c.second);
        const std::size_t before = port.written.size();
        EXPECT_EQ(error_of([&] { head.amplifier.get_ana_block(); }), c.payload.empty() ? 100 : 0);
        EXPECT_EQ(head.amplifier.ana_block, c.payload.empty() ? "old" : c.payload);
        EXPECT_EQ(head.amplifier.comm_error, c.payload.empty() ? 1 : 0);
        EXPECT_EQ(port.written.size() - before, c.sends);
        EXPECT_EQ(head.amplifier.last_comm_time, clock.seconds_since_midnight());
    }
    head.amplifier.get_lim_block();
    EXPECT_EQ(port.written.back().substr(0, 6), "\x01\x07\x03\xA0\x15\x00"s);
}

// Catches a value cut at the wrong place, and a reply without a value passed on as one.
TEST_F(HeadTest, TextReads) {
    struct Case {
        std::string first;
        std::string second;
        std::string value;
        int error;
    };
    const Case cases[] = {
        {"NAME=  12.5\x03junk\r", "", "12.5", 0},
        {"RDBAND=1=2 \x03"s + "00\r", "", "1=2", 0},
        {"?\x03\r", "RDBAND=2\x03\r", "2", 0},
        {"?\x03=\r", "?\x03\r", "", 100},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.first);
        port.answer(c.first);
        if (!c.second.empty())
            port.answer(c.second);
        std::string value;
        EXPECT_EQ(error_of([&] { value = head.amplifier.read_item("RDBAND"); }), c.error);
        EXPECT_EQ(value, c.value);
    }
    silent = true;
    take_sent();
    EXPECT_EQ(error_of([&] { head.amplifier.read_item("RDBAND"); }), 100);
    EXPECT_EQ(count_sent("RDBAND"), 4U);  // two reads of two sendings each
}

// Catches a setting that is sent twice, a refusal taken for an acceptance, and a wrong box.
TEST_F(HeadTest, SettingsAreSentOnceWhateverComesBack) {
    const std::string command = "\x10\x12";
    struct Case {
        const char* what;
        std::string reply;
        int status;
        std::vector<std::string> boxes;
    };
    const Case cases[] = {
        {"taken", framed(6, command), 0, {}},
        {"ACK without data", framed(6, ""), 1, {}},
        {"silence", "", 1, {}},
        {"bare NAK", framed(21, command), 1, {}},
        {"code 1", framed(21, command + '\x01'), 1, {"Command Not Found"}},
        {"code 3", framed(21, command + '\x03'), 1, {"Remote Is Not On"}},
        {"code 4", framed(21, command + "xx\x04"), 1, {"Invalid Data"}},
        {"code 2", framed(21, command + '\x02'), 1, {"Setting Failed, code H2"}},
        {"code 1A", framed(21, command + '\x1A'), 1, {"Setting Failed, code H1A"}},
        {"code 0", framed(21, command + '\0'), 1, {"Setting Failed, code H0"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const std::size_t before = port.written.size();
        port.answer(c.reply);
        EXPECT_EQ(head.amplifier.set_item(command), c.status);
        EXPECT_EQ(port.written.size() - before, 1U);
        EXPECT_EQ(person.take_texts(), c.boxes);
    }
    bus.on_traffic = [](const BusTraffic&) { throw RunTimeError::disk_full(); };
    EXPECT_EQ(head.amplifier.set_item(command), 1);
    EXPECT_EQ(person.take_texts(), std::vector<std::string>{"Cannot set the parameter"});
}

// Catches a look for a silent amplifier that is repeated or waits as long as a read.
TEST_F(HeadTest, LooksAreShortAndSingle) {
    struct Case {
        int answer_ms;
        int limit_ms;
    };
    for (const Case& c : {Case{20, 300}, Case{150, 450}, Case{600, 1000}}) {
        SCOPED_TRACE(c.answer_ms);
        AmplifierAccess amplifier(services, 7);
        port.answer({{milliseconds(c.answer_ms), framed(6, "\x12"s + "ABCD")}});
        amplifier.get_ana_block();
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
            EXPECT_EQ(waited - settling, look % 12 == 0 ? milliseconds(1000) : milliseconds(c.limit_ms))
                << look;
        }
        silent = false;
    }
}

}  // namespace
}  // namespace ampdesk
