// What windows and station tell one another about the terminal. Values only.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <variant>

#include "terminal/modem.h"
#include "terminal/terminal_view.h"
#include "terminal/traffic.h"

namespace ampdesk {

// What a person does.
namespace act {

// Typed or pasted characters, a carriage return for a line's end.
struct TypeText {
    std::string bytes;
};

// While the text box cannot be seen nothing is sent to it.
struct ShowTerminal {
    bool visible = true;
};

struct UseTerminalSettings {
    TerminalSettings settings;
};

struct ToggleAutoAnswer {};

struct SetModemVolume {
    Volume volume = Volume::medium;
};

struct HangUp {};

struct OpenLog {
    std::string path{};
};

struct CloseLog {};

struct BeginTransfer {
    TransferDirection direction = TransferDirection::send;
    bool xmodem = true;
    std::string path{};
};

// Ends the reception of a text, which is kept.
struct EndTransfer {};

struct CancelTransfer {};

// The answer to FileNotKept: another name, or nothing to give the file up.
struct KeepReceivedFile {
    std::optional<std::string> path;
};

struct TestNullModem {};

struct WatchTraffic {
    bool on = true;
};

}  // namespace act

using TerminalAct = std::variant<act::TypeText, act::ShowTerminal, act::UseTerminalSettings,
                                 act::ToggleAutoAnswer, act::SetModemVolume, act::HangUp, act::OpenLog,
                                 act::CloseLog, act::BeginTransfer, act::EndTransfer, act::CancelTransfer,
                                 act::KeepReceivedFile, act::TestNullModem, act::WatchTraffic>;

// What is to be seen.
namespace notice {

struct TerminalState {
    TerminalView terminal;
};

// For the text box, at its end.
struct TerminalText {
    std::string bytes;
};

struct TransferState {
    TransferView transfer;
};

// A received file could not be written there. It waits for KeepReceivedFile.
struct FileNotKept {
    std::string path{};
    std::string cause;
};

// What went over the lines, oldest first, each at most an entry of the traffic log. Only while it is watched.
struct Traffic {
    std::deque<TrafficChunk> chunks;
};

}  // namespace notice

using TerminalNotice = std::variant<notice::TerminalState, notice::TerminalText, notice::TransferState,
                                    notice::FileNotKept, notice::Traffic>;

// Adds what is newer to what waits to be shown, and of that keeps the newest: as many characters as the text
// box holds, as much traffic as the traffic view holds.
void join(notice::TerminalText& waiting, notice::TerminalText&& newer);
void join(notice::Traffic& waiting, notice::Traffic&& newer);

}  // namespace ampdesk
