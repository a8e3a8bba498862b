// The open amplifiers: their table, how they come and go, and the step that keeps every control head alive.
// It carries one exchange at a time over the line and waits for none.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "controlhead/control_head.h"
#include "station/amplifier_files.h"
#include "station/dispatcher.h"
#include "station/file_opener.h"
#include "station/questions.h"
#include "station/unsaved_files.h"

namespace ampdesk {

class Station {
  public:
    explicit Station(HeadServices& services);
    ~Station();

    // The lowest free slot, from 1; the table grows by one when none is free. The slot counts as
    // taken from then on.
    int find_free_slot();

    // Opens a control head: on_window_created makes its window; where colours of an earlier time are to be
    // restored only if the operator wants it, he is asked. Then its first screen is read; a head for which it
    // does not come is told and closed again.
    std::shared_ptr<ControlHead> new_amplifier_window(std::int16_t unit_address, const std::string& number,
                                                      const std::string& model, bool ask_before_restore);

    // The setup dialog's way in: makes the amplifier file, then opens the head. A file that leads somewhere
    // else is replaced only if the operator wants it.
    void add_amplifier(std::int16_t unit_address, const std::string& number, const std::string& model);

    // Opens the files one after another; a failure is told in a message that names the file, and
    // the next one is tried. Names beyond the hundredth are not looked at; close_all ends it.
    void auto_open_dat_files(const std::vector<std::string>& names);

    // Amplifier > Open: checks and opens the file. A failure is told in a message.
    void open_amplifier_file(const std::string& path) { opener_.open(path); }

    // Who opens a line that may come to nothing says so before, and when it is over. The end of the last try
    // gives the line back that was open before the first one, unless a head is open on the one in use.
    void begin_line_try();
    void end_line_try();
    // The line that is open now is meant to stay.
    void keep_line();

    bool opening_files() const { return opener_.busy(); }

    // The last of the files that were to be opened has come to its end.
    void when_files_are_open(std::function<void()> then) { opener_.on_idle = std::move(then); }

    // Does what there is to do now and returns when there is more, at the latest. Whatever comes in on the
    // line before that, and every act of the operator, is a reason to call it sooner.
    Instant step();

    // Keys have been pressed, by the operator of heads that are closed by now, too, that have not been
    // carried out.
    bool orders_left() const { return line_.orders_left(); }

    // The amplifier that was looked for last, by whom ever; 0 before.
    std::int16_t last_address() const { return last_address_; }
    void looks_for(int address) { last_address_ = static_cast<std::int16_t>(address); }

    // Somebody else who uses the line, until he is taken out again; what is under way for him then is
    // nobody's.
    void add_guest(BusGuest& guest) { line_.add_guest(guest); }
    void remove_guest(const BusGuest& guest) { line_.remove_guest(guest); }

    // The window in front; 0 for none. What it shows is asked for first.
    void set_active(int slot) { line_.set_active(slot); }

    // Every read of every open amplifier, and every setting that a head has sent.
    Signal<Reading>& readings() { return line_.readings; }
    Signal<Setting>& settings() { return line_.settings; }

    // Frees the slot and keeps the head's screen settings; a failure to keep them is told, and the
    // window closes all the same. Safe at any time, from inside the head's own handler too: the head
    // itself lives until its last handler has returned. The bus port stays open.
    void close_window(int slot);
    // All of them; what could not be kept, and what the caller could not, is told in one message.
    void close_all(UnsavedFiles unsaved = {});

    int open_count() const;
    std::vector<std::shared_ptr<ControlHead>> open_heads() const;  // in the order of their slots
    bool address_in_use(int unit_address) const;
    // Whether it is; the operator is told so then.
    bool tell_if_address_used(int unit_address);

    // Save family. save writes "com" + number + ".dat" with the settings of the line that is open, and the
    // screen settings; save_as writes the amplifier file to that path. Each tells what could not be written,
    // as an amplifier file while no line is open, in one message.
    void save(const ControlHead& head);
    void save_as(int unit_address, const std::string& path);
    void save_all();

    Questions& questions() { return questions_; }
    // Of a question that the operator has been asked.
    void answer(int number, const Reply& reply) { questions_.answer(number, reply); }

    std::function<void(const std::shared_ptr<ControlHead>&)> on_window_created;
    std::function<void(ControlHead&)> on_window_closed;

  private:
    struct Slot {
        bool free = false;
        std::shared_ptr<ControlHead> head{};
        Instant next_tick{};
        int question = 0;  // whether its colours are to be restored
    };
    Slot& slot_at(int slot) { return slots_[static_cast<std::size_t>(slot - 1)]; }
    void start(const std::shared_ptr<ControlHead>& head, bool restore);
    void close_failed(int slot);
    void give_line_back();
    Instant due() const;
    void tick(Instant now);
    void tell_of(ControlHead& head);
    void release(int slot, UnsavedFiles& unsaved);
    void save(const ControlHead& head, UnsavedFiles& unsaved);

    HeadServices& services_;
    Dispatcher line_;
    AmplifierFiles files_{services_};
    Questions questions_;
    FileOpener opener_;
    std::vector<Slot> slots_;  // slot n at n - 1; grows and never shrinks
    int last_id_ = 0;          // of a head
    std::int16_t last_address_ = 0;
    int line_tries_ = 0;
    std::optional<LineSettings> line_before_;  // the first of them
};

}  // namespace ampdesk
