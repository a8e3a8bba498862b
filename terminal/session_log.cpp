#include "terminal/session_log.h"

#include <cstdio>

#include "platform/run_time_error.h"

namespace ampdesk {

namespace {

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
    date_.clear();
    file_.open(path, new_date(clock_.local_time()));
}

// The heading of a date that no heading has told yet; empty otherwise.
std::string SessionLog::new_date(const CivilTime& now) {
    char date[64];
    std::snprintf(date, sizeof date, "Terminal log of %04d-%02d-%02d\r\n", now.year, now.month, now.day);
    if (date == date_)
        return {};
    return date_ = date;
}

void SessionLog::note(const TerminalTraffic& traffic) {
    if (!file_.is_open())
        return;
    const CivilTime now = clock_.local_time();
    char stamp[32];
    std::snprintf(stamp, sizeof stamp, "%02d:%02d:%02d.%03d %-9s", now.hour, now.minute, now.second,
                  now.millisecond, traffic.sent ? "sent" : "received");
    try {
        file_.append(new_date(now) + stamp + printed(traffic.bytes) + "\r\n");
    } catch (const RunTimeError& error) {
        if (on_failure)
            on_failure(error.what());
    }
}

}  // namespace ampdesk
