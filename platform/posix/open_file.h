// Ordinary files at the level of the operating system: opened without ever blocking, read and written
// whole, every failure told as a run-time error.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>

#include "platform/descriptor.h"
#include "platform/run_time_error.h"

namespace ampdesk {

// The run-time error that stands for an errno met on that file: "File not found", "Path not found",
// "Permission denied" or "Disk full"; nothing for an errno that has no error of its own.
std::optional<RunTimeError> file_error(int error, const std::filesystem::path& path);

// Throws it, "Device I/O error" where there is none.
[[noreturn]] void throw_file_error(int error, const std::filesystem::path& path);

// A queue, a device or a folder is refused with "Device I/O error".
Descriptor open_to_read(const std::filesystem::path& path);

// Makes the file, or opens the one that is there as it stands. Refuses what open_to_read refuses.
Descriptor open_to_write(const std::filesystem::path& path);

// Up to `size` bytes; 0 at the end of the file.
std::size_t read_some(const Descriptor& file, char* buffer, std::size_t size,
                      const std::filesystem::path& path);

void write_all(const Descriptor& file, std::string_view bytes, const std::filesystem::path& path);

}  // namespace ampdesk
