// File transfers and the null modem test on the terminal line: one at a time, from the order to what has
// become of it.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/operator.h"
#include "station/terminal_talk.h"
#include "terminal/terminal_line.h"
#include "terminal/transfer_run.h"

namespace ampdesk {

class TransferService {
  public:
    // Tells its state whenever that has changed, and files that could not be kept.
    TransferService(TerminalLine& line, Operator& person, std::function<void(TerminalNotice)> tell);

    // A transfer that cannot begin is told. None begins while a received file waits to be kept.
    void begin(const act::BeginTransfer& wanted);

    // Keeps what has come of a text; of anything else there is no end before its end.
    void end();
    void cancel();

    // One has come to its end, and the line is about to be given back.
    bool ending() const { return file_.run && file_.transfer->finished(); }

    // The answer to FileNotKept. What still cannot be written is told so again.
    void keep(const std::optional<std::string>& path);

    // The report comes in a box about a second later. Nothing when the line cannot be taken.
    void test_null_modem();

    // Does what is due; to be called when due() says so, or sooner.
    void step();
    std::optional<Instant> due() const;

    // The line has been given back.
    std::function<void()> on_over;

  private:
    // A transfer while it holds the line, and after that for what it has received.
    struct Carried {
        std::unique_ptr<Transfer> transfer;
        std::unique_ptr<TransferRun> run;
        Instant next_tick{};
    };
    bool start(Carried& carried, std::unique_ptr<Transfer> transfer);
    bool gives_line_back(Carried& carried);
    std::unique_ptr<Transfer> make_transfer(const act::BeginTransfer& wanted);
    std::unique_ptr<Transfer> make_sender(const act::BeginTransfer& wanted);
    void file_over();
    void keep_received();
    void close_file(std::string message);
    void tell_state();

    TerminalLine& line_;
    Operator& operator_;
    std::function<void(TerminalNotice)> tell_;
    Carried file_;  // its transfer stays until what was received is kept
    Carried test_;
    TransferView view_;
    TransferView told_;
};

}  // namespace ampdesk
