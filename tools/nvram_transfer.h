// One transfer of an amplifier's parameter memory, to a text file or from one, block by block.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "buslink/bus_guest.h"
#include "platform/line_file.h"
#include "platform/operator.h"
#include "tools/nvram_file.h"
#include "tools/nvram_panel.h"

namespace ampdesk {

class NvramTransfer : public BusGuest {
  public:
    enum class Mode : std::int16_t {
        read = 0,  // amplifier to file
        set = 1,   // file to amplifier
    };

    // Opens the file: to be set, its first line is read and dropped; for a read it is made or
    // emptied and gets the date. Throws the run-time error of what failed. Sends nothing yet.
    NvramTransfer(Mode mode, const std::string& path, std::int16_t unit_address, BusLink& bus,
                  Operator& person);

    // The three buttons. Pause lets the block in hand come to its end. Exit ends it and closes the file. Once
    // it has ended the first two do nothing: they may be pressed before the end is seen.
    void start();
    void pause();
    void exit();

    // One exchange at a time; nothing before start(), during a pause or ever again once nvram_abort is set.
    std::optional<Instant> due() const override;
    std::optional<BusCommand> next() override;
    void ended(const BusReply& reply) override;

    // What the window does when it closes.
    void unload();

    // The panel has changed: every state of it is told once, and in its turn; the end before the message
    // that tells why.
    std::function<void()> on_panel;

    const NvramPanel& panel() const { return panel_; }

    const Mode nvram_mode;
    int nvram_block = 0;         // read: the block to ask for next; set: blocks that were taken
    bool nvram_running = false;  // steps are begun only while it is true
    bool nvram_abort = false;

  private:
    // Where the step in hand stands.
    enum class Stage {
        none,       // no step in hand
        announced,  // the panel tells what goes out next
        asked,      // it goes out
    };
    bool over() const { return nvram_abort || (!nvram_running && stage_ == Stage::none); }
    void begin();
    void attempt(Duration rest = {});
    bool is_on_its_line();
    void take_reply();
    void judge_read();
    void judge_set();
    void judge_read_back();
    void set_is_over(bool refused);
    bool read_line();
    void end();
    void finish(const std::string& status, bool keep_file = false);
    void fail(const std::string& cause);
    void connection_error();
    std::string close_files();
    void tell_panel();

    BusLink& bus_;
    Operator& operator_;
    const std::string path_;
    const std::int16_t unit_address_;
    std::optional<LineReader> reader_;
    std::optional<LineWriter> writer_;
    NvramPanel panel_;

    Stage stage_ = Stage::none;
    bool ended_ = false;
    int attempts_ = -1;
    int silent_ = 0;       // attempts without an answer since the last answer
    std::string command_;  // of the step in hand
    std::string reply_;
    bool spoilt_ = false;  // it came, but with a bad CRC
    int unsaid_ = 0;       // replies of the step in hand that did not say which block they are about

    // Of a set.
    NvramBlock block_;                 // of the line in hand
    std::map<int, std::string> sent_;  // the last command of each block number
    bool number_again_ = false;        // an earlier line had this one's number, and other bytes
    bool reading_back_ = false;        // the exchange in hand asks for what the block holds now
    bool refused_ = false;             // what the reply said that is checked by it
    bool can_read_back_ = false;       // the amplifier has answered such a question
    std::size_t status_ = 0;           // the number that the panel shows of a line that is being set
    Instant asked_at_{};
    Instant next_attempt_{};
    // Of the first exchange: the same address elsewhere is another amplifier.
    std::optional<LineSettings> line_;
};

// Nothing when the file cannot be opened, which is told.
std::unique_ptr<NvramTransfer> make_nvram_transfer(NvramTransfer::Mode mode, const std::string& path,
                                                   std::int16_t unit_address, BusLink& bus, Operator& person);

}  // namespace ampdesk
