#include "demo/ampsim_session.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "demo/faults.h"

namespace ampdesk::demo {

namespace {

constexpr std::size_t k_longest_command_line = 4096;

std::string failure(const std::string& what) {
    return what + ": " + std::strerror(errno);
}

void write_all(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return;  // nobody wants the answers any more
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

timespec to_timespec(Duration duration) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(duration);
    const auto rest = std::chrono::duration_cast<std::chrono::nanoseconds>(duration - seconds);
    return {.tv_sec = seconds.count(), .tv_nsec = rest.count()};
}

}  // namespace

AmpsimSession::~AmpsimSession() {
    std::error_code ignored;
    if (!link_.empty() && std::filesystem::read_symlink(link_, ignored) == device_)
        std::filesystem::remove(link_, ignored);
    if (slave_ >= 0)
        ::close(slave_);
    if (master_ >= 0)
        ::close(master_);
}

std::string AmpsimSession::open(const std::string& link) {
    master_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0)
        return failure("no pseudo-terminal can be made");
    std::array<char, 256> name{};
    if (::ptsname_r(master_, name.data(), name.size()) != 0)
        return failure("the pseudo-terminal has no name");
    device_ = name.data();
    slave_ = ::open(device_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings{};
    if (slave_ < 0 || ::tcgetattr(slave_, &settings) != 0)
        return failure(device_);
    ::cfmakeraw(&settings);
    if (::tcsetattr(slave_, TCSANOW, &settings) != 0)
        return failure(device_);
    return link.empty() ? std::string() : make_link(link);
}

std::string AmpsimSession::make_link(const std::string& link) {
    namespace fs = std::filesystem;
    std::error_code code;
    if (fs::is_symlink(fs::symlink_status(link, code))) {
        const bool stale = !fs::exists(link, code) || fs::read_symlink(link, code) == device_;
        if (!stale)
            return link + ": leads to " + fs::read_symlink(link, code).string() + ", which is there";
        fs::remove(link, code);
    }
    fs::create_symlink(device_, link, code);
    if (code)
        return link + ": " + code.message();
    link_ = link;
    return {};
}

bool AmpsimSession::run(int commands, int answers, int stop) {
    enum { k_master, k_commands, k_stop, k_count };
    while (!quit_) {
        std::array<pollfd, k_count> waits = {{
            {.fd = master_, .events = POLLIN, .revents = 0},
            {.fd = commands, .events = POLLIN, .revents = 0},  // a negative one is passed over
            {.fd = stop, .events = POLLIN, .revents = 0},
        }};
        const auto due = bus_.next_due();
        timespec limit{};
        if (due)
            limit = to_timespec(std::max(*due - clock_.now(), Duration{}));
        if (::ppoll(waits.data(), waits.size(), due ? &limit : nullptr, nullptr) < 0 && errno != EINTR)
            return false;
        if (waits[k_stop].revents != 0)
            return true;
        if (waits[k_master].revents != 0 && !hear_station())
            return false;
        if (waits[k_commands].revents != 0)
            obey_input(commands, answers);
        speak();
    }
    return true;
}

bool AmpsimSession::hear_station() {
    std::array<char, 4096> bytes{};
    const ssize_t count = ::read(master_, bytes.data(), bytes.size());
    if (count > 0)
        bus_.receive({bytes.data(), static_cast<std::size_t>(count)});
    return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
}

// What does not fit because nobody reads is lost, as on a line.
void AmpsimSession::speak() {
    const std::string bytes = bus_.take_due();
    if (!bytes.empty() && ::write(master_, bytes.data(), bytes.size()) < 0)
        return;
}

void AmpsimSession::obey_input(int& commands, int answers) {
    std::array<char, 1024> bytes{};
    const ssize_t count = ::read(commands, bytes.data(), bytes.size());
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (count <= 0) {
        commands = -1;
        if (!command_text_.empty())
            command_text_ += '\n';  // a last line without its end counts too
    } else {
        command_text_.append(bytes.data(), static_cast<std::size_t>(count));
    }
    std::size_t end = 0;
    while (!quit_ && (end = command_text_.find('\n')) != std::string::npos) {
        const std::string line = command_text_.substr(0, end);
        command_text_.erase(0, end + 1);
        obey(line, answers);
    }
    if (command_text_.size() > k_longest_command_line)
        command_text_.resize(k_longest_command_line);
}

// Every line is answered, a blank one too: a script that has sent it waits.
void AmpsimSession::obey(std::string_view line, int answers) {
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    const FaultAnswer answer = make_fault(bus_, line);
    write_all(answers, answer.text + "\n");
    quit_ = quit_ || answer.quit;
}

}  // namespace ampdesk::demo
