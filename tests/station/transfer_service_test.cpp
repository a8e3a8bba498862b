// File transfers and the null modem test behind their dialogs, on a scripted line.
#include "station/transfer_service.h"

#include <gtest/gtest.h>

#include "terminal/xmodem_block.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/scripted_port.h"

namespace ampdesk {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;
constexpr auto k_send = TransferDirection::send;
constexpr auto k_receive = TransferDirection::receive;

struct TransferServiceTest : testing::Test {
    TransferServiceTest() {
        line.open({.device = "line"});
        transfers.on_over = [this] { ++overs; };
    }
    void TearDown() override { EXPECT_EQ(person.take_texts(), Texts{}); }

    void take(TerminalNotice notice) {
        if (const auto* state = std::get_if<notice::TransferState>(&notice))
            states.push_back(state->transfer);
        else
            unkept.push_back(std::get<notice::FileNotKept>(notice));
    }
    // Steps when they are due, for so long.
    void pass(Duration time) {
        const Instant end = clock.now() + time;
        for (auto due = transfers.due(); due && *due <= end; due = transfers.due()) {
            clock.sleep_until(*due);
            transfers.step();
        }
        clock.sleep_until(end);
    }
    ManualClock clock;
    ScriptedPort port{clock};
    TerminalLine line{&port, clock};
    RecordingOperator person;
    ScratchFolder folder;
    TransferService transfers{line, person, [this](TerminalNotice notice) { take(std::move(notice)); }};
    std::vector<TransferView> states;
    std::vector<notice::FileNotKept> unkept;
    int overs = 0;
};

// Fault: a file is sent but its end not told, the line is kept, its state told though nothing has changed, or
// an answer that comes too late ends it.
TEST_F(TransferServiceTest, SendsAFile) {
    port.responder = [](const std::string& sent) {
        return sent == "\x04" || sent.size() == 133 ? ScriptedPort::Answer{{10ms, "\x06"}}
                                                    : ScriptedPort::Answer{};
    };
    transfers.begin({k_send, true, folder.put("file", "hello")});
    pass(1s);
    transfers.keep(std::nullopt);
    ASSERT_EQ(states.size(), 1U);
    EXPECT_TRUE(states[0].busy);
    EXPECT_EQ(states[0].progress.total, 5U);
    port.arrive("C");
    pass(500ms);
    EXPECT_EQ(states.back().message, "5 bytes sent.");
    EXPECT_FALSE(states.back().busy || line.taken());
    EXPECT_EQ(overs, 1);
    EXPECT_EQ(transfers.due(), std::nullopt);
}

// Fault: a transfer begins on a line where it cannot work, or without a file; or nobody says why it does not.
TEST_F(TransferServiceTest, SaysWhyItDoesNotBegin) {
    const std::string huge = folder.put("huge", "");
    std::filesystem::resize_file(huge, Transfer::k_longest_file + 1);
    const auto expect_refused = [&](const std::string& path, const std::string& said) {
        transfers.begin({k_send, true, path});
        ASSERT_EQ(person.messages.size(), 1U);
        EXPECT_EQ(person.messages[0].text + "|" + person.messages[0].detail, said);
        person.take_texts();
    };
    expect_refused(folder / "none", "File not found|" + (folder / "none"));
    expect_refused(huge, "The file is too long|" + huge + ": more than 16 MB");
    line.close();
    expect_refused(folder.put("file", "x"), "The terminal's port cannot be used now|");
    line.open({.device = "line", .data_bits = 7});
    expect_refused(folder / "file", "XMODEM needs 8 data bits|Modem > Settings changes that.");
    EXPECT_TRUE(states.empty());
}

// Fault: hours of receiving are lost to a full disk or a wrong name, an old file is spoilt by a transfer that
// failed, or a file that was given up is written after all.
TEST_F(TransferServiceTest, KeepsAReceivedFileUnderANameThatWorks) {
    const std::string old = folder.put("old", "old");
    transfers.begin({k_receive, true, old});
    port.arrive("\x18\x18");
    pass(1s);
    EXPECT_EQ(states.back().message, "The other side has cancelled.");
    EXPECT_EQ(file_bytes(old), "old");

    const std::string nowhere = folder / "none/file";
    for (const bool given_up : {true, false}) {
        unkept.clear();
        transfers.begin({k_receive, true, nowhere});
        port.arrive(xmodem_block(1, "a", XmodemCheck::crc));
        for (const auto later : {500ms, 1000ms}) port.arrive("\x04", later);
        pass(3s);
        transfers.keep(nowhere);
        ASSERT_EQ(unkept.size(), 2U);
        EXPECT_EQ(unkept[1].path + ": " + unkept[1].cause, nowhere + ": Path not found");
        transfers.begin({k_receive, true, old});
        EXPECT_TRUE(states.back().busy);
        EXPECT_FALSE(line.taken());
        transfers.keep(given_up ? std::nullopt : std::optional(folder / "file"));
        EXPECT_EQ(states.back().message,
                  given_up
                      ? "The file was received but not saved."
                      : "128 bytes received. It ends in filling bytes (hexadecimal 1A) of the last block.");
        EXPECT_FALSE(states.back().busy);
        EXPECT_EQ(file_bytes(folder / "file"), given_up ? "" : "a" + std::string(127, '\x1A'));
    }
}

// Fault: the report never comes or comes twice, the line is kept, or the test passes for a transfer.
TEST_F(TransferServiceTest, TheNullModemTestReports) {
    port.responder = [](const std::string& sent) { return ScriptedPort::Answer{{40ms, sent}}; };
    for (int i = 0; i < 2; ++i) transfers.test_null_modem();  // the second one does not get the line
    pass(2s);
    ASSERT_EQ(person.messages.size(), 1U);
    EXPECT_EQ(person.messages[0].title, "Null Modem Test");
    EXPECT_NE(person.take_texts()[0].find("the text came back"), std::string::npos);
    EXPECT_FALSE(line.taken() || !states.empty());
    EXPECT_EQ(overs, 1);
}

}  // namespace
}  // namespace ampdesk
