// The service tools, as the windows and the station speak of them. Values only. Texts are Latin-1.
#pragma once

#include <optional>
#include <string>
#include <variant>

#include "tools/console.h"
#include "tools/nvram_transfer.h"

namespace ampdesk {

namespace act {

// The file has been chosen, and that it may be replaced.
struct BeginNvram {
    NvramTransfer::Mode mode = NvramTransfer::Mode::read;
    std::string path{};
    std::int16_t unit_address = 0;
};

// The buttons of the transfer. Exit ends it.
struct StartNvram {};
struct PauseNvram {};
struct ExitNvram {};

struct SendConsoleCommand {
    std::int16_t unit_address = 0;
    std::string text{};
};

}  // namespace act

namespace notice {

// Nothing when there is no transfer, and one may be begun: after the end of each, and where one could not be
// begun.
struct NvramState {
    std::optional<NvramPanel> panel;
};

// A command is sound and will be sent. What comes of it is told later.
struct ConsoleSending {};
struct ConsoleResult {
    Console::Result result;
};

}  // namespace notice

using ToolAct =
    std::variant<act::BeginNvram, act::StartNvram, act::PauseNvram, act::ExitNvram, act::SendConsoleCommand>;
using ToolNotice = std::variant<notice::NvramState, notice::ConsoleSending, notice::ConsoleResult>;

}  // namespace ampdesk
