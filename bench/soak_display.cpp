#include "bench/soak_display.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "amplifier/commands.h"
#include "controlhead/band.h"

namespace ampdesk::bench {

namespace {

// A row is drawn when its reading has come; the late answer to the first try of a read may be accepted by the
// second. A screen that is entered draws what came within the last second.
constexpr std::chrono::seconds k_drawn_within{4};
constexpr std::chrono::seconds k_list_drawn_within{30};  // four entries are read before the first is drawn
// Status and alarm state set the lamps when either has come.
constexpr std::chrono::seconds k_lamp_drawn_within{6};
constexpr std::chrono::seconds k_page_drawn_within{30};  // the setup pages, from the status of their key
constexpr std::chrono::seconds k_shown_within{60};

}  // namespace

bool DisplayWatch::shows_values() const {
    bool values = false;
    for (int row = 1; row <= 3; ++row)
        values = values || !claims_of_row(head_, row, head_.panel().line(row)).empty();
    return values && shows_status_screen(head_);
}

const Said* DisplayWatch::found(int address, const Claims& claims, Duration within) const {
    const std::deque<Said>& said = line_.said(address);
    const auto newest = std::find_if(said.rbegin(), said.rend(), [&](const Said& one) {
        return std::any_of(claims.begin(), claims.end(), [&](const Claim& claim) {
            return one.accepted && one.command == claim.command && claim.holds(one.payload);
        });
    });
    return newest != said.rend() && clock_.now() - newest->at <= within ? &*newest : nullptr;
}

void DisplayWatch::judge(const Claims& claims, const std::string& what, Duration within) {
    ++counts_.values;
    const int own = head_.identity().unit_address;
    if (const Said* said = found(own, claims, within)) {
        if (within <= k_drawn_within)
            counts_.oldest_drawn = std::max(counts_.oldest_drawn, clock_.now() - said->at);
        return;
    }
    int other = 0;
    for (const auto& amplifier : line_.bus().amplifiers())
        if ((other == 0 || other == own) &&
            found(amplifier->model().address, claims, k_shown_within) != nullptr)
            other = amplifier->model().address;
    if (other != 0 && other != own && !bus_.looks_at_reply_address(own))
        return void(++counts_.others_early);
    ++(other != 0 && other != own ? counts_.others : counts_.nobodys);
    findings_.tell("value", own, "what the amplifier said lately",
                   what + " on screen " + std::to_string(head_.state().menu_ptr) +
                       (other == own ? ", said long ago"
                        : other != 0 ? ", said by amplifier " + std::to_string(other)
                                     : ", said by nobody"));
}

void DisplayWatch::judge_event(const Claims& claims, const std::string& text) {
    ++counts_.events;
    const int own = head_.identity().unit_address;
    if (found(own, claims, k_list_drawn_within) != nullptr)
        return;
    if (!bus_.looks_at_reply_address(own))
        return void(++counts_.others_early);
    ++counts_.wrong_events;
    findings_.tell("event list", own, "the entry of that number", "\"" + text + "\"");
}

// The levels never change, and MORE shows the next one of those in hand, however old.
void DisplayWatch::judge_level(const Claims& claims, const std::string& text) {
    ++counts_.values;
    const int own = head_.identity().unit_address;
    if (claims.front().holds(line_.bus().find(own)->limits_block()) ||
        found(own, claims, k_shown_within) != nullptr)
        return;
    ++counts_.nobodys;
    findings_.tell("value", own, "the level of that name", "\"" + text + "\"");
}

// The label names a band that the amplifier said; when it was read the display may have shown something else.
void DisplayWatch::judge_label(const std::string& label) {
    if (label == label_ || label == "Fwd Power  ")
        return;
    label_ = label;
    ++counts_.labels;
    const char number = label.starts_with("Ku") ? '0' : label.starts_with("X ") ? '1' : '2';
    const int own = head_.identity().unit_address;
    const bool said_long_ago =
        found(own, {{"RDBAND", [&](const std::string& t) { return t.ends_with(number); }}}, k_shown_within) !=
        nullptr;
    if (bands_said_.contains(number) || said_long_ago || line_.may_mistake_band(own, number))
        return;
    ++counts_.wrong_labels;
    findings_.tell("band label", own, "a band that the amplifier said", "\"" + label + "\"");
}

// A band that has come is one of those that the amplifier said lately, whatever the station made of it.
void DisplayWatch::take(const Reading& reading) {
    const int own = head_.identity().unit_address;
    if (reading.unit_address != own)
        return;
    const bool event = reading.request.kind == Request::Kind::event;
    if (reading.good())
        failed_in_a_row_ = 0;
    else if (!reading.request.guess && !event)
        ++failed_in_a_row_;
    if (shows_values())
        counts_.failed_in_a_row = std::max(counts_.failed_in_a_row, failed_in_a_row_);
    if (reading.request.kind != Request::Kind::band || !reading.good())
        return;
    constexpr std::size_t k_reads = 4;  // of one check of the band
    for (const char number : {'0', '1', '2'})
        if (found(own,
                  {{"RDBAND", [&](const std::string& t) { return t == std::string("RDBAND=") + number; }}},
                  k_drawn_within) != nullptr)
            bands_.push_back(number);
    while (bands_.size() > 2 * k_reads) bands_.pop_front();
    bands_said_ = {bands_.begin(), bands_.end()};
}

// What of the row stands for a reading. Markers blink, and the output switch, the band's label and a blinking
// alarm come and go, while the value beside them stays as it was.
std::string DisplayWatch::value_in_row(int row, const std::string& text) const {
    std::string value = text;
    for (char& c : value)
        if (std::string_view("<>[]").find(c) != std::string_view::npos)
            c = ' ';
    if (head_.state().menu_ptr == 1 && row == 1)
        return padded(value, 20).substr(11);
    if (head_.state().menu_ptr == 1 && row == 3 && !value.starts_with("Helix Current"))
        return value.substr(0, 16);
    if (head_.state().menu_ptr == 4 && row == 1)
        return value.substr(0, 18);  // the unit comes with the status
    return value;
}

void DisplayWatch::look_at_row(int row) {
    const auto i = static_cast<std::size_t>(row - 1);
    const std::string& text = head_.panel().line(row);
    if (rows_[i] == text)
        return;
    rows_[i] = text;
    const bool alarm_blinks = row == 3 && head_.state().gain_mode && text == padded("", 20);
    const bool readout_begins =
        row == 4 && head_.state().gain_mode && text.find("    dB ") != std::string::npos;
    const std::string value = value_in_row(row, text);
    if (alarm_blinks || readout_begins || values_[i] == value)
        return;
    values_[i] = value;
    drawn_[i] = clock_.now();
    const Claims claims = claims_of_row(head_, row, text);
    if (claims.empty())
        return;
    const bool comes_back = text.starts_with("Helix Current");  // in the place of an alarm
    const bool is_page = claims.front().command == k_status_request;
    const bool is_level = claims.front().command == k_limits_request;
    if (claims.front().command.starts_with(k_event_request))
        judge_event(claims, text);
    else if (is_level)
        judge_level(claims, text);
    else
        judge(claims, "row " + std::to_string(row) + " \"" + text + "\"",
              comes_back ? k_shown_within
              : is_page  ? k_page_drawn_within
                         : k_drawn_within);
}

void DisplayWatch::changed() {
    const Panel& panel = head_.panel();
    for (int row = 1; row <= 4; ++row) look_at_row(row);
    if (head_.state().menu_ptr == 1 && panel.line(1).ends_with(" dBm"))
        judge_label(panel.line(1).substr(0, 11));
    for (int lamp = 5; lamp <= 8; ++lamp) {
        LampColour& seen = lamps_[static_cast<std::size_t>(lamp - 1)];
        if (seen == panel.lamp(lamp))
            continue;
        seen = panel.lamp(lamp);
        Instant& out = put_out_[static_cast<std::size_t>(lamp - 1)];
        if (seen == LampColour::dark && is_dark(head_)) {
            out = clock_.now();
            continue;
        }
        if (out == clock_.now())
            continue;  // a shutdown's display has put it out and lit it again
        if (const Claims claims = claims_of_lamp(lamp, seen); !claims.empty())
            judge(claims, "lamp " + std::to_string(lamp), k_lamp_drawn_within);
    }
    if (gauge_ != panel.gauge()) {
        gauge_ = panel.gauge();
        if (gauge_)
            judge(claims_of_gauge(*gauge_), "gauge", k_drawn_within);
    }
}

void DisplayWatch::look() {
    const Head& head = head_.state();
    look_for_answers();
    look_at_band();
    if (!shows_status_screen(head_))
        return;
    for (int row = 1; row <= 3; ++row) {
        const Claims claims = claims_of_row(head_, row, head_.panel().line(row));
        if (claims.empty())
            continue;
        const Said* said = found(head.identity.unit_address, claims, k_shown_within);
        const Instant from = said != nullptr ? said->at : drawn_[static_cast<std::size_t>(row - 1)];
        const Duration age = clock_.now() - from;
        counts_.oldest_shown = std::max(counts_.oldest_shown, age);
        if (age > k_stands_within)
            findings_.judge("stale value", head.identity.unit_address,
                            age - line_.lost_or_failing(from, head.identity.unit_address), k_stands_within,
                            counts_.oldest_unspoilt, "row " + std::to_string(row) + " to be newer",
                            "\"" + head_.panel().line(row) + "\"");
    }
}

// A status screen without an answer behind it is to become the communication error screen.
void DisplayWatch::look_for_answers() {
    const Instant now = clock_.now();
    if (!shows_values()) {
        values_since_ = now;
        return;
    }
    const Instant from = std::max(values_since_, line_.last_answer(head_.identity().unit_address));
    counts_.unanswered = std::max(counts_.unanswered, now - from);
}

void DisplayWatch::look_at_band() {
    const Head& head = head_.state();
    const std::string& row = head_.panel().line(1);
    if (!shows_status_screen(head_) || head.menu_ptr != 1 || head.band.band_count == 0 ||
        !row.ends_with(" dBm"))
        return wrong_band_since_.reset();
    const int band = line_.bus().find(head.identity.unit_address)->band();
    const int shown = row.starts_with("Ku") ? 0 : row.starts_with("X ") ? 1 : 2;
    if (shown == band)
        wrong_band_since_.reset();
    else if (!wrong_band_since_)
        wrong_band_since_ = clock_.now();
    if (!wrong_band_since_)
        return;
    counts_.wrong_band = std::max(counts_.wrong_band, clock_.now() - *wrong_band_since_);
    const std::deque<Said>& said = line_.said(head.identity.unit_address);
    const auto set = std::find_if(said.rbegin(), said.rend(), [](const Said& one) {
        return one.accepted && one.command.starts_with("SBAND");
    });
    if (set == said.rend() || set->speaker != Speaker::head)
        return;
    const Instant since = std::max(set->at, *wrong_band_since_);
    // A read that fails, or a foreign one with the former band, is the last until the screen is entered
    // again; after four in a row that nobody has answered there is none for some seconds.
    constexpr std::chrono::seconds k_left_alone{20};
    if (line_.spoilt_bands(head.identity.unit_address, since - k_left_alone) > 0)
        return;
    const Duration late = clock_.now() - since - line_.lost(since);
    findings_.judge("band label", head.identity.unit_address, late, k_own_band_limit, counts_.own_band,
                    "that of its BAND key", "\"" + row + "\"");
}

void DisplayWatch::watch(const LineRequest& request) {
    if (request.text || request.command != k_status_request)
        return;
    if (head_.silent()) {
        status_asked_.reset();
        return;
    }
    if (status_asked_) {
        ++counts_.status_intervals;
        counts_.status_time += clock_.now() - *status_asked_;
    }
    status_asked_ = clock_.now();
}

}  // namespace ampdesk::bench
