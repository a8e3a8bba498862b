#include "platform/line_wait.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>
#include <vector>

#include "platform/descriptor.h"
#include "platform/posix/time_span.h"

namespace ampdesk {

namespace {

class PollWait : public LineWait {
  public:
    explicit PollWait(Clock& clock) : clock_(clock), woken_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
        if (!woken_)
            throw std::system_error(errno, std::generic_category(), "eventfd");
    }

    void wait(std::span<SerialPort* const> ports, Instant deadline) override {
        watched_.assign(1, {.fd = woken_.get(), .events = POLLIN, .revents = 0});
        for (const SerialPort* port : ports) {
            watched_.push_back({.fd = port->watch_handle(), .events = POLLIN, .revents = 0});  // -1: none
            if (const auto due = port->input_due())
                deadline = std::min(deadline, *due);
        }
        int count = 0;
        do {
            const Instant now = clock_.now();
            const timespec left = time_span(std::max(deadline, now) - now);  // never overflows
            count = ::ppoll(watched_.data(), watched_.size(), &left, nullptr);
        } while (count < 0 && errno == EINTR);
        if (count < 0)
            throw std::system_error(errno, std::generic_category(), "ppoll");
        // Taken back only when it was seen: who calls from now on means the next wait.
        std::uint64_t calls = 0;
        if (watched_.front().revents != 0 && ::read(woken_.get(), &calls, sizeof calls) < 0)
            throw std::system_error(errno, std::generic_category(), "eventfd");
    }

    // Fails only when it has been called 2^64 times for one wait, which ends all the same.
    void wake() override {
        const std::uint64_t one = 1;
        [[maybe_unused]] const ssize_t written = ::write(woken_.get(), &one, sizeof one);
    }

  private:
    Clock& clock_;
    Descriptor woken_;  // an eventfd: readable from wake() until a wait has ended for it
    std::vector<pollfd> watched_;
};

}  // namespace

std::unique_ptr<LineWait> make_line_wait(Clock& clock) {
    return std::make_unique<PollWait>(clock);
}

}  // namespace ampdesk
