// One transfer of an amplifier's parameter memory, to a text file or from one, block by block.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "buslink/bus_link.h"
#include "platform/line_file.h"
#include "platform/operator.h"
#include "tools/nvram_file.h"

namespace ampdesk {

// What frmBlock shows; Latin-1.
struct NvramPanel {
    std::string caption;
    std::string status_label;
    std::string output_label;
    std::string status{};
    std::string output{};  // the bytes of the last reply
    std::string start_caption = "Start";
    bool start_enabled = true;
    bool pause_enabled = false;
    bool operator==(const NvramPanel&) const = default;
};

class NvramTransfer {
  public:
    enum class Mode : std::int16_t {
        read = 0,  // amplifier to file
        set = 1,   // file to amplifier
    };

    // Opens the file: to be set, its first line is read and dropped; for a read it is made or
    // emptied and gets the date. Throws the run-time error of what failed. Sends nothing yet.
    NvramTransfer(Mode mode, const std::string& path, std::int16_t unit_address, BusLink& bus,
                  Operator& person);

    // The three buttons. Pause lets the block in hand come to its end.
    void start();
    void pause();
    void exit() { nvram_abort = true; }

    // Goes on by at most one exchange and returns how long to wait before the next call; nothing
    // when there is none to make before start(), or ever when nvram_abort is set (the file is then
    // closed). Called from the event loop, which so has its turn before and after every exchange.
    // A call while a message box of the transfer is open does nothing.
    std::optional<Duration> nvram_transfer_run();

    // What the window does when it closes.
    void unload();

    // Begun, and not at its end; a pause does not end it.
    bool under_way() const { return under_way_; }

    // It has come to its end by itself. What there is to tell is told after this.
    std::function<void()> on_end;

    const NvramPanel& panel() const { return panel_; }
    std::int16_t unit_address() const { return unit_address_; }

    const Mode nvram_mode;
    int nvram_block = 0;         // read: the block to ask for next; set: blocks that were taken
    bool nvram_running = false;  // steps are begun only while it is true
    bool nvram_abort = false;

  private:
    // Where the step in hand stands. Between any two of them events run.
    enum class Stage {
        none,       // no step in hand
        announced,  // the panel tells what goes out next
        exchanged,  // the exchange is over
        shown,      // the panel shows the reply
    };
    void nvram_transfer_step();
    void begin();
    void attempt(Duration rest = {});
    void exchange();
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
    bool close_files();

    BusLink& bus_;
    Operator& operator_;
    const std::string path_;
    const std::int16_t unit_address_;
    std::optional<LineReader> reader_;
    std::optional<LineWriter> writer_;
    NvramPanel panel_;

    Stage stage_ = Stage::none;
    bool stepping_ = false;
    bool under_way_ = false;
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
    Instant next_attempt_{};
    std::optional<LineSettings>
        line_;  // of the first exchange: the same address elsewhere is another amplifier
};

}  // namespace ampdesk
