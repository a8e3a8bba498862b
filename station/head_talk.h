// What the windows and the station say to each other about control heads and the files they are opened from.
// A head is named by its number: HeadIdentity::id, never given again, so that what is meant for one that has
// closed meanwhile reaches no other.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "buslink/line_settings.h"
#include "controlhead/head.h"
#include "controlhead/head_view.h"

namespace ampdesk {

namespace act {

// A soft key, 0..3, or EXIT, 4, and what it did when it was pressed.
struct PressKey {
    int head = 0;
    std::int16_t index = 0;
    std::string did{};
};
// 0 HV On, 1 HV Off, 2 RF On, 3 RF Off.
struct PressHardKey {
    int head = 0;
    std::int16_t index = 0;
    Instant at{};
};
// 0..3 as the soft keys, 4..7 as the hard keys.
struct ClickLamp {
    int head = 0;
    std::int16_t index = 0;
    std::string did{};
    Instant at{};
};
// The scroll bar as it was when it was moved.
struct MoveScrollBar {
    int head = 0;
    int value = 0;
    ScrollBar bar{};
};
struct SetLook {
    int head = 0;
    ScreenSettings look{};
};
// The window in front; 0 for none.
struct SetActive {
    int head = 0;
};
struct CloseHead {
    int head = 0;
};
struct CloseAll {};
struct SaveHead {
    int head = 0;
};
// The amplifier file, for whom it leads to: his panel may have closed while a name was chosen.
struct SaveAs {
    std::int16_t unit_address = 0;
    std::string path{};
};
struct SaveAll {};
struct OpenFile {
    std::string path{};
};

}  // namespace act

using HeadAct = std::variant<act::PressKey, act::PressHardKey, act::ClickLamp, act::MoveScrollBar,
                             act::SetLook, act::SetActive, act::CloseHead, act::CloseAll, act::SaveHead,
                             act::SaveAs, act::SaveAll, act::OpenFile>;

namespace notice {

struct HeadOpened {
    HeadIdentity identity{};
    HeadView view{};
};
struct HeadChanged {
    int head = 0;
    HeadView view{};
    int moves = 0;  // of the scroll bar, that the head had heard of by then
};
struct HeadClosed {
    int head = 0;
};
// The bus line.
struct LineState {
    std::optional<LineSettings> line{};  // that is open
    int last_address = 0;                // of the amplifier that was looked for last; 0 before
    bool rs422_mode = false;             // the line was set up by Setup_422
    bool operator==(const LineState&) const = default;
};

}  // namespace notice

using HeadNotice =
    std::variant<notice::HeadOpened, notice::HeadChanged, notice::HeadClosed, notice::LineState>;

}  // namespace ampdesk
