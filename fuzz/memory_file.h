// A file in memory that the code under test opens by a name, as it would one on a disk.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "fuzz/check.h"
#include "platform/descriptor.h"

namespace ampdesk::fuzz {

class MemoryFile {
  public:
    MemoryFile() : file_(memfd_create("fuzz", MFD_CLOEXEC)) { check(static_cast<bool>(file_), "a file"); }

    std::string path() const { return "/proc/self/fd/" + std::to_string(file_.get()); }

    // The path of the file, which holds these bytes now.
    std::string put(std::string_view bytes) {
        const auto size = static_cast<ssize_t>(bytes.size());
        check(ftruncate(file_.get(), 0) == 0 && pwrite(file_.get(), bytes.data(), bytes.size(), 0) == size,
              "room in memory");
        return path();
    }

  private:
    Descriptor file_;
};

}  // namespace ampdesk::fuzz
