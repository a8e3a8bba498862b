// Small text files: settings, help pages, nvRam images. CR LF is written; CR LF and LF are read, a
// CR alone ends no line.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ampdesk {

// The file's lines without their ends. Throws "File not found", "Permission denied", "Path not
// found" or "Device I/O error". Reads at most `limit` bytes; what lies beyond is not looked at, so
// that a huge or binary file costs no more than that. Never changes the file.
std::vector<std::string> read_text_lines(const std::string& path, std::size_t limit = 1 << 20);

// The file's bytes as they stand, at most `limit` of them. Throws as read_text_lines.
std::string read_file_bytes(const std::string& path, std::size_t limit);

// Whether there is something of that name that is not a folder.
bool file_exists(const std::string& path);

// Replaces the file by the lines, each ended by CR LF: a temporary file beside it is written,
// flushed and measured, then renamed. On any doubt the old file stays as it was and a run-time
// error tells the cause ("Disk full", "Permission denied" …). The old file's mode is kept; of a
// link, the file it points to is replaced; anything but an ordinary file is refused.
void write_text_lines(const std::string& path, const std::vector<std::string>& lines);

// The same for a file that begins with its title: one that is there with another is not ours to replace, and
// throws "Invalid file format"; an empty one is.
void write_titled_lines(const std::string& path, const std::vector<std::string>& lines);

// As above with the bytes as they stand.
void write_file_bytes(const std::string& path, std::string_view bytes);

// Byte-for-byte copy with the same care.
void copy_file_bytes(const std::string& from, const std::string& to);

}  // namespace ampdesk
