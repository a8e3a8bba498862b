// The far end of a serial line, played through a pseudo-terminal.
#pragma once

#include <fcntl.h>
#include <pty.h>
#include <termios.h>

#include <ctime>

#include "platform/clock.h"
#include "tests/support/child_program.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk {

// How long something takes that is not to use the processor.
template <class Action>
Duration time_of(Action action) {
    const std::clock_t used_before = std::clock();
    const Instant start = std::chrono::steady_clock::now();
    action();
    const Duration taken = std::chrono::steady_clock::now() - start;
    EXPECT_LT(std::clock() - used_before, CLOCKS_PER_SEC / 100);
    return taken;
}

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
        return read_some(line_.get(), size, patience_ms);
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
