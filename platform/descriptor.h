// Owner of one handle of the operating system: a file, a line, a queue of signals. What can be done with
// it is known in platform/posix/ only.
#pragma once

#include <utility>

namespace ampdesk {

class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int fd) : fd_(fd) {}
    Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        if (this != &other) {
            close();
            fd_ = std::exchange(other.fd_, -1);
        }
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    explicit operator bool() const { return fd_ >= 0; }
    int get() const { return fd_; }

    // 0, or -1 with errno. The descriptor is gone either way; closing nothing succeeds.
    int close();

  private:
    int fd_ = -1;
};

}  // namespace ampdesk
