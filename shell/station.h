// The open amplifiers: their table, how they come and go, and the polling loop that keeps every
// control head alive.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "controlhead/control_head.h"
#include "shell/poll_schedule.h"

namespace ampdesk {

class Station {
  public:
    explicit Station(HeadServices& services) : services_(services) {}

    // The lowest free slot, from 1; the table grows by one when none is free. The slot counts as
    // taken from then on.
    int find_free_slot();

    // Opens a control head: on_window_created makes its window, then machine_init runs. Nothing
    // when machine_init closes it again.
    std::shared_ptr<ControlHead> new_amplifier_window(std::int16_t unit_address, const std::string& number,
                                                      const std::string& model, bool ask_before_restore);

    // The setup dialog's way in: makes the amplifier file "com" + number + ".dat" from "rs485.dat"
    // when there is none, then opens the head.
    void add_amplifier(std::int16_t unit_address, const std::string& number, const std::string& model);

    // Opens the files one after another; a failure is told in a message that names the file, and
    // the next one is tried. Names beyond the hundredth are not looked at.
    void auto_open_dat_files(const std::vector<std::string>& names);

    // Amplifier > Open: asks for the file, then checks and opens it.
    void open_amplifier_file();

    // Does what the polling loop has to do now, at most one visit, and returns how long to wait
    // before the next call. May be called again from within a visit (a message box is open there).
    Duration poll_windows();

    // Frees the slot. Safe at any time, from inside the head's own visit too: the head itself lives
    // until its last handler has returned.
    void close_window(int slot);
    void close_all();

    int open_count() const;
    std::vector<std::shared_ptr<ControlHead>> open_heads() const;  // in the order of their slots
    bool address_in_use(int unit_address) const;

    // Save family: the amplifier's file in the program's folder, and its screen settings.
    void save(const ControlHead& head);
    void save_as(const ControlHead& head);
    void save_all();

    std::function<void(const std::shared_ptr<ControlHead>&)> on_window_created;
    std::function<void(ControlHead&)> on_window_closed;

  private:
    struct OpenTexts;
    bool open_file(const std::string& path, const OpenTexts& texts);

    HeadServices& services_;
    std::vector<std::shared_ptr<ControlHead>> slots_;  // slot n at n - 1; empty = free
    std::vector<bool> free_;
    PollSchedule schedule_;
};

}  // namespace ampdesk
