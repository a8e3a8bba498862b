// nvRam transfers on a scripted line: what goes out, what is shown, what the file holds.
#include "tools/nvram_transfer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <map>

#include "buslink/wire/binary_frame.h"
#include "tests/support/bus_rig.h"
#include "tests/support/full_disk.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/sent_frame.h"
#include "tools/nvram_choice.h"

namespace ampdesk {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using Mode = NvramTransfer::Mode;
using Texts = std::vector<std::string>;

// Replies to reads, with their CRC.
const std::string k_block_0 = hex_bytes("06 01 0A 20 20 00 00 00 A1 FF 3C 5A 07 7B D5");
const std::string k_block_1 = hex_bytes("06 01 07 20 20 01 00 7F 01 02 06 82");
const std::string k_end_1 = hex_bytes("15 01 05 20 20 01 00 20 0B B9");
const std::string k_end_2 = hex_bytes("15 01 05 20 20 02 00 20 FB B9");
const std::string k_refusal_0 = hex_bytes("15 01 05 20 20 00 00 04 5A 62");
const std::string k_nak = hex_bytes("15 01 00 10 54");
const std::string k_lost = "Cmd Receiving Error, Check Connection";
const std::string k_set_error = "Set nvRam Error, Exit And Set Again";

class NvramTransferTest : public testing::Test, protected BusRig {
  protected:
    NvramTransfer& begin(Mode mode) {
        transfer = std::make_unique<NvramTransfer>(mode, path, 1, bus, person);
        transfer->on_panel = [this] {
            if (shown.empty() || shown.back() != transfer->panel().status)
                shown.push_back(transfer->panel().status);
        };
        return *transfer;
    }

    // An exchange at most, when it is due; false when there is nothing to do.
    bool turn() {
        const auto due = transfer->due();
        if (due) {
            clock.sleep_until(*due);
            exchange_once(bus, *transfer);
        }
        return due.has_value();
    }

    // Runs until there is nothing to do; gives what lblStatus showed on the way.
    Texts run() {
        transfer->start();
        shown.clear();
        int turns = 0;
        while (turns < 2000 && turn()) ++turns;
        EXPECT_LT(turns, 2000) << "the transfer does not end";
        return shown;
    }

    // The payloads that went out, without their frames.
    Texts payloads() {
        Texts all;
        for (const std::string& frame : port.written) all.push_back(to_hex(sent_frame(frame).command));
        port.written.clear();
        return all;
    }

    bool finished() const {
        const NvramPanel& panel = transfer->panel();
        return !panel.start_enabled && !panel.pause_enabled && !transfer->nvram_running;
    }

