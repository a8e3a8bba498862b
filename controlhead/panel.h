// What the front panel shows: four lines of text, eight lamps, scroll bar, gauge and colours, as a value.
// The screens write it, a window paints its copy, a test reads it.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "controlhead/screen_settings.h"

namespace ampdesk {

enum class LampColour { dark, yellow, red, green };

struct ScrollBar {
    bool visible = false;
    int minimum = 0;
    int maximum = 0;
    int value = 0;
    bool operator==(const ScrollBar&) const = default;
};

// What the printed scale of the power gauge goes from and to, in dBm.
struct GaugeRange {
    double minimum = 30;
    double maximum = 60;
};

class Panel {
  public:
    static constexpr std::size_t k_columns = 20;

    // Line 1..4, Latin-1. Padded with blanks to 20 characters; a longer text stays whole. What
    // does not print (below 0x20, 0x7F to 0x9F) becomes a blank. Other line numbers do nothing.
    void set_line(int line, std::string_view text);
    const std::string& line(int line) const { return lines_.at(static_cast<std::size_t>(line - 1)); }

    // The legend of soft key 0..3: its five columns of line 4, trimmed.
    std::string legend(int key) const;

    // What soft key 0..3 does now: its legend, or in words where line 4 is no legend; may be empty.
    void set_key_name(int key, const std::string& name) {
        key_names_.at(static_cast<std::size_t>(key)) = name;
    }
    const std::string& key_name(int key) const { return key_names_.at(static_cast<std::size_t>(key)); }

    // Lamp 1..8; other numbers do nothing.
    void set_lamp(int lamp, LampColour colour);
    LampColour lamp(int lamp) const { return lamps_.at(static_cast<std::size_t>(lamp - 1)); }

    void set_scroll(const ScrollBar& scroll) { scroll_ = scroll; }
    // The bar keeps its range and value.
    void hide_scroll() { scroll_.visible = false; }
    const ScrollBar& scroll() const { return scroll_; }

    // Forward power in dBm; nothing while it is not known.
    void set_gauge(std::optional<double> dbm) { gauge_ = dbm; }
    std::optional<double> gauge() const { return gauge_; }

    void set_look(const ScreenSettings& look) { look_ = look; }
    const ScreenSettings& look() const { return look_; }

    bool operator==(const Panel&) const = default;

  private:
    std::array<std::string, 4> lines_ = {std::string(k_columns, ' '), std::string(k_columns, ' '),
                                         std::string(k_columns, ' '), std::string(k_columns, ' ')};
    std::array<std::string, 4> key_names_;
    std::array<LampColour, 8> lamps_{};
    ScrollBar scroll_;
    std::optional<double> gauge_;
    ScreenSettings look_;
};

}  // namespace ampdesk
