// A disk that is full: while this lives, no file of the process grows past `room` bytes. A limit of the
// process stands for the disk, as it needs no privilege.
#pragma once

#include <sys/resource.h>

#include <csignal>

namespace ampdesk {

class FullDisk {
  public:
    explicit FullDisk(rlim_t room = 0) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit small{room, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

  private:
    void (*handler_)(int) = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before_{};
};

}  // namespace ampdesk
