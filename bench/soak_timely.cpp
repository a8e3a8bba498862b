#include "bench/soak_timely.h"

#include <algorithm>
#include <iterator>

#include "amplifier/commands.h"

namespace ampdesk::bench {

namespace {

constexpr int k_shut_down = 16;  // a bit of a status reply

bool tells_of_shutdown(const Said& status) {
    return !status.payload.empty() && (static_cast<unsigned char>(status.payload[0]) & k_shut_down) != 0;
}

}  // namespace

const Said* TimelyWatch::newest_sound(std::string_view command) {
    const std::deque<Said>& said = line_.said(own());
    const auto newest = std::find_if(said.rbegin(), said.rend(), [&](const Said& one) {
        return one.sound && one.accepted && one.speaker == Speaker::head && one.command == command &&
               one.arrived <= clock_.now();
    });
    return newest == said.rend() ? nullptr : &*newest;
}

void TimelyWatch::look() {
    look_at_screens();
    look_at_values();
    look_at_shutdown();
    look_for_silence();
    look_for_dead_line();
}

void TimelyWatch::look_at_screens() {
    const Instant now = clock_.now();
    const Panel& panel = head_.panel();
    const bool error = shows_error(panel);
    if (error && !error_since_) {
        error_since_ = now;
        constexpr int k_failures = 3;
        constexpr int k_dead_line = 6;
        const int failures = failed_reads();
        if (failures < k_failures && unanswered_in_a_row() < k_dead_line) {
            ++counts_.early_errors;
            findings_.tell("error screen", own(), "not before three reads have failed twice",
                           "after " + std::to_string(failures));
        }
    }
    if (!error)
        error_since_.reset();
    if (error)
        heard_since_ = now;
    if (!shows_shutdown(panel)) {
        if (shutdown_since_ && !error && line_.is_known(own()) && !heard_of_its_end()) {
            ++counts_.unfounded;
            findings_.tell("shutdown display", own(), "to stay until the shutdown is over", "gone");
        }
        shutdown_since_.reset();
    } else if (!shutdown_since_) {
        shutdown_since_ = now;
        lit_since_ = now;
    }
    // It may have ended since the last look.
    const auto until_now = [now](bool is, bool& was, Instant& since) {
        if (is || was)
            since = now;
        was = is;
    };
    until_now(error, error_before_, lit_since_);
    const Screen screen{head_.state().menu_ptr, head_.state().sub_menu, head_.state().gain_mode};
    if (screen != screen_)
        screen_since_ = now;
    screen_ = screen;
    until_now(is_dark(head_) || shows_shutdown(panel), dark_before_, free_since_);
    // Before, it may take another's reply for its own.
    until_now(!line_.is_known(own()), unknown_before_, known_since_);
}

// How many reads have failed after their second try since one was answered; rather one too many, for a third
// try may be the first of the next read. One that a setting followed sooner than any wait ends was cut, and
// is none.
int TimelyWatch::failed_reads() const {
    constexpr std::chrono::milliseconds k_shortest_wait{300};
    std::map<std::string, bool, std::less<>> tried_once;
    int failures = 0;
    const auto& log = line_.log();
    for (auto one = log.begin(); one != log.end(); ++one) {
        if (!one->asked_by_head() || one->order.address != own())
            continue;
        const auto next = std::next(one);
        if (one->silence && next != log.end() && next->order.setting() &&
            next->at - one->at < k_shortest_wait)
            continue;
        bool& once = tried_once[one->order.command];
        const bool answered = one->sound && one->accepted;
        failures = answered ? 0 : failures + (once ? 1 : 0);
        once = !answered;
    }
    return failures;
}

// How many reads nobody has answered.
int TimelyWatch::unanswered_in_a_row() const {
    int reads = 0;
    for (auto one = line_.log().rbegin(); one != line_.log().rend() && !(one->asked_by_head() && one->sound);
         ++one)
        reads += one->asked_by_head() ? 1 : 0;
    return reads;
}

void TimelyWatch::look_at_values() {
    const Panel& panel = head_.panel();
    const bool free = !is_dark(head_) && !shows_shutdown(panel);
    for (int row = 1; row <= 4; ++row) {
        const std::string_view source = free ? source_of_row(head_, row) : std::string_view();
        std::string text = panel.line(row);
        const bool no_readout = text.starts_with("ATTN") && text.find("    dB") != std::string::npos;
        if (no_readout)
            text = padded("", Panel::k_columns);
        look_at(rows_[static_cast<std::size_t>(row - 1)], "row " + std::to_string(row), text,
                source.empty() ? Claims() : claims_of_row(head_, row, text), source, free_since_);
    }
    if (!error_since_)
        for (int lamp = 5; lamp <= 8; ++lamp) {
            const Claims claims = claims_of_lamp(lamp, panel.lamp(lamp));
            look_at(lamps_[static_cast<std::size_t>(lamp - 1)], "lamp " + std::to_string(lamp),
                    panel.lamp(lamp) == LampColour::dark ? "dark" : "lit", claims, claims.front().command,
                    lit_since_);
        }
    if (free)
        look_at(gauge_, "gauge", panel.gauge() ? std::to_string(*panel.gauge()) : padded("", 20),
                panel.gauge() ? claims_of_gauge(*panel.gauge()) : Claims(), k_analog_request, free_since_);
    const bool lit = panel.lamp(5) != LampColour::dark || panel.lamp(6) != LampColour::dark ||
                     panel.lamp(7) != LampColour::dark || panel.lamp(8) != LampColour::dark;
    if (error_since_ && (lit || panel.gauge())) {
        ++counts_.early_errors;
        findings_.tell("error screen", own(), "lamps and gauge dark", "something lit");
    }
}

// The oldest sound reply that the spot should have followed and has not.
void TimelyWatch::look_at(Spot& spot, const std::string& what, const std::string& text, const Claims& claims,
                          std::string_view source, Instant from) {
    const Instant now = clock_.now();
    if (spot.text != text)
        spot = {text, now};
    if (source.empty())
        return;
    const bool blank = text == padded("", Panel::k_columns);
    if (blank && spot.since == now)
        look_at_blank(what);
    if (claims.empty() && !blank)
        return;
    from = std::max(std::max(from, known_since_), blank ? std::max(spot.since, screen_since_) : Instant{});
    const Said* unseen = nullptr;
    const std::deque<Said>& said = line_.said(own());
    for (auto one = said.rbegin(); one != said.rend(); ++one) {
        if (one->command != source || !one->accepted)
            continue;
        if (!blank && std::any_of(claims.begin(), claims.end(), [&](const Claim& claim) {
                return claim.command == source && claim.holds(one->payload);
            }))
            break;
        if (one->sound && one->speaker == Speaker::head && one->arrived <= now && one->arrived > from)
            unseen = &*one;
    }
    if (unseen != nullptr)
        findings_.judge("stale display", own(), now - unseen->arrived, limit::k_behind, counts_.behind,
                        what + " to follow exchange " + std::to_string(unseen->number), "\"" + text + "\"");
}

// A value that has gone while nothing covered it, nobody touched the panel and no setting redrew it.
void TimelyWatch::look_at_blank(const std::string& what) {
    constexpr std::chrono::seconds k_long_ago{3};
    const Instant long_ago = clock_.now() - k_long_ago;
    if (std::max({touched_, set_, screen_since_, free_since_, known_since_}) >= long_ago)
        return;
    ++counts_.blanked;
    findings_.tell("stale display", own(), what + " to keep its value", "it blank");
}

// An acknowledgement that was taken, or a status without it, may have come in late.
bool TimelyWatch::heard_of_its_end() {
    constexpr std::chrono::seconds k_late{5};
    const std::deque<Said>& said = line_.said(own());
    return std::any_of(said.rbegin(), said.rend(), [&](const Said& one) {
        const bool end = one.command == k_acknowledge_shutdown ||
                         (one.command == k_status_request && !tells_of_shutdown(one));
        return end && one.accepted && one.heard && one.at >= clock_.now() - k_late;
    });
}

// Just after it has come; the reply is forgotten later.
void TimelyWatch::look_at_reason() {
    constexpr std::chrono::seconds k_just{10};
    if (!shutdown_since_ || clock_.now() - *shutdown_since_ > k_just)
        return;
    const Claims claims = claims_of_shutdown(head_.panel());
    const std::deque<Said>& said = line_.said(own());
    if (std::any_of(said.begin(), said.end(), [&](const Said& one) {
            return one.accepted && one.command == k_shutdown_request && claims.front().holds(one.payload);
        }))
        return;
    ++counts_.unfounded;
    findings_.tell("shutdown display", own(), "the reason that the amplifier gave",
                   "\"" + head_.panel().line(1) + "\", \"" + head_.panel().line(3) + "\"");
}

void TimelyWatch::look_at_shutdown() {
    if (line_.is_known(own()))
        look_at_reason();
    const Said* alarm = newest_sound(k_alarm_request);
    const bool audible =
        !error_since_ && !shutdown_since_ && alarm != nullptr && alarm->payload.starts_with('1');
    if (!audible)
        alarm_told_.reset();
    else if (!alarm_told_)
        alarm_told_ = clock_.now();
    const Instant now = clock_.now();
    const Said* status = newest_sound(k_status_request);
    const Said* acknowledged = newest_sound(k_acknowledge_shutdown);
    if (status == nullptr || (acknowledged != nullptr && acknowledged->at > status->at)) {
        shutdown_told_.reset();
        return;
    }
    const bool told = tells_of_shutdown(*status);
    if (!told || error_since_ || shutdown_since_)
        shutdown_told_.reset();
    else if (!shutdown_told_)
        shutdown_told_ = now;
    if (shutdown_told_)
        findings_.judge("shutdown", own(), now - *shutdown_told_ - line_.lost(*shutdown_told_),
                        limit::k_shutdown_due, counts_.shutdown_due, "its display",
                        "\"" + head_.panel().line(1) + "\"");
    if (!told && shutdown_since_ && status->arrived > *shutdown_since_)
        findings_.judge("shutdown display", own(), now - status->arrived, limit::k_behind,
                        counts_.shutdown_stays, "to go when it is over", "\"" + head_.panel().line(1) + "\"");
}

void TimelyWatch::look_for_silence() {
    const Instant now = clock_.now();
    if (error_since_) {
        const auto& said = line_.said(own());
        const auto answer = std::find_if(said.begin(), said.end(), [&](const Said& one) {
            return one.sound && one.accepted && one.speaker == Speaker::head && one.arrived <= now &&
                   one.arrived > *error_since_ && !LineRequest{{.command = one.command}}.setting();
        });
        if (answer != said.end())
            findings_.judge("error screen", own(), now - answer->arrived, limit::k_behind,
                            counts_.error_stays, "to go when the amplifier answers", "it still");
        return;
    }
    constexpr int k_replaced = 5;  // replies without its address, in a row
    if (learns_ && line_.passed_over(own()) > k_replaced + 1) {
        ++counts_.passed_over;
        findings_.tell("amplifier in another's place", own(), "to be heard after five replies",
                       std::to_string(line_.passed_over(own())) + " passed over");
    }
    std::optional<Instant> silent_since;
    long reads = 0;
    bool cut = false;  // perhaps, for the setting behind it
    for (auto one = line_.log().rbegin(); one != line_.log().rend(); ++one) {
        if (one->order.address == own() && one->order.read()) {
            if (one->answered || one->at < heard_since_)
                break;
            silent_since = one->at;
            reads += cut ? 0 : 1;
        }
        cut = one->order.setting();
    }
    if (!silent_since)
        return;
    const std::string seen = "\"" + head_.panel().line(1) + "\"";
    findings_.judge("error screen", own(), now - *silent_since - line_.lost(*silent_since),
                    limit::k_error_due, counts_.error_due, "to be up", seen);
    counts_.unanswered = std::max(counts_.unanswered, reads);
    if (reads > limit::k_unanswered)
        findings_.tell("error screen", own(), "after 16 reads without an answer at most",
                       seen + " after " + std::to_string(reads));
}

// Six reads of two amplifiers at least, in a row; one more may be under way, and some have been cut.
void TimelyWatch::look_for_dead_line() {
    constexpr int k_dead_line = 9;
    int reads = 0;
    bool own_read = false;
    bool others_read = false;
    bool cut = false;
    for (auto one = line_.log().rbegin(); one != line_.log().rend(); ++one) {
        if (one->asked_by_head() && !one->silence)
            break;
        if (one->asked_by_head() && !cut) {
            ++reads;
            (one->order.address == own() ? own_read : others_read) = true;
        }
        cut = one->order.setting();
    }
    if (error_since_ || reads <= k_dead_line || !own_read || !others_read)
        return;
    ++counts_.dead_lines;
    findings_.tell("dead line", own(), "the error screen after six reads that nobody answers",
                   "\"" + head_.panel().line(1) + "\" after " + std::to_string(reads));
}

void TimelyWatch::watch(const LineRequest& order) {
    if (order.setting())
        set_ = clock_.now();
}

}  // namespace ampdesk::bench
