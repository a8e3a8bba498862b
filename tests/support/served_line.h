// Simulated amplifiers at the far end of a pseudo-terminal, served by a thread of their own.
#pragma once

#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>

#include "demo/sim_bus.h"
#include "platform/descriptor.h"

namespace ampdesk {

class ServedLine {
  public:
    // The line is found under that name, a link; one of before is replaced. The bus is this thread's until
    // the line is unplugged: by the test, or by itself in the middle of that reply, counted from 1.
    ServedLine(demo::SimBus& bus, const std::string& name, int torn_reply = 0)
        : bus_(bus), name_(name), torn_reply_(torn_reply) {
        int master = -1;
        int slave = -1;
        char device[64] = "";
        termios raw{};
        cfmakeraw(&raw);
        if (openpty(&master, &slave, device, &raw, nullptr) != 0)
            throw std::runtime_error("no pseudo-terminal");
        master_ = Descriptor(master);
        slave_ = Descriptor(slave);  // held, so that the far end is no hang-up while nobody has it open
        std::filesystem::remove(name);
        std::filesystem::create_symlink(device, name);
        thread_ = std::thread([this] { serve(); });
    }
    ~ServedLine() { unplug(); }

    void unplug() {
        stop_ = true;
        if (thread_.joinable())
            thread_.join();
        pull();
    }

  private:
    // The name goes first: the device's number may be somebody else's the next moment.
    void pull() {
        if (master_)
            std::filesystem::remove(name_);
        slave_.close();
        master_.close();
    }

    void serve() {
        while (!stop_) {
            pollfd input{.fd = master_.get(), .events = POLLIN, .revents = 0};
            char block[1024];
            if (::poll(&input, 1, 20) != 1)
                continue;
            if (const ssize_t count = ::read(master_.get(), block, sizeof block); count > 0)
                bus_.receive({block, static_cast<std::size_t>(count)});
            const std::string reply = bus_.take_due();
            if (reply.empty())
                continue;
            const bool torn = --torn_reply_ == 0;
            if (::write(master_.get(), reply.data(), torn ? reply.size() / 2 : reply.size()) < 0)
                return;
            if (torn) {
                std::this_thread::sleep_for(std::chrono::milliseconds(20));  // what has gone out is to arrive
                return pull();
            }
        }
    }

    demo::SimBus& bus_;
    const std::string name_;
    int torn_reply_;  // so many more
    Descriptor master_;
    Descriptor slave_;
    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

}  // namespace ampdesk
