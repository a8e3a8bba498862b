// Where the windows stood when the program ended, kept in "layout.dat" in the program's folder.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ampdesk {

// Pixels. For the main window on the desktop, for a head inside the main window.
struct Place {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    bool operator==(const Place&) const = default;
};

struct HeadPlace {
    std::string number;  // the amplifier number
    Place place;
    bool minimised = false;
    bool operator==(const HeadPlace&) const = default;
};

struct WindowLayout {
    Place main;
    bool maximised = false;
    std::vector<HeadPlace> heads;
    bool operator==(const WindowLayout&) const = default;
};

// Nothing when there is no such file, it cannot be read or its title line is another's. A line that
// is damaged is passed over. Never throws.
std::optional<WindowLayout> read_window_layout(const std::string& path);

// The file's lines, the title first.
std::vector<std::string> layout_lines(const WindowLayout& layout);

// The place brought back onto the screens: no larger than the screen it shares the largest area
// with (the first one when it shares none), and wholly inside it. Without screens it stays.
Place clamped(const Place& place, const std::vector<Place>& screens);

}  // namespace ampdesk
