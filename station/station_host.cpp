#include "station/station_host.h"

#include <algorithm>
#include <utility>

#include "platform/run_time_error.h"
#include "platform/text_file.h"

namespace ampdesk {

namespace {

constexpr std::chrono::milliseconds k_look_for_lost_line{250};

std::vector<SerialPort*> ports_of(const StationLines& lines) {
    std::vector<SerialPort*> ports{&lines.bus};
    if (lines.terminal != nullptr)
        ports.push_back(lines.terminal);
    return ports;
}

// A notice with a key is a state, of which the newest counts; one without is an event.
auto teller(Mailbox<Notice>& notices) {
    return [&notices](const std::string& key, auto notice) {
        if (key.empty())
            notices.put(std::move(notice));
        else
            notices.put_newest(key, std::move(notice));
    };
}

// What comes in pieces: joined while nobody takes it.
template <class Piece, class Part>
void put_piece(Mailbox<Notice>& notices, const std::string& key, Piece piece) {
    notices.put_joined(key, Part(std::move(piece)), [](Notice& waiting, Notice&& newer) {
        join(std::get<Piece>(std::get<Part>(waiting)), std::get<Piece>(std::get<Part>(std::move(newer))));
    });
}

}  // namespace

StationHost::StationHost(Talk& talk, const StationLines& lines, Clock& clock,
                         const StationHostOptions& options)
    : acts_(talk.acts),
      notices_(talk.notices),
      clock_(clock),
      ports_(ports_of(lines)),
      bus_(lines.bus, clock, options.bus),
      services_{bus_, clock, person_, options.heads},
      heads_(station_, teller(notices_)),
      line_watch_(bus_, station_, person_,
                  [this](const notice::LineState& state) { notices_.put_newest("line", state); }),
      terminal_(lines.terminal, station_, services_, teller(notices_)),
      tools_(station_, bus_, person_, teller(notices_)),
      setups_(station_, services_, teller(notices_)),
      simulator_(lines.simulator, clock, teller(notices_)) {
    terminal_.on_text = [this](std::string_view bytes) {
        put_piece<notice::TerminalText, TerminalNotice>(notices_, "text", {std::string(bytes)});
    };
    terminal_.on_traffic = [this](TrafficChunk chunk) {
        put_piece<notice::Traffic, TerminalNotice>(notices_, "traffic", {{std::move(chunk)}});
    };
}

Instant StationHost::step() {
    if (finished())
        return Instant::max();
    for (const Act& act : acts_.take_all()) std::visit([this](const auto& part) { take(part); }, act);
    terminal_.step();
    const Instant next = station_.step();
    tools_.step();
    simulator_.step();
    line_watch_.step(setups_.rs422_mode());
    if (stage_ == Stage::finishing)
        step_finish();
    return due(next);
}

Instant StationHost::due(Instant next) {
    for (const std::optional<Instant> wanted : {terminal_.due(), tools_.due(), simulator_.due()})
        next = std::min(next, wanted.value_or(next));
    if (bus_.port().is_open() && !bus_.port().is_connected())
        next = std::min<Instant>(next, clock_.now() + k_look_for_lost_line);
    return stage_ == Stage::finishing ? std::min(next, finish_by_) : next;
}

void StationHost::take(const PersonAct& act) {
    const auto& answer = std::get<act::AnswerQuestion>(act);
    station_.answer(answer.number, answer.reply);
}

void StationHost::take(const ProgramAct& act) {
    std::visit([this](const auto& one) { on(one); }, act);
}

// The terminal's port only when the amplifiers are open: where both are set to the same port, they come
// first.
void StationHost::on(const act::Start& start) {
    std::vector<std::string> amplifier_files = start.amplifier_files;
    try {
        terminal_.load_settings();
    } catch (const RunTimeError& error) {
        person_.notify(error.what(), k_terminal_settings_file);
        amplifier_files.clear();
    }
    const auto files_are_open = [this, messages = start.messages] {
        station_.when_files_are_open(nullptr);
        terminal_.open_at_start();
        for (const Message& message : messages) person_.tell(message);
    };
    if (amplifier_files.empty())
        return files_are_open();
    station_.when_files_are_open(files_are_open);
    station_.auto_open_dat_files(amplifier_files);
}

void StationHost::on(const act::Finish& finish) {
    if (stage_ != Stage::running)
        return;
    stage_ = Stage::finishing;
    finish_ = finish;
    finish_by_ = clock_.now() + k_last_keys;
    terminal_.begin_finish();
}

// HV Off and the close button right after it: what has been pressed is sent.
void StationHost::step_finish() {
    const bool keys_left = station_.orders_left() && clock_.now() < finish_by_;
    if (keys_left || !terminal_.finished())
        return;
    tools_.end_transfer();
    UnsavedFiles unsaved;
    for (const act::Finish::File& file : finish_.files)
        unsaved.attempt(file.path, [&] { write_titled_lines(file.path, file.lines); });
    station_.questions().withdraw_all();
    station_.close_all(std::move(unsaved));
    stage_ = Stage::finished;
    notices_.put(notice::Finished{});
}

}  // namespace ampdesk
