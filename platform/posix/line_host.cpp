#include "platform/line_host.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "platform/posix/time_span.h"

namespace ampdesk {

namespace {

std::string failure(const std::string& what) {
    return what + ": " + std::strerror(errno);
}

bool try_again(ssize_t count) {
    return count < 0 && (errno == EAGAIN || errno == EINTR);
}

}  // namespace

std::string LineHost::open() {
    if (!stop_)
        return "signals cannot be watched";
    // A closed pipe shows as a failed write, a background job's terminal as a failed read.
    for (const int signal : {SIGPIPE, SIGTTIN}) {
        if (std::signal(signal, SIG_IGN) == SIG_ERR)
            return "signals cannot be watched";
    }
    line_ = Descriptor(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!line_ || ::grantpt(line_.get()) != 0 || ::unlockpt(line_.get()) != 0)
        return failure("no pseudo-terminal can be made");
    std::array<char, 256> name{};
    if (::ptsname_r(line_.get(), name.data(), name.size()) != 0)
        return failure("the pseudo-terminal has no name");
    device_ = name.data();
    far_end_ = Descriptor(::open(device_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    termios settings{};
    if (!far_end_ || ::tcgetattr(far_end_.get(), &settings) != 0)
        return failure(device_);
    ::cfmakeraw(&settings);
    if (::tcsetattr(far_end_.get(), TCSANOW, &settings) != 0)
        return failure(device_);
    return {};
}

LineHost::Heard LineHost::wait(std::optional<Duration> limit) {
    enum { k_line, k_commands, k_stop, k_count };
    std::array<pollfd, k_count> waits = {{
        {.fd = line_.get(), .events = POLLIN, .revents = 0},
        {.fd = commands_open_ ? STDIN_FILENO : -1, .events = POLLIN, .revents = 0},  // -1 is passed over
        {.fd = stop_.watch_handle(), .events = POLLIN, .revents = 0},
    }};
    const timespec left = time_span(limit.value_or(Duration::zero()));
    Heard heard;
    if (::ppoll(waits.data(), waits.size(), limit ? &left : nullptr, nullptr) < 0) {
        heard.failed = errno != EINTR;
        return heard;
    }
    heard.stop = waits[k_stop].revents != 0;
    if (waits[k_line].revents != 0)
        hear_line(heard);
    if (waits[k_commands].revents != 0)
        hear_commands(heard);
    return heard;
}

void LineHost::hear_line(Heard& heard) {
    std::array<char, 4096> bytes{};
    const ssize_t count = ::read(line_.get(), bytes.data(), bytes.size());
    if (count > 0)
        heard.line.assign(bytes.data(), static_cast<std::size_t>(count));
    else
        heard.failed = !try_again(count);
}

void LineHost::hear_commands(Heard& heard) {
    std::array<char, 1024> bytes{};
    const ssize_t count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
    if (count > 0) {
        heard.commands.assign(bytes.data(), static_cast<std::size_t>(count));
    } else if (!try_again(count)) {
        commands_open_ = false;
        heard.commands_ended = true;
    }
}

void LineHost::send(std::string_view bytes) {
    if (!bytes.empty() && ::write(line_.get(), bytes.data(), bytes.size()) < 0)
        return;
}

void LineHost::answer(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return;  // nobody wants the answers any more
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace ampdesk
