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
constexpr std::string_view k_event_request = "\xA0\x1A";
constexpr int k_hv_on = 4;  // bits of a status reply
constexpr int k_rf_on = 8;
constexpr std::chrono::seconds k_list_drawn_within{30};  // four entries are read before the first is drawn
// Status and alarm state set the lamps when either has come.
constexpr std::chrono::seconds k_lamp_drawn_within{6};
constexpr std::chrono::seconds k_shown_within{30};

// Word i, from 1, of an analog block.
int word(const std::string& block, std::size_t i) {
    if (block.size() < 2 * i)
        return -32768;
    const auto low = static_cast<unsigned char>(block[2 * i - 2]);
    const auto high = static_cast<unsigned char>(block[2 * i - 1]);
    return static_cast<std::int16_t>(high << 8U | low);
}

// The number in the columns from `at` on, times that scale.
int number_at(const std::string& row, std::size_t at, std::size_t width, double scale) {
    const std::string field = at < row.size() ? row.substr(at, width) : "";
    return static_cast<int>(std::lround(std::strtod(field.c_str(), nullptr) * scale));
}

// Words of the analog block and the values they must have.
struct Words {
    std::vector<std::pair<std::size_t, int>> expected;
    bool operator()(const std::string& block) const {
        return std::all_of(expected.begin(), expected.end(),
                           [&](const auto& e) { return word(block, e.first) == e.second; });
    }
};

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

std::string behind_comma(const std::string& payload) {
    return payload.substr(payload.find(',') + 1);
}

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

// The text of the shutdown display from what follows the number.
std::string reason_of(const std::string& payload) {
    const std::string text = behind_comma(payload);
    const std::size_t start = std::min(text.find_first_not_of(' '), text.size());
    return text.substr(start, text.find_last_not_of(' ') + 1 - start);
}

constexpr std::string_view k_fixed_rows[] = {"",
                                             "--------------------",
                                             " --System Hours--",
                                             " --System Temps--",
                                             "RS485 Communication ",
                                             "Error,     ",
                                             "Check Connection",
                                             "                 OK",
                                             "SETUP INFO HELP MORE",
                                             "WARNINGS   HELP MORE",
                                             "ATTN EVENT HELP MORE"};

}  // namespace

bool DisplayWatch::dark_screen() const {
    return shows_error() || in_shutdown(head_.state());
}

bool DisplayWatch::shows_error() const {
    return head_.panel().line(1).starts_with("RS485 Communication");
}

bool DisplayWatch::shows_status_screen() const {
    return head_.state().menu_ptr != 0 && !dark_screen() &&
           !head_.panel().line(1).starts_with("System Shutdown");
}

bool DisplayWatch::shows_values() const {
    bool values = false;
    for (int row = 1; row <= 3; ++row)
        values = values || !claims_of_row(row, head_.panel().line(row)).empty();
    return values && shows_status_screen();
}

DisplayWatch::Claims DisplayWatch::claims_of_alarm_row(const std::string& text) {
    if (text.starts_with("Helix Current"))
        return {{std::string(k_analog_request), Words{{{4, number_at(text, 13, 5, 100)}}}}};
    return {{std::string(k_alarm_request), [text](const std::string& payload) {
                 const std::string state = behind_comma(payload);
                 const std::string short_state = padded(state, 16).substr(0, 16);
                 return text == padded(state, 20) || text == short_state + " ANT" ||
                        text == short_state + "LOAD";
             }}};
}

// The third row may still, or again, be that of the first status screen.
DisplayWatch::Claims DisplayWatch::claims_of_shutdown_row(int row, const std::string& text) {
    Claims claims;
    if (row == 3)
        claims = claims_of_alarm_row(text);
    claims.push_back({std::string(k_shutdown_request), [row, text](const std::string& payload) {
                          const std::string number =
                              "System Shutdown, #" + payload.substr(0, payload.find(','));
                          return text == padded(row == 1 ? number : reason_of(payload), 20);
                      }});
    return claims;
}

// "  3 12:01 RF on": entry 3.
DisplayWatch::Claims DisplayWatch::claims_of_event_row(const std::string& text) {
    const auto number = static_cast<char>(number_at(text, 0, 3, 1));
    return {{std::string(k_event_request) + number,
             [text](const std::string& entry) { return text.substr(4) == padded(entry, 16).substr(0, 16); }}};
}

DisplayWatch::Claims DisplayWatch::claims_of_row(int row, const std::string& text) const {
    for (const std::string_view fixed : k_fixed_rows)
        if (text == padded(std::string(fixed), 20))
            return {};
    const Head& head = head_.state();
    const auto words = [](std::vector<std::pair<std::size_t, int>> expected) {
        return Claims{{std::string(k_analog_request), Words{std::move(expected)}}};
    };
    // Drawn over whatever was shown; its first row comes first.
    const bool shutdown_shown = head_.panel().line(1).starts_with("System Shutdown");
    if (in_shutdown(head) && shutdown_shown && (row == 1 || row == 3))
        return claims_of_shutdown_row(row, text);
    if (head.sub_menu == k_event_list)
        return claims_of_event_row(text);
    if (row == 4 && head.gain_mode && text.starts_with("ATTN") && contains(text, "dB"))
        return words({{12, number_at(text, 5, 4, 10)}});
    if (row == 4 || head.menu_ptr == 0)
        return {};
    switch (10 * head.menu_ptr + row) {
        case 11:
            return words({{1, number_at(text, 11, 5, 10)}});
        case 12:
            return words({{2, number_at(text, 11, 5, 10)}});
        case 13:
            return claims_of_alarm_row(text);
        case 22:
            return words({{10, number_at(text, 0, 5, 1)}, {13, number_at(text, 6, 2, 1)}});
        case 23:
            return words({{11, number_at(text, 0, 5, 1)}, {14, number_at(text, 6, 2, 1)}});
        case 32:
            return words({{9, number_at(text, 0, 3, 1)}});
        case 33:
            return words({{8, number_at(text, 0, 3, 1)}});
        case 41:
            return words({{5, number_at(text, 2, 6, 1000)}, {6, number_at(text, 13, 5, -1000)}});
        case 42:
            return words({{15, number_at(text, 2, 6, -1000)}});
        case 43:
            return words({{3, number_at(text, 2, 6, -1000)}, {4, number_at(text, 13, 5, 100)}});
        default:
            return {{"", [](const std::string&) { return false; }}};  // a text that belongs nowhere
    }
}

