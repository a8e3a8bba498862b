#include "bench/soak_display.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "amplifier/commands.h"
#include "controlhead/band.h"

namespace ampdesk::bench {

namespace {

// A row is drawn right after its read. The answer to the first try of a read may be accepted by the
// second; then the band may be asked for, twice, before the row is drawn.
constexpr std::chrono::seconds k_drawn_within{4};
constexpr std::string_view k_event_request = "\xA0\x1A";
constexpr int k_hv_on = 4;  // bits of a status reply
constexpr int k_rf_on = 8;
constexpr std::chrono::seconds k_list_drawn_within{10};  // four entries are read before the first is drawn
// A lamp follows the status, then the alarm state, each asked for twice of an amplifier that falls silent.
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
    return head_.panel().line(1).starts_with("RS485 Communication") || in_shutdown(head_.state());
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

// The label names the band that the amplifier said last.
void DisplayWatch::judge_label(const std::string& label) {
    if (label == label_ || label == "Fwd Power  ")
        return;
    label_ = label;
    ++counts_.labels;
    const char number = label.starts_with("Ku") ? '0' : label.starts_with("X ") ? '1' : '2';
    const Claim claim{"RDBAND",
                      [number](const std::string& text) { return text == std::string("RDBAND=") + number; }};
    if (found(head_.identity().unit_address, {claim}, k_drawn_within) == nullptr)
        ++counts_.wrong_labels;
}

void DisplayWatch::changed() {
    Panel& panel = head_.panel();
    for (int row = 1; row <= 4; ++row) {
        std::string& seen = rows_[static_cast<std::size_t>(row - 1)];
        if (seen == panel.line(row))
            continue;
        seen = panel.line(row);
        drawn_[static_cast<std::size_t>(row - 1)] = clock_.now();
        const Claims claims = claims_of_row(row, seen);
        if (claims.empty())
            continue;
        if (claims.front().command.starts_with(k_event_request))
            judge_event(claims);
        else
            judge(claims, "row " + std::to_string(row) + " \"" + seen + "\"", k_drawn_within);
        if (row == 1 && head_.state().menu_ptr == 1 && seen.ends_with(" dBm"))
            judge_label(seen.substr(0, 11));
    }
    for (int lamp = 5; lamp <= 8; ++lamp) {
        LampColour& seen = lamps_[static_cast<std::size_t>(lamp - 1)];
        if (seen == panel.lamp(lamp))
            continue;
        seen = panel.lamp(lamp);
        if (seen == LampColour::dark && dark_screen())
            continue;
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
    if (head.menu_ptr == 0 || dark_screen() || head_.panel().line(1).starts_with("System Shutdown")) {
        wrong_band_since_.reset();
        return;
    }
    for (int row = 1; row <= 3; ++row) {
        const Claims claims = claims_of_row(row, head_.panel().line(row));
        if (claims.empty())
            continue;
        const Said* said = found(head.identity.unit_address, claims, k_shown_within);
        const Instant from = said != nullptr ? said->at : drawn_[static_cast<std::size_t>(row - 1)];
        counts_.oldest_shown = std::max(counts_.oldest_shown, clock_.now() - from);
    }
    if (head.menu_ptr != 1 || head.band.band_count == 0 || !head_.panel().line(1).ends_with(" dBm"))
        return;
    const int band = line_.bus().find(head.identity.unit_address)->band();
    const std::string& row = head_.panel().line(1);
    const int shown = row.starts_with("Ku") ? 0 : row.starts_with("X ") ? 1 : 2;
    if (shown == band)
        wrong_band_since_.reset();
    else if (!wrong_band_since_)
        wrong_band_since_ = clock_.now();
    else
        counts_.wrong_band = std::max(counts_.wrong_band, clock_.now() - *wrong_band_since_);
}

}  // namespace ampdesk::bench
