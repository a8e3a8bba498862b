// The log of the terminal's session: every stretch of bytes sent and received, with the time of day
// and the direction, a line each in a file that the operator picks. The date stands above the first
// line and wherever it changes.
#pragma once

#include <functional>
#include <string>

#include "platform/clock.h"
#include "platform/log_file.h"
#include "terminal/terminal_line.h"

namespace ampdesk {

class SessionLog {
  public:
    explicit SessionLog(Clock& clock) : clock_(clock) {}

    // Begins the file anew; one that is there is lost only when the new one has its first line. Throws a
    // run-time error with the cause when it cannot be written; a log that was open is closed either way.
    void open(const std::string& path);

    // Throws when the last bytes could not be kept; the log is closed all the same.
    void close() { file_.close(); }
    bool is_open() const { return file_.is_open(); }
    const std::string& path() const { return file_.path(); }

    // "12:34:56.789 sent     ATH<0D>": a byte that does not print, and "<" itself, as two hexadecimal
    // digits. When it cannot be written the log closes itself and on_failure is called once.
    void note(const TerminalTraffic& traffic);

    std::function<void(const std::string& cause)> on_failure;

  private:
    std::string new_date(const CivilTime& now);

    Clock& clock_;
    LogFile file_;
    std::string date_;  // the heading that stands last in the file
};

}  // namespace ampdesk