    ScratchFolder folder;
    std::string path = folder / "nv.txt";
    std::unique_ptr<NvramTransfer> transfer;
    Texts shown;
};

// Fault: another file, other frames or other texts than the operator knows, or a refusal that is told as
// the end of the memory.
TEST_F(NvramTransferTest, ReadsIntoAFile) {
    for (const std::string& reply : {k_block_0, k_block_1, k_end_2}) port.answer(reply);
    begin(Mode::read);
    EXPECT_FALSE(turn());  // nothing goes out before Start
    EXPECT_EQ(run(), (Texts{"Read block #0   Errs:0", "Read block #1   Errs:0", "Read block #2   Errs:0",
                            "nvRam Transfer was Successful"}));
    EXPECT_TRUE(finished());
    EXPECT_EQ(file_bytes(path), "03-10-2026\r\n0 00A1FF3C 5A07\r\n1 7F 0102\r\n");
    EXPECT_EQ(to_hex(port.written.at(0)), "01 01 04 20 20 00 00 EA DB");
    EXPECT_EQ(payloads(), (Texts{"20 20 00 00", "20 20 01 00", "20 20 02 00"}));
    EXPECT_EQ(transfer->panel().output, "15 1 5 20 20 2 0 20 FB B9 ");

    transfer->start();
    EXPECT_FALSE(turn());
}

// Fault: a reply that is no block gets into the file, or errors are counted from the wrong place; a line that
// spoils replies is told as one that nobody answers on; the end of an earlier read that comes late ends this
// one, with half a file told as whole; one reply that comes twice makes every later one late.
TEST_F(NvramTransferTest, ReadAsksAgain) {
    const std::string unnamed_end = hex_bytes("15 01 03 20 20 20 26 93");
    const std::map<char, ScriptedPort::Answer> replies{
        {'0', {{20ms, k_block_0}}},
        {'1', {{20ms, k_block_1}}},
        {'t', {{20ms, k_block_0}, {30ms, k_block_0}}},  // twice
        {'e', {{20ms, k_end_1}}},
        {'E', {{20ms, k_end_2}}},
        {'u', {{5ms, unnamed_end}, {900ms, unnamed_end}}},
        {'r', {{0ms, k_refusal_0}}},
        {'n', {{0ms, k_nak}}},
        {'m', {{0ms, hex_bytes("06 01 05 20 20 00 00 01 DB 78")}}},  // no room for a block
        {'d', {{0ms, hex_bytes("06 01 00 E1 91")}}},                 // no data
        {'x', {{0ms, k_block_0.substr(0, 14) + "?"}}},
        {'s', {}}};
    // The replies, the errors that are shown on the way, the blocks in the file.
    const std::tuple<std::string, std::string, int> cases[] = {
        {"sssss1sssmdx0e", "0 1 2 3 4 5 6 7 8 9 10 0 1 0 nvRam Transfer was Successful", 1},
        {"xxxxxxxxxxxxxxxsssssxs0e",
         "0 1 2 3 4 5 6 7 8 9 10 0 1 2 3 4 5 6 7 8 9 10 0 0 nvRam Transfer was Successful", 1},
        {"Eut11E", "0 1 2 0 1 0 nvRam Transfer was Successful", 2},
        {"0nn", "0 0 1 nvRam Transfer failed", 1},
        {"r", "0 nvRam Transfer failed", 0},
    };
    const std::string file = "03-10-2026\r\n0 00A1FF3C 5A07\r\n1 7F 0102\r\n";
    const std::size_t file_size[] = {12, 29, 40};
    for (const auto& [script, wanted, blocks] : cases) {
        SCOPED_TRACE(script);
        for (const char reply : script) port.answer(replies.at(reply));
        begin(Mode::read);
        std::string seen;
        for (const std::string& status : run()) seen += status.substr(status.rfind(':') + 1) + " ";
        EXPECT_EQ(seen, wanted + " ");
        EXPECT_EQ(file_bytes(path), file.substr(0, file_size[blocks]));
        EXPECT_EQ(payloads().size(), script.size());
    }
}

// Fault: a dead line is asked for ever, given up too early, or costs the lines that were read; an adapter
// that is put back in time costs the transfer.
TEST_F(NvramTransferTest, SixSilentAttemptsEndIt) {
    for (const bool plugged : {true, false}) {
        port.answer(k_block_0);
        begin(Mode::read).start();
        ASSERT_TRUE(turn());
        port.unplugged = !plugged;
        const Instant start = clock.now();
        EXPECT_EQ(run().back(), "Read block #1   Errs:5");
        EXPECT_GE(clock.now() - start, milliseconds(plugged ? 6000 : 5000));
        EXPECT_TRUE(transfer->nvram_abort);
        EXPECT_EQ(person.take_texts(), Texts{k_lost});
        EXPECT_EQ(file_bytes(path), "03-10-2026\r\n0 00A1FF3C 5A07\r\n");
        EXPECT_EQ(payloads().size(), plugged ? 7U : 1U);
    }
    begin(Mode::read).start();
    for (int i = 0; i < 5; ++i) turn();
    port.unplugged = false;
    port.answer(k_refusal_0);
    EXPECT_EQ(run().back(), "nvRam Transfer failed");
}

// Fault: Pause tears a block, Continue starts anew, Exit waits or keeps what came after it.
TEST_F(NvramTransferTest, PauseContinueExit) {
    port.answer(k_block_1);
    port.answer(k_block_0);
    begin(Mode::read).start();
    EXPECT_EQ(transfer->panel().start_caption, "Continue");
    EXPECT_TRUE(transfer->panel().pause_enabled && !transfer->panel().start_enabled);
    ASSERT_TRUE(turn());
    transfer->pause();
    EXPECT_TRUE(!transfer->panel().pause_enabled && transfer->panel().start_enabled);
    while (turn()) {
    }
    EXPECT_EQ(payloads().size(), 2U);  // the block in hand was asked for once more, no other one
    port.answer(k_block_1);
    transfer->start();
    ASSERT_TRUE(transfer->next());
    transfer->ended({.failure = BusFailure::cut});
    const auto asked = transfer->next();
    ASSERT_TRUE(asked);
    EXPECT_EQ(shown.back(), "Read block #1   Errs:0");
    transfer->exit();
    transfer->ended(bus.carry_out(*asked));
    transfer->start();
    EXPECT_FALSE(turn());
    EXPECT_EQ(file_bytes(path), "03-10-2026\r\n0 00A1FF3C 5A07\r\n");
}

// From now on the open file cannot be brought to the disk, though it takes bytes and can be closed.
void lose_disk_of(const std::string& path) {
    const Descriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    std::error_code ignored;
    for (const auto& open_one : std::filesystem::directory_iterator("/proc/self/fd"))
        if (std::filesystem::equivalent(open_one.path(), path, ignored))
            dup2(nowhere.get(), std::stoi(open_one.path().filename()));
}

// Fault: a full disk ends the program, goes unnoticed, or leaves half a line that reads as a block; a file
// that may not have reached the disk is called good, or nobody is told, however the transfer ends.
TEST_F(NvramTransferTest, ReadOntoABadDisk) {
    port.answer(k_block_0);
    port.answer(k_block_1);
    begin(Mode::read);
    {
        const FullDisk full(34);
        EXPECT_EQ(run().back(), "nvRam Transfer failed");
    }
    EXPECT_EQ(person.take_texts(), Texts{"Disk full"});
    EXPECT_TRUE(finished());
    EXPECT_EQ(file_bytes(path), "03-10-2026\r\n0 00A1FF3C 5A07\r\n");

    const std::tuple<std::string, std::string, Texts> cases[] = {
        {"nvRam Transfer failed", k_end_1, {"Device I/O error"}},
        {"Read block #1   Errs:5", "", {k_lost, "Device I/O error"}},
        {"Exit", "", {"Device I/O error"}}};
    for (const auto& [end, reply, told] : cases) {
        SCOPED_TRACE(end);
        port.answer(k_block_0);
        begin(Mode::read).start();
        ASSERT_TRUE(turn());
        lose_disk_of(path);
        port.answer(reply);
        if (end == "Exit")
            transfer->exit();
        else
            EXPECT_EQ(run().back(), end);
        EXPECT_EQ(person.take_texts(), told);
    }
}

// Fault: something is sent that the file does not say, or a readable line is refused.
TEST_F(NvramTransferTest, SetsWhatTheFileSays) {
    const std::string good = "12 00A1FF3C 5A07";
    const std::string sent = "40 20 0C 00 00 A1 FF 3C 5A 07";
    const std::string end = "end of nvRam file";
    const std::string wide(1 << 16, ' ');
    std::string most;  // that a frame holds
    std::string most_sent = "40 20 00 00";
    for (int i = 0; i < 249; ++i) most += "5A";
    for (int i = 0; i < 249 + 2; ++i) most_sent += " 5A";
    // The file behind its date line, what goes out, and how it ends.
    const std::tuple<const char*, std::string, Texts, std::string> cases[] = {
        {"date only", "", {}, end},
        {"LF, no line end", good + "\n" + good, {sent, sent}, end},
        {"marker in the third line", good + "\r\nEND_SRAM\r\n" + good, {sent}, end},
        {"marker in the data", "5 11END_SRAM22 0000", {}, end},
        {"two fields", "5 00A1FF3C5A07", {}, k_set_error},
        {"an empty line", good + "\r\n\r\n", {sent}, k_set_error},
        {"wide gaps", wide + "12" + wide + "00a1ff3c" + wide + "5a07" + wide, {sent}, end},
        {"more behind it", good + "99 and so on", {sent}, end},
        {"odd digits", "1 ABC 1234", {"40 20 01 00 AB 0C 12 34"}, end},
        {"no hex in the data", "1 0G 1234", {}, k_set_error},
        {"no hex at the end", "1 00 12O4", {}, k_set_error},
        {"cut short", "1 00 12", {}, k_set_error},
        {"the longest frame", "0 " + most + " 5A5A", {most_sent}, end},
        {"one byte more", "0 5A" + most + " 5A5A", {}, k_set_error},
        {"a negative number", "-1 00 1234", {}, k_set_error},
        {"a fraction", "1.5 00 1234", {}, k_set_error},
        {"the last block", "65535 00 1234", {"40 20 FF FF 00 12 34"}, end},
        {"past the last block", "65536 00 1234", {}, k_set_error},
    };
    port.responder = [](const std::string& frame) {  // takes everything
        const std::string echo = sent_frame(frame).command.substr(0, 4);
        return ScriptedPort::Answer{{milliseconds(0), build_reply_frame(Crc16(), '\x06', 1, echo)}};
    };
    for (const auto& [what, file, wanted, status] : cases) {
        SCOPED_TRACE(what);
        folder.put("nv.txt", "END_SRAM is not looked for here\r\n" + file);
        begin(Mode::set);
        EXPECT_EQ(run().back(), status);
        EXPECT_EQ(payloads(), wanted);
        EXPECT_TRUE(finished());
        EXPECT_EQ(transfer->nvram_block, static_cast<int>(wanted.size()));
    }
}

// Fault: another text than the operator knows; the transfer goes on behind a refusal, stops at one that comes
// when the next line is in hand, or at none; a block that could not be set is left out.
TEST_F(NvramTransferTest, SetTexts) {
    folder.put("nv.txt", "d\r\n12 00A1FF3C 5A07\r\n13 00 0000\r\n14 00 0000\r\n");
    const std::string taken_12 = hex_bytes("06 01 04 40 20 0C 00 87 1B");
    port.silence();
    port.answer(taken_12);
    port.answer(hex_bytes("15 01 05 40 20 0D 00 04 4B A9"));
    begin(Mode::set);
    EXPECT_EQ(run(), (Texts{"Setting block #0   Errors:0  Status:9", "Setting block #0   Errors:1  Status:0",
                            "Setting block #1   Errors:0  Status:3", k_set_error}));
    EXPECT_EQ(to_hex(port.written.at(0)), "01 01 0A 40 20 0C 00 00 A1 FF 3C 5A 07 73 79");
    EXPECT_EQ(payloads().size(), 3U);  // nothing behind the refusal
    EXPECT_EQ(transfer->panel().output, "15 1 5 40 20 D 0 4 4B A9 ");

    port.answer({{milliseconds(1500), hex_bytes("15 01 05 40 20 0C 00 03 5B AB")}});
    port.answer(taken_12);
    port.silence();
    port.answer(hex_bytes("06 01 04 40 20 0D 00 86 8B"));
    for (int i = 0; i < 4; ++i) port.answer(k_nak);  // to two sets, and to the reads behind them
    begin(Mode::set);
    EXPECT_EQ(run().back(), k_set_error);
    const std::string set_12 = "40 20 0C 00 00 A1 FF 3C 5A 07";
    EXPECT_EQ(payloads(),
              (Texts{set_12, set_12, "40 20 0D 00 00 00 00", "40 20 0D 00 00 00 00", "40 20 0E 00 00 00 00",
                     "20 20 0E 00", "40 20 0E 00 00 00 00", "20 20 0E 00"}));

    for (int times = 0; times < 11; ++times) port.answer(taken_12.substr(0, 8) + "?");
    begin(Mode::set);
    EXPECT_EQ(run().back(), k_set_error);
    EXPECT_EQ(payloads(), Texts(11, set_12));
    EXPECT_TRUE(finished());
}

// Fault: a reply to the line before is taken for this one's, and a block that was never written for
// written; an amplifier that says little cannot be set at all. It says everything twice, the second time
// late; its replies repeat so many bytes of the command, and one line of the file never gets through to it.
TEST_F(NvramTransferTest, SetsWithLateRepliesAbout) {
    const std::string lines[] = {"40 20 01 00 AA 00 00", "40 20 02 00 BB 00 00", "40 20 01 00 CC 00 00"};
    const auto set_with = [&](std::size_t echo, bool lets_read, int late, std::size_t lost_line) {
        SCOPED_TRACE(testing::Message() << echo << " " << lets_read << " " << late << " " << lost_line);
        folder.put("nv.txt", "d\r\n1 AA 0000\r\n2 BB 0000\r\n1 CC 0000\r\n");
        std::map<char, std::string> memory{{1, "?????"}, {2, "?????"}};
        port.responder = [&](const std::string& sent) -> ScriptedPort::Answer {
            const std::string payload = sent_frame(sent).command;
            const bool read = payload[0] == '\x20';
            const bool lost = lost_line < 3 && to_hex(payload) == lines[lost_line];
            if (lost || (read && !lets_read))
                return {};
            if (!read)
                memory[payload[2]] = payload.substr(4);
            const std::string data = read ? payload + memory[payload[2]] : payload.substr(0, echo);
            const std::string reply = build_reply_frame(Crc16(), '\x06', 1, data);
            return {{milliseconds(5), reply}, {milliseconds(late), reply}};
        };
        begin(Mode::set);
        EXPECT_EQ(run().back() == "end of nvRam file", lost_line == 3);
        EXPECT_EQ(transfer->nvram_block, static_cast<int>(lost_line));
        person.take_texts();
        clock.advance(std::chrono::seconds(5));
        port.read_waiting();
    };
    for (const std::size_t echo : {0, 2, 4, 255})
        for (const bool lets_read : {true, false})
            for (const int late : {5, 60, 400, 999, 1500})
                for (const std::size_t lost_line : {1, 2, 3}) set_with(echo, lets_read, late, lost_line);
}

// Fault: another line is opened in the middle, and half of the memory is written to the amplifier that has
// the same address there.
TEST_F(NvramTransferTest, StopsWhenTheLineIsAnother) {
    folder.put("nv.txt", "d\r\n12 00A1FF3C 5A07\r\n13 00 0000\r\n");
    port.answer(hex_bytes("06 01 04 40 20 0C 00 87 1B"));
    begin(Mode::set).start();
    while (transfer->nvram_block == 0) ASSERT_TRUE(turn());
    bus.open_bus_port("COM3:", 9600, 0, 8, 1);
    port.written.clear();
    EXPECT_EQ(run().back(), k_set_error);
    EXPECT_EQ(person.take_texts(), Texts{"Another line has been opened during the transfer"});
    EXPECT_TRUE(port.written.empty());
}

// Fault: a file is replaced or opened that the operator did not mean, or there is no way out.
TEST_F(NvramTransferTest, AsksForTheFile) {
    const std::string there = folder.put("there.txt", "d\r\n");
    const std::string question = "Replace existing file - " + there + "?";
    const std::string missing = folder / "missing.txt";
    const std::string nowhere = folder / "no/where.txt";
    const std::string empty = folder.put("empty.txt", "");
    using enum Answer;
    // What is chosen and answered, whether it begins, what is told, and what the file there holds then.
    const std::tuple<Mode, std::deque<std::optional<std::string>>, std::deque<Answer>, bool, Texts,
                     const char*>
        cases[] = {
            {Mode::set, {missing, folder.path(), there}, {}, true, {}, "d\r\n"},
            {Mode::set, {missing, std::nullopt}, {}, false, {}, "d\r\n"},
            {Mode::set, {empty}, {}, false, {"Input past end of file"}, "d\r\n"},
            {Mode::read, {there, there, std::nullopt}, {no, cancel}, false, {question, question}, "d\r\n"},
            {Mode::read, {nowhere}, {}, false, {"Path not found"}, "d\r\n"},
            {Mode::read, {missing}, {}, true, {}, "d\r\n"},
            {Mode::read, {there, there}, {no, yes}, true, {question, question}, "03-10-2026\r\n"},
        };
    for (const auto& [mode, choices, answers, begins, told, there_then] : cases) {
        person.prompts.clear();
        person.choices = choices;
        person.answers = answers;
        const auto file = choose_nvram_file(mode, person);
        const auto begun = file ? make_nvram_transfer(mode, *file, 1, bus, person) : nullptr;
        EXPECT_EQ(begun != nullptr, begins);
        EXPECT_EQ(person.take_texts(), told);
        EXPECT_EQ(person.prompts, Texts(choices.size(), mode == Mode::set ? "Open nvSram File To Read"
                                                                          : "Open nvSram File To Save"));
        EXPECT_EQ(file_bytes(there), there_then);
    }
    EXPECT_TRUE(port.written.empty());
}

}  // namespace
}  // namespace ampdesk
