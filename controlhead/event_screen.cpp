// The event list: four entries of the amplifier's own log, moved through by soft keys and scroll
// bar. How long the log is shows only when an entry is missing or blank.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "controlhead/head.h"
#include "controlhead/menu_engine.h"
#include "controlhead/screens.h"
#include "platform/numbers.h"

namespace ampdesk {

namespace {

constexpr int k_lines = 4;
constexpr int k_text_width = 16;

// Where the scroll bar ends until the log is known to be shorter, or longer.
constexpr int k_usual_last = 99;

// The entry number is one byte and the fourth line has one too.
constexpr int k_utmost_first = 255 - (k_lines - 1);
constexpr int k_entries = 256;

Request entry_request(int number, bool guess = false) {
    return {.kind = Request::Kind::event, .entry = number, .guess = guess};
}

bool is_blank(const std::string& text) {
    return trimmed(text).empty();
}

bool is_reading(const Head& head) {
    return std::any_of(head.requests.begin(), head.requests.end(),
                       [](const Request& r) { return r.kind == Request::Kind::event; });
}

// What was being read for another page is not read any more. What is known to be missing is not asked for.
void read_page(Head& head, int first, int missing = k_entries) {
    EventState& events = head.events;
    std::erase_if(head.requests, [](const Request& r) { return r.kind == Request::Kind::event; });
    events.target = std::clamp(first, 0, k_utmost_first);
    events.missing = missing;
    events.searched_from = 0;
    events.page.clear();
    events.event_refresh = false;
    if (events.target < missing)
        head.want(entry_request(events.target));
}

void show_scroll_bar(Head& head, int maximum) {
    head.panel.set_scroll({.visible = true, .minimum = 0, .maximum = maximum, .value = head.events.position});
}

void show_page(Head& head) {
    EventState& events = head.events;
    const int first = events.target;
    const int count = static_cast<int>(events.page.size());
    for (int i = 0; i < k_lines; ++i) {
        std::string line;
        if (i < count)
            line = right_aligned(std::to_string(first + i), 3) + ' ' +
                   events.page[static_cast<std::size_t>(i)].substr(0, k_text_width);
        head.panel.set_line(i + 1, line);
    }
    int maximum = head.panel.scroll().maximum;
    if (count < k_lines)
        maximum = first + std::max(count, 1) - 1;
    else if (first + k_lines - 1 > maximum)
        maximum = first + k_lines - 1 < k_usual_last ? k_usual_last : k_utmost_first;
    events.position = static_cast<std::int16_t>(first);
    show_scroll_bar(head, maximum);
}

// A guess is not worth the wait of a read: an amplifier that says nothing past its end would hold up the
// others for two seconds a guess.
void guess(Head& head) {
    head.want(entry_request((head.events.there + head.events.missing) / 2, true));
}

// Behind the last entry an amplifier may answer with blanks.
void end_page(Head& head) {
    EventState& events = head.events;
    while (!events.page.empty() && is_blank(events.page.back())) events.page.pop_back();
    if (!events.page.empty() || events.target == 0)
        return show_page(head);
    events.searched_from = events.missing = events.target;
    events.there = -1;
    guess(head);
}

// How many entries there are before one that is missing. Where the guesses end a lost reply may have been
// taken for the end, so that entry is read once more.
void take_guess(Head& head, int number, bool there) {
    EventState& events = head.events;
    const bool last_word = number == events.missing;  // the entry where the log seemed to end
    if (last_word && there)
        events.missing = events.searched_from;
    if (there)
        events.there = number;
    else
        events.missing = number;
    if (events.missing - events.there > 1)
        return guess(head);
    if (!last_word && events.missing != events.searched_from)
        return head.want(entry_request(events.missing));
    read_page(head, std::max(events.missing - 1, 0), events.missing);
    if (events.missing == 0)
        end_page(head);
}

void enter(Head& head) {
    for (int line = 1; line <= k_lines; ++line) head.panel.set_line(line, "");
    head.events.position = 0;
    show_scroll_bar(head, k_usual_last);
    read_page(head, 0);
}

void take_event(Head& head, const Reading& reading) {
    EventState& events = head.events;
    const int number = reading.request.entry;
    if (reading.request.kind != Request::Kind::event)
        return;
    const std::string* text = reading.get<std::string>();
    if (events.searched_from > 0)
        return take_guess(head, number, text != nullptr && !is_blank(*text));
    if (number != events.target + static_cast<int>(events.page.size()))
        return;
    // Silence is the end of the log only for an amplifier that answers something else.
    const bool answers = reading.outcome == Reading::Outcome::unusable || head.status_at > reading.asked_at;
    if (text == nullptr && !answers) {
        events.event_refresh = true;
        return;
    }
    if (text != nullptr)
        events.page.push_back(*text);
    const int next = number + 1;
    if (text == nullptr || static_cast<int>(events.page.size()) == k_lines || next >= events.missing) {
        if (text == nullptr)
            events.missing = number;
        return end_page(head);
    }
    head.want(entry_request(next));
}

void attach_event(Head& head, std::int16_t key) {
    static constexpr int k_steps[] = {0, -1, 1, -k_lines, k_lines};
    if (key == k_key_enter)
        return enter(head);
    if (key < k_key_refresh || key >= k_key_exit)
        return leave_sub_menu(head);
    if (key == k_key_refresh)  // after the communication error screen
        for (int line = 1; line <= k_lines; ++line) head.panel.set_line(line, "");
    // Keys pressed before their page has come add up.
    const int from = is_reading(head) ? head.events.target : head.events.position;
    const int last = std::max(head.panel.scroll().maximum, from);
    show_scroll_bar(head, head.panel.scroll().maximum);
    read_page(head, std::clamp(from + k_steps[key], 0, last));
}

void scroll_events(Head& head, int value) {
    read_page(head, value);
    head.events.event_refresh = true;
}

// A page that could not be read, or that the bar was moved to, is read once more.
void tick_events(Head& head) {
    if (head.events.event_refresh && !is_reading(head))
        read_page(head, head.panel.scroll().value);
}

}  // namespace

// The bar's value is the number of the entry on the first line; one behind the last entry shows the last one.
// What is on the display stays until the next page has been read.
extern const Screen k_events{.sub_menu = k_event_list,
                             .tick = tick_events,
                             .attach = attach_event,
                             .from = 4,
                             .key = 1,
                             .scroll = scroll_events,
                             .take = take_event,
                             .keys = {"Line up", "Line down", "Page up", "Page down"}};

}  // namespace ampdesk
