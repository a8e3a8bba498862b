// Text files that are read, or that grow, one line at a time. Line ends as in text_file.h.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/descriptor.h"

namespace ampdesk {

// Holds one line and one block of the file, however large that is.
class LineReader {
  public:
    static constexpr std::size_t k_longest_line = 1 << 20;

    // Throws what read_text_lines throws.
    explicit LineReader(const std::string& path);

    // The next line without its end; nothing at the end of the file. Throws "Device I/O error", and
    // "Out of string space" for a line longer than k_longest_line.
    std::optional<std::string> next_line();

  private:
    bool fill();

    std::string path_;
    Descriptor file_;
    std::array<char, 16384> block_{};
    std::size_t at_ = 0;
    std::size_t size_ = 0;
};

// Every line is with the operating system when its call returns, so that what was written outlives
// the program.
class LineWriter {
  public:
    // Makes the file. One that is there stays as it is until the first line stands in its place, so
    // that a full disk does not cost it. Throws the errors of writing.
    explicit LineWriter(const std::string& path);

    // When the line cannot be written whole, none of it stays in the file and a run-time error tells
    // the cause.
    void append_line(std::string_view line);

    // Flushes to the disk and closes. Throws when the file may not have arrived there. The destructor
    // closes without a word.
    void close();

  private:
    std::string path_;
    Descriptor file_;
    std::size_t size_ = 0;
};

}  // namespace ampdesk
