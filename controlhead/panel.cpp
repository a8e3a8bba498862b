#include "controlhead/panel.h"

#include "platform/numbers.h"

namespace ampdesk {

namespace {

bool prints(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x20 && (byte < 0x7F || byte > 0x9F);
}

}  // namespace

void Panel::set_line(int line, std::string_view text) {
    if (line < 1 || line > 4)
        return;
    std::string shown = left_aligned(text, k_columns);
    for (char& c : shown)
        if (!prints(c))
            c = ' ';
    lines_[static_cast<std::size_t>(line - 1)] = std::move(shown);
}

std::string Panel::legend(int key) const {
    if (key < 0 || key > 3)
        return {};
    constexpr std::size_t k_field = k_columns / 4;
    return std::string(
        trimmed(std::string_view(line(4)).substr(static_cast<std::size_t>(key) * k_field, k_field)));
}

void Panel::set_lamp(int lamp, LampColour colour) {
    if (lamp >= 1 && lamp <= 8)
        lamps_[static_cast<std::size_t>(lamp - 1)] = colour;
}

}  // namespace ampdesk
