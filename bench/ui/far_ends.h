// The far ends of the program's two lines, each a pseudo-terminal served by a thread of its own.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <filesystem>
#include <map>
#include <mutex>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "demo/demonstration.h"
#include "demo/faults.h"
#include "platform/descriptor.h"
#include "platform/posix/system_clock.h"

namespace ampdesk::bench {

struct FarEnd {
    FarEnd() {
        int master = -1;
        int slave = -1;
        char name[64] = "";
        if (::openpty(&master, &slave, name, nullptr, nullptr) != 0)
            throw std::runtime_error("no pseudo-terminal");
        ::fcntl(master, F_SETFL, O_NONBLOCK);
        line = Descriptor(master);
        near_end = Descriptor(slave);
        device = name;
    }
    Descriptor line;
    Descriptor near_end;  // held, so that nothing is hung up while the program has it not open
    std::string device;
};

// The amplifiers of the demonstration on a line of 9600 baud, commands and replies, that begin their answer
// 5 ms after the command.
class AmplifierLine {
  public:
    // The line is found under that name, a link.
    AmplifierLine(int amplifiers, std::string name) : name_(std::move(name)) {
        bus_.pace_commands(std::chrono::milliseconds(5));
        demo::add_demonstration(bus_, amplifiers);
        plug_in();
    }
    ~AmplifierLine() { unplug(); }

    void plug_in() {
        far_end_ = FarEnd();
        std::filesystem::create_symlink(far_end_.device, name_);
        stop_ = false;
        thread_ = std::thread([this] { serve(); });
    }

    // The device goes, as that of an adapter that is pulled.
    void unplug() {
        stop_ = true;
        if (thread_.joinable())
            thread_.join();
        std::filesystem::remove(name_);
        far_end_.near_end.close();
        far_end_.line.close();
    }

    // A fault command as ampsim takes it.
    void fault(const std::string& line) {
        const std::lock_guard lock(mutex_);
        if (const demo::FaultAnswer answer = demo::make_fault(bus_, line); answer.text != "ok")
            throw std::runtime_error(line + ": " + answer.text);
    }

    // The longest time between two requests for the status of one amplifier since the last call.
    Duration take_longest_gap() {
        const std::lock_guard lock(mutex_);
        asked_.clear();
        return std::exchange(longest_gap_, {});
    }

  private:
    void note(std::string_view request) {
        if (request.size() < 4 || request[0] != '\x01' || request[3] != '\x11')
            return;
        const Instant now = clock_.now();
        const auto [before, first] = asked_.try_emplace(request[1], now);
        if (!first)
            longest_gap_ = std::max(longest_gap_, now - std::exchange(before->second, now));
    }

    void serve() {
        Duration left = k_longest;
        while (!stop_) {
            pollfd watched{.fd = far_end_.line.get(), .events = POLLIN, .revents = 0};
            const timespec limit{.tv_sec = 0, .tv_nsec = std::chrono::nanoseconds(left).count()};
            ::ppoll(&watched, 1, &limit, nullptr);
            std::array<char, 1024> block{};
            const ssize_t count = ::read(far_end_.line.get(), block.data(), block.size());
            const std::lock_guard lock(mutex_);
            if (count > 0) {
                const std::string_view request(block.data(), static_cast<std::size_t>(count));
                note(request);
                bus_.receive(request);
            }
            const std::string bytes = bus_.take_due();
            // What does not fit because nobody reads is lost, as on a line.
            [[maybe_unused]] const ssize_t sent = ::write(far_end_.line.get(), bytes.data(), bytes.size());
            const Instant now = clock_.now();
            left = std::clamp<Duration>(bus_.next_due().value_or(now + k_longest) - now, {}, k_longest);
        }
    }

    // Until it is seen that all is to end.
    static constexpr Duration k_longest = std::chrono::milliseconds(20);

    const std::string name_;
    SystemClock clock_;
    std::mutex mutex_;               // of the bus and what is noted
    std::map<char, Instant> asked_;  // for the status, by address
    Duration longest_gap_{};
    demo::SimBus bus_{clock_, std::chrono::nanoseconds(10'000'000'000 / 9600)};
    FarEnd far_end_;
    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

// Somebody at the terminal's port who sends noise as fast as it is taken.
class NoisyLine {
  public:
    ~NoisyLine() { stop(); }

    void send(std::size_t bytes) {
        stop_ = false;
        left = bytes;
        thread_ = std::thread([this] {
            const SystemClock clock;
            const Instant start = clock.now();
            std::mt19937 random(1);
            std::array<char, 1024> block{};
            while (!stop_ && left > 0) {
                pollfd watched{.fd = far_end_.line.get(), .events = POLLOUT | POLLIN, .revents = 0};
                ::poll(&watched, 1, 100);
                for (char& byte : block) byte = static_cast<char>(random());
                const ssize_t taken =
                    ::write(far_end_.line.get(), block.data(), std::min(block.size(), left.load()));
                left -= static_cast<std::size_t>(std::max<ssize_t>(taken, 0));
                while (::read(far_end_.line.get(), block.data(), block.size()) > 0) {  // what is answered
                }
            }
            taken_in = clock.now() - start;
        });
    }
    void stop() {
        stop_ = true;
        if (thread_.joinable())
            thread_.join();
    }

    const std::string& device() const { return far_end_.device; }

    std::atomic<std::size_t> left = 0;  // not yet taken
    Duration taken_in{};                // valid after stop()

  private:
    FarEnd far_end_;
    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

}  // namespace ampdesk::bench
