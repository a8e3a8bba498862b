// The event list: four entries of the amplifier's own log, moved through by soft keys and scroll
// bar. How long the log is shows only when an entry is missing or blank.
#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "amplifier/commands.h"
#include "controlhead/comm_faults.h"
#include "controlhead/head.h"
#include "controlhead/menu_engine.h"
#include "controlhead/screens.h"
#include "platform/numbers.h"
#include "platform/run_time_error.h"

namespace ampdesk {

namespace {

constexpr int k_lines = 4;
constexpr int k_text_width = 16;

// Where the scroll bar ends until the log is known to be shorter, or longer.
constexpr int k_usual_last = 99;

// The entry number is one byte and the fourth line has one too.
constexpr int k_utmost_first = 255 - (k_lines - 1);

// Nothing when the amplifier has no such entry. Throws error 100 when it does not answer at all,
// which looks the same until it is asked for something that it always has.
std::optional<std::string> read_entry(Head& head, int number) {
    try {
        // A late reply to the request for another entry differs in the third byte only.
        return head.amplifier.read_itemAll(event_request(number), true);
    } catch (const RunTimeError& error) {
        if (error.number() != RunTimeError::k_no_answer)
            throw;
    }
    head.amplifier.look_for_only(true);
    const bool answers = attempted([&] { head.amplifier.read_status(); });
    head.amplifier.look_for_only(false);
    if (!answers)
        throw RunTimeError::no_answer();
    return std::nullopt;
}

bool is_blank(const std::string& text) {
    return trimmed(text).empty();
}

// Up to four entries; fewer at the end of the log, behind which an amplifier may answer with blanks.
// What is known to be missing is not asked for.
std::vector<std::string> read_page(Head& head, int first, int missing = 256) {
    std::vector<std::string> page;
    for (int n = first; n < std::min(first + k_lines, missing); ++n) {
        std::optional<std::string> text = read_entry(head, n);
        if (!text)
            break;
        page.push_back(std::move(*text));
    }
    while (!page.empty() && is_blank(page.back())) page.pop_back();
    return page;
}

// A look is enough for a guess: an amplifier that says nothing past its end would hold up the others
// for two seconds a guess.
bool seems_to_have(Head& head, int number) {
    bool there = false;
    head.amplifier.look_for_only(true);
    attempted([&] { there = !is_blank(head.amplifier.read_itemAll(event_request(number), true)); });
    head.amplifier.look_for_only(false);
    return there;
}

// How many entries there are before one that is missing.
int count_before(Head& head, int missing) {
    int there = -1;
    int end = missing;
    while (end - there > 1) {
        const int middle = (there + end) / 2;
        (seems_to_have(head, middle) ? there : end) = middle;
        if (end - there > 1 || end == missing)
            continue;
        // Where the guesses end a lost reply may have been taken for the end.
        const std::optional<std::string> text = read_entry(head, end);
        if (text && !is_blank(*text))
            there = std::exchange(end, missing);
    }
    return end;
}

void show_scroll_bar(Head& head, int maximum) {
    head.panel.set_scroll({.visible = true, .minimum = 0, .maximum = maximum, .value = head.events.position});
}

void draw(Head& head, int first) {
    first = std::clamp(first, 0, k_utmost_first);
    std::vector<std::string> page = read_page(head, first);
    if (page.empty() && first > 0) {
        const int there = count_before(head, first);
        first = std::max(there - 1, 0);
        page = read_page(head, first, there);
    }
    const int count = static_cast<int>(page.size());
    for (int i = 0; i < k_lines; ++i) {
        std::string line;
        if (i < count)
            line = right_aligned(std::to_string(first + i), 3) + ' ' +
                   page[static_cast<std::size_t>(i)].substr(0, k_text_width);
        head.panel.set_line(i + 1, line);
    }

    int maximum = head.panel.scroll().maximum;
    if (count < k_lines)
        maximum = first + std::max(count, 1) - 1;
    else if (first + k_lines - 1 > maximum)
        maximum = first + k_lines - 1 < k_usual_last ? k_usual_last : k_utmost_first;
    head.events.position = static_cast<std::int16_t>(first);
    show_scroll_bar(head, maximum);
}

// A page that could not be read is tried again by the next display tick.
void draw_or_ask_again(Head& head, int first) {
    try {
        draw(head, first);
    } catch (const RunTimeError&) {
        head.events.event_refresh = true;
        throw;
    }
}

void enter(Head& head) {
    for (int line = 1; line <= k_lines; ++line) head.panel.set_line(line, "");
    head.events.position = 0;
    show_scroll_bar(head, k_usual_last);
    draw_or_ask_again(head, 0);
}

}  // namespace

void attach_event(Head& head, std::int16_t key) {
    static constexpr int k_steps[] = {0, -1, 1, -k_lines, k_lines};
    if (key == k_key_enter)
        return enter(head);
    if (key < k_key_refresh || key >= k_key_exit)
        return leave_sub_menu(head);
    const int last = std::max<int>(head.panel.scroll().maximum, head.events.position);
    draw_or_ask_again(head, std::clamp(head.events.position + k_steps[key], 0, last));
}

void scroll_events(Head& head, int value) {
    head.events.event_refresh = true;
    draw_or_ask_again(head, value);
}

void tick_events(Head& head) {
    if (std::exchange(head.events.event_refresh, false))
        draw_or_ask_again(head, head.panel.scroll().value);
}

}  // namespace ampdesk
