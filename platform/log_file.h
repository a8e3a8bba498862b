// A file that only grows and that is begun anew each time. It may be a device or a queue, too; one that
// nobody reads fails at once and does not hold up the program.
#pragma once

#include <string>
#include <string_view>

#include "platform/descriptor.h"

namespace ampdesk {

class LogFile {
  public:
    // Begins the file with `head`; what was in it before goes only when that stands, so that a full disk
    // does not cost it. A file that was open is closed first. Throws a run-time error whose text is the
    // cause ("Disk full", "Is a directory" …); then nothing is open.
    void open(const std::string& path, std::string_view head);

    // Everything is with the operating system when the call returns. On failure the file is closed, and
    // a run-time error tells the cause.
    void append(std::string_view bytes);

    // Throws when the last bytes could not be kept; the file is closed all the same.
    void close();
    bool is_open() const { return static_cast<bool>(file_); }
    const std::string& path() const { return path_; }  // of the last open()

  private:
    std::string path_;
    Descriptor file_;
};

}  // namespace ampdesk
