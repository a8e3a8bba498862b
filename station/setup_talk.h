// The two bus setup dialogs, as the windows and the station speak of them. Values only.
#pragma once

#include <variant>

#include "buslink/bus_setup.h"

namespace ampdesk {

enum class SetupKind {
    amplifier,  // Amplifier > New
    line,       // Tools > Setup_422
};

namespace act {

// One dialog at a time.
struct OpenSetup {
    SetupKind kind = SetupKind::amplifier;
};

// OK; not again before SetupEnded.
struct BeginSetup {
    BusChoices choices;
};

// However it closed, with its fields as they stood then.
struct CloseSetup {
    BusChoices choices;
};

}  // namespace act

namespace notice {

// What OK has come to. The dialog stays open, or closes by itself.
struct SetupEnded {
    SetupResult result;
};

}  // namespace notice

using SetupAct = std::variant<act::OpenSetup, act::BeginSetup, act::CloseSetup>;
using SetupNotice = std::variant<notice::SetupEnded>;

}  // namespace ampdesk
