#include "terminal/session_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "platform/open_file.h"
#include "platform/run_time_error.h"

namespace ampdesk {

namespace {

[[noreturn]] void fail(int error, const std::string& path) {
    // The log itself is made: what is missing is its folder.
    if (const auto known = file_error(error == ENOENT ? ENOTDIR : error, path))
        throw *known;
    throw RunTimeError(57, std::generic_category().message(error));
}

std::string printed(std::string_view bytes) {
    constexpr std::string_view k_digits = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes) {
        if (c >= ' ' && c <= '~' && c != '<') {
            text += c;
            continue;
        }
        const auto value = static_cast<unsigned char>(c);
        text += {'<', k_digits[value >> 4U], k_digits[value & 15U], '>'};
    }
    return text;
}

}  // namespace

void SessionLog::open(const std::string& path) {
    file_ = Descriptor();
    path_ = path;
    // A queue that nobody reads fails at once and does not hold up the program.
    Descriptor opened(::open(path.c_str(), O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0666));
    if (!opened)
        fail(errno, path_);
    file_ = std::move(opened);
    date_.clear();
    const std::string head = new_date(clock_.local_time());
    write(head);
    // Only now, so that a full disk does not cost the log of before. A device has nothing to cut.
    static_cast<void>(ftruncate(file_.get(), static_cast<off_t>(head.size())) == 0);
}

// The heading of a date that no heading has told yet; empty otherwise.
std::string SessionLog::new_date(const CivilTime& now) {
    char date[64];
    std::snprintf(date, sizeof date, "Terminal log of %04d-%02d-%02d\r\n", now.year, now.month, now.day);
    if (date == date_)
        return {};
    return date_ = date;
}

void SessionLog::close() {
    if (file_ && file_.close() != 0)
        fail(errno, path_);
}

void SessionLog::note(const TerminalTraffic& traffic) {
    if (!file_)
        return;
    const CivilTime now = clock_.local_time();
    char stamp[32];
    std::snprintf(stamp, sizeof stamp, "%02d:%02d:%02d.%03d %-9s", now.hour, now.minute, now.second,
                  now.millisecond, traffic.sent ? "sent" : "received");
    try {
        write(new_date(now) + stamp + printed(traffic.bytes) + "\r\n");
    } catch (const RunTimeError& error) {
        if (on_failure)
            on_failure(error.what());
    }
}

void SessionLog::write(std::string_view text) {
    while (!text.empty()) {
        const ssize_t taken = ::write(file_.get(), text.data(), text.size());
        if (taken >= 0) {
            text.remove_prefix(static_cast<std::size_t>(taken));
        } else if (errno != EINTR) {
            const int error = errno;
            file_ = Descriptor();
            fail(error, path_);
        }
    }
}

}  // namespace ampdesk
