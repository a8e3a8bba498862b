// The far end of a serial line, played through a pseudo-terminal.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/descriptor.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk {

class FarEnd {
  public:
    FarEnd() {
        int master = -1;
        int slave = -1;
        char name[64] = "";
        if (openpty(&master, &slave, name, nullptr, nullptr) != 0)
            throw std::runtime_error("no pseudo-terminal");
        ::close(slave);
        fcntl(master, F_SETFD, FD_CLOEXEC);
        line_ = Descriptor(master);
        device_ = name;
    }

    const std::string& device() const { return device_; }

    void send(std::string_view bytes) {
        if (::write(line_.get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
            throw std::runtime_error("the line took less than was sent");
    }

    // What arrives until that many bytes are there or nothing comes for so long.
    std::string receive(std::size_t size, int patience_ms = 1000) {
        std::string bytes;
        pollfd watched{line_.get(), POLLIN, 0};
        while (bytes.size() < size && poll(&watched, 1, patience_ms) == 1) {
            char block[4096];
            const ssize_t count = ::read(line_.get(), block, std::min(sizeof block, size - bytes.size()));
            if (count <= 0)
                break;
            bytes.append(block, static_cast<std::size_t>(count));
        }
        return bytes;
    }

    // What the near end has set.
    const termios& modes() {
        tcgetattr(line_.get(), &modes_);
        return modes_;
    }

    void unplug() { line_.close(); }

  private:
    Descriptor line_;
    std::string device_;
    termios modes_{};
};

}  // namespace ampdesk
