#include "station/station_host.h"

#include <algorithm>
#include <utility>

#include "platform/text_file.h"

namespace ampdesk {

StationHost::StationHost(Talk& talk, SerialPort& bus_port, Clock& clock, const StationHostOptions& options)
    : acts_(talk.acts),
      notices_(talk.notices),
      clock_(clock),
      bus_(bus_port, clock, person_, options.bus),
      services_{bus_, clock, person_, options.heads},
      heads_(station_,
             [this](const std::string& key, HeadNotice notice) {
                 if (key.empty())
                     notices_.put(std::move(notice));
                 else
                     notices_.put_newest(key, std::move(notice));
             }),
      line_watch_(bus_, station_, person_, [this](const notice::LineState& state) {
          notices_.put_newest("line", state);
      }) {}

Instant StationHost::step() {
    for (const Act& act : acts_.take_all()) std::visit([this](const auto& part) { take(part); }, act);
    const Instant next = station_.step();
    line_watch_.step(false);
    if (stage_ == Stage::finishing)
        step_finish();
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
    const auto files_are_open = [this, messages = start.messages] {
        station_.when_files_are_open(nullptr);
        if (on_started)
            on_started();
        for (const Message& message : messages) person_.tell(message);
    };
    if (start.amplifier_files.empty())
        return files_are_open();
    station_.when_files_are_open(files_are_open);
    station_.auto_open_dat_files(start.amplifier_files);
}

void StationHost::on(const act::Finish& finish) {
    if (stage_ != Stage::running)
        return;
    stage_ = Stage::finishing;
    finish_ = finish;
    finish_by_ = clock_.now() + k_last_keys;
}

// HV Off and the close button right after it: what has been pressed is sent.
void StationHost::step_finish() {
    if (station_.orders_left() && clock_.now() < finish_by_)
        return;
    UnsavedFiles unsaved;
    for (const auto& [path, lines] : finish_.files)
        unsaved.attempt(path, [&] { write_titled_lines(path, lines); });
    station_.close_all(std::move(unsaved));
    stage_ = Stage::finished;
    notices_.put(notice::Finished{});
}

}  // namespace ampdesk
