#include "shell/window_layout.h"

#include <algorithm>
#include <sstream>

#include "platform/run_time_error.h"
#include "platform/text_file.h"

namespace ampdesk {

namespace {

constexpr const char* k_title = "ampdesk layout";
constexpr int k_largest = 32767;  // what a window system's coordinates hold
constexpr std::size_t k_most_heads = 100;

// "main|head NUMBER  x y width height flag"
std::string line_of(const std::string& what, const Place& place, bool flag) {
    std::ostringstream line;
    line << what << ' ' << place.x << ' ' << place.y << ' ' << place.width << ' ' << place.height << ' '
         << (flag ? 1 : 0);
    return line.str();
}

bool read_place(std::istringstream& in, Place& place, bool& flag) {
    Place read;
    int number = 0;
    if (!(in >> read.x >> read.y >> read.width >> read.height >> number))
        return false;
    const auto within = [](int value, int low) { return value >= low && value <= k_largest; };
    const bool sensible = within(read.x, -k_largest) && within(read.y, -k_largest) && within(read.width, 1) &&
                          within(read.height, 1);
    if (sensible) {
        place = read;
        flag = number != 0;
    }
    return sensible;
}

int shared(int a, int a_length, int b, int b_length) {
    return std::max(0, std::min(a + a_length, b + b_length) - std::max(a, b));
}

long shared_area(const Place& a, const Place& b) {
    return static_cast<long>(shared(a.x, a.width, b.x, b.width)) * shared(a.y, a.height, b.y, b.height);
}

}  // namespace

std::optional<WindowLayout> read_window_layout(const std::string& path) {
    std::vector<std::string> lines;
    try {
        if (file_exists(path))
            lines = read_text_lines(path);
    } catch (const RunTimeError&) {
        return std::nullopt;  // the windows then open where a first start puts them
    }
    if (lines.empty() || lines.front() != k_title)
        return std::nullopt;
    WindowLayout layout;
    for (const std::string& line : lines) {
        std::istringstream in(line);
        std::string what;
        in >> what;
        if (what == "main")
            read_place(in, layout.main, layout.maximised);
        HeadPlace head;
        if (what == "head" && layout.heads.size() < k_most_heads && in >> head.number &&
            read_place(in, head.place, head.minimised))
            layout.heads.push_back(head);
    }
    return layout;
}

std::vector<std::string> layout_lines(const WindowLayout& layout) {
    std::vector<std::string> lines = {k_title, line_of("main", layout.main, layout.maximised)};
    for (const HeadPlace& head : layout.heads)
        lines.push_back(line_of("head " + head.number, head.place, head.minimised));
    return lines;
}

Place clamped(const Place& place, const std::vector<Place>& screens) {
    if (screens.empty())
        return place;
    const Place& screen = *std::max_element(
        screens.begin(), screens.end(),
        [&](const Place& a, const Place& b) { return shared_area(place, a) < shared_area(place, b); });
    Place inside = place;
    inside.width = std::min(place.width, screen.width);
    inside.height = std::min(place.height, screen.height);
    inside.x = std::clamp(place.x, screen.x, screen.x + screen.width - inside.width);
    inside.y = std::clamp(place.y, screen.y, screen.y + screen.height - inside.height);
    return inside;
}

}  // namespace ampdesk
