#include "bench/soak_claims.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <utility>

#include "amplifier/commands.h"

namespace ampdesk::bench {

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

namespace {

constexpr int k_hv_on = 4;  // bits of a status reply
constexpr int k_rf_on = 8;

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

// As a panel shows it: what does not print is a blank.
std::string printed(std::string text, std::size_t width) {
    for (char& c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (code < 0x20 || (code >= 0x7F && code < 0xA0))
            c = ' ';
    }
    return padded(std::move(text), width);
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

Claims claims_of_alarm_row(const std::string& text) {
    if (text.starts_with("Helix Current"))
        return {{std::string(k_analog_request), Words{{{4, number_at(text, 13, 5, 100)}}}}};
    return {{std::string(k_alarm_request), [text](const std::string& payload) {
                 const std::string state = behind_comma(payload);
                 const std::string short_state = printed(state, 16).substr(0, 16);
                 return text == printed(state, 20) || text == short_state + " ANT" ||
                        text == short_state + "LOAD";
             }}};
}

// The third row may still, or again, be that of the first status screen.
Claims claims_of_shutdown_row(int row, const std::string& text) {
    Claims claims;
    if (row == 3)
        claims = claims_of_alarm_row(text);
    claims.push_back({std::string(k_shutdown_request), [row, text](const std::string& payload) {
                          const std::string number =
                              "System Shutdown, #" + payload.substr(0, payload.find(','));
                          return text == printed(row == 1 ? number : reason_of(payload), 20);
                      }});
    return claims;
}

// "  3 12:01 RF on": entry 3.
Claims claims_of_event_row(const std::string& text) {
    return {{event_request(number_at(text, 0, 3, 1)), [text](const std::string& entry) {
                 return text.substr(4) == printed(entry, 16).substr(0, 16);
             }}};
}

// "    [ 58.0 dBm]"; the title stands in the row above.
Claims claims_of_level(const std::string& title, const std::string& text) {
    struct Level {
        const char* title;
        std::size_t word;
        double scale;
    };
    static constexpr Level k_levels[] = {{"over f", 4, 10}, {"under f", 5, 10}, {"over rev", 6, 10},
                                         {"Cabinet", 1, 1}, {"TWT", 2, 1},      {"Helix", 3, 100}};
    for (const Level& level : k_levels)
        if (contains(title, level.title))
            return {
                {std::string(k_limits_request), Words{{{level.word, number_at(text, 5, 5, level.scale)}}}}};
    return {{"", [](const std::string&) { return false; }}};
}

// A bit of the second status character; the page's title, or its beginning, says which.
Claims claims_of_setup_row(const std::string& title, const std::string& text) {
    struct Page {
        const char* title;
        const char* row;
        int bit;
        const char* set;
    };
    static constexpr Page k_pages[] = {{"", "  Remote ", 1, " ON"},
                                       {"Temperature reads", "in:", 2,
                                        "\xB0"
                                        "F"},
                                       {"Forward Power reads", "in:", 4, "Watts"},
                                       {"Reverse Power reads", "in:", 8, "Watts"}};
    for (const Page& page : k_pages)
        if (title == padded(page.title, 20) && text.starts_with(page.row)) {
            const bool set = contains(text, page.set);
            return {{std::string(k_status_request), [set, bit = page.bit](const std::string& payload) {
                         return payload.size() > 1 &&
                                set == ((static_cast<unsigned char>(payload[1]) & bit) != 0);
                     }}};
        }
    return {};
}

}  // namespace

Claims claims_of_row(const ControlHead& control, int row, const std::string& text) {
    if (std::any_of(std::begin(k_fixed_rows), std::end(k_fixed_rows), [&](std::string_view fixed) {
            return text.starts_with(fixed) && text.find_first_not_of(' ', fixed.size()) == std::string::npos;
        }))
        return {};
    const Head& head = control.state();
    const auto words = [](std::vector<std::pair<std::size_t, int>> expected) {
        return Claims{{std::string(k_analog_request), Words{std::move(expected)}}};
    };
    // Drawn over whatever was shown; its first row comes first.
    if (in_shutdown(head) && shows_shutdown(control.panel()) && (row == 1 || row == 3))
        return claims_of_shutdown_row(row, text);
    if (head.sub_menu == k_event_list)
        return claims_of_event_row(text);
    if (row == 4 && head.gain_mode && text.starts_with("ATTN") && contains(text, "dB"))
        return words({{12, number_at(text, 5, 4, 10)}});
    if (head.sub_menu == k_warning_levels && row == 3)
        return claims_of_level(control.panel().line(2), text);
    if (head.sub_menu == k_setup_menus && row == 2)
        return claims_of_setup_row(control.panel().line(1), text);
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

Claims claims_of_shutdown(const Panel& panel) {
    return {{std::string(k_shutdown_request),
             [one = panel.line(1), three = panel.line(3)](const std::string& payload) {
                 const std::string number = "System Shutdown, #" + payload.substr(0, payload.find(','));
                 return one == printed(number, 20) && three == printed(reason_of(payload), 20);
             }}};
}

Claims claims_of_gauge(double dbm) {
    return {{std::string(k_analog_request), Words{{{1, static_cast<int>(std::lround(dbm * 10))}}}}};
}

Claims claims_of_lamp(int lamp, LampColour colour) {
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

std::string_view source_of_row(const ControlHead& control, int row) {
    const Head& head = control.state();
    if (head.sub_menu == k_warning_levels)
        return row == 3 ? k_limits_request : std::string_view();
    if (head.menu_ptr < 1 || head.menu_ptr > 4)
        return {};
    if (row == 4)
        return head.gain_mode ? k_analog_request : std::string_view();
    if (head.menu_ptr == 1 && row == 3)  // an alarm blinks beside the attenuation
        return head.gain_mode ? std::string_view() : k_alarm_request;
    return row == 1 && (head.menu_ptr == 2 || head.menu_ptr == 3) ? std::string_view() : k_analog_request;
}

bool shows_error(const Panel& panel) {
    return panel.line(1).starts_with("RS485 Communication");
}

bool shows_shutdown(const Panel& panel) {
    return panel.line(1).starts_with("System Shutdown");
}

bool is_dark(const ControlHead& head) {
    return shows_error(head.panel()) || in_shutdown(head.state());
}

bool shows_status_screen(const ControlHead& head) {
    return head.state().menu_ptr != 0 && !is_dark(head) && !shows_shutdown(head.panel());
}

}  // namespace ampdesk::bench