DisplayWatch::Claims DisplayWatch::claims_of_lamp(int lamp, LampColour colour) {
    const bool lit = colour != LampColour::dark;
    const auto status = [lit](int bit) {
        return [lit, bit](const std::string& payload) {
            return !payload.empty() && lit == ((static_cast<unsigned char>(payload[0]) & bit) != 0);
        };
    };
    const auto state = [lit](const char* part) {
        return [lit, part](const std::string& payload) { return lit == contains(payload, part); };
    };
    switch (lamp) {
        case 5:
            return {{std::string(k_status_request), status(k_hv_on)}};
        case 6:
            return {{std::string(k_alarm_request), state("Standby")}};
        case 7:
            return {{std::string(k_status_request), status(k_rf_on)}};
        case 8:
            return {{std::string(k_alarm_request), state("RF off")}};
        default:
            return {};  // a key's own lamp
    }
}

// The newest reply of that amplifier that bears one of the claims out.
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
        if (found(amplifier->model().address, claims, k_shown_within) != nullptr)
            other = amplifier->model().address;
    if (other != 0 && other != own && !bus_.looks_at_reply_address(own))
        ++counts_.others_early;
    else
        ++(other != 0 ? counts_.others : counts_.nobodys);
    if (counts_.first_wrong.empty())
        counts_.first_wrong = "amplifier " + std::to_string(own) + ", screen " +
                              std::to_string(head_.state().menu_ptr) + ", exchange " +
                              std::to_string(line_.exchanges) + ": " + what +
                              (other == own ? ", long ago"
                               : other != 0 ? ", of amplifier " + std::to_string(other)
                                            : "");
}

void DisplayWatch::judge_event(const Claims& claims) {
    ++counts_.events;
    counts_.wrong_events +=
        found(head_.identity().unit_address, claims, k_list_drawn_within) == nullptr ? 1 : 0;
}

// The label names a band that the amplifier said; when it was read the display may have shown something else.
void DisplayWatch::judge_label(const std::string& label) {
    if (label == label_ || label == "Fwd Power  ")
        return;
    label_ = label;
    ++counts_.labels;
    const char number = label.starts_with("Ku") ? '0' : label.starts_with("X ") ? '1' : '2';
    counts_.wrong_labels += bands_said_.contains(number) ? 0 : 1;
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
    return value;
}

void DisplayWatch::look_at_row(int row) {
    const auto i = static_cast<std::size_t>(row - 1);
    const std::string& text = head_.panel().line(row);
    if (rows_[i] == text)
        return;
    rows_[i] = text;
    const bool alarm_blinks = row == 3 && head_.state().gain_mode && text == padded("", 20);
    const bool readout_begins = row == 4 && head_.state().gain_mode && contains(text, "    dB ");
    const std::string value = value_in_row(row, text);
    if (alarm_blinks || readout_begins || values_[i] == value)
        return;
    values_[i] = value;
    drawn_[i] = clock_.now();
    const Claims claims = claims_of_row(row, text);
    if (claims.empty())
        return;
    const bool comes_back = text.starts_with("Helix Current");  // in the place of an alarm
    if (claims.front().command.starts_with(k_event_request))
        judge_event(claims);
    else
        judge(claims, "row " + std::to_string(row) + " \"" + text + "\"",
              comes_back ? k_shown_within : k_drawn_within);
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
        if (seen == LampColour::dark && dark_screen()) {
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
            judge(
                {{std::string(k_analog_request), Words{{{1, static_cast<int>(std::lround(*gauge_ * 10))}}}}},
                "gauge", k_drawn_within);
    }
}

void DisplayWatch::look() {
    const Head& head = head_.state();
    look_for_answers();
    look_at_band();
    if (!shows_status_screen())
        return;
    for (int row = 1; row <= 3; ++row) {
        const Claims claims = claims_of_row(row, head_.panel().line(row));
        if (claims.empty())
            continue;
        const Said* said = found(head.identity.unit_address, claims, k_shown_within);
        const Instant from = said != nullptr ? said->at : drawn_[static_cast<std::size_t>(row - 1)];
        counts_.oldest_shown = std::max(counts_.oldest_shown, clock_.now() - from);
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
    if (!shows_status_screen() || head.menu_ptr != 1 || head.band.band_count == 0 || !row.ends_with(" dBm"))
        return wrong_band_since_.reset();
    const int band = line_.bus().find(head.identity.unit_address)->band();
    const int shown = row.starts_with("Ku") ? 0 : row.starts_with("X ") ? 1 : 2;
    if (shown == band)
        wrong_band_since_.reset();
    else if (!wrong_band_since_)
        wrong_band_since_ = clock_.now();
    else
        counts_.wrong_band = std::max(counts_.wrong_band, clock_.now() - *wrong_band_since_);
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
