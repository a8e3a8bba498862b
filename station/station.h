// The open amplifiers: their table, how they come and go, and the step that keeps every control head alive.
// It carries one exchange at a time over the line and waits for none.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "buslink/bus_guest.h"
#include "buslink/settings_files.h"
#include "controlhead/control_head.h"
#include "station/plan.h"
#include "station/unsaved_files.h"

namespace ampdesk {

class Station {
  public:
    explicit Station(HeadServices& services);

    // The lowest free slot, from 1; the table grows by one when none is free. The slot counts as
    // taken from then on.
    int find_free_slot();

    // Opens a control head: on_window_created makes its window, then machine_init runs. Nothing
    // when machine_init closes it again.
    std::shared_ptr<ControlHead> new_amplifier_window(std::int16_t unit_address, const std::string& number,
                                                      const std::string& model, bool ask_before_restore);

    // The setup dialog's way in: makes the amplifier file "com" + number + ".dat", then opens the head.
    // The file is a copy of "rs485.dat" where that tells this address on the line in use, else it is
    // written anew. One that is there and tells it too stays; of any other the operator is asked.
    void add_amplifier(std::int16_t unit_address, const std::string& number, const std::string& model);

    // Opens the files one after another; a failure is told in a message that names the file, and
    // the next one is tried. Names beyond the hundredth are not looked at; close_all ends it.
    void auto_open_dat_files(const std::vector<std::string>& names);

    // Amplifier > Open: asks for the file, then checks and opens it. A failure is told in a message.
    // When no head comes of an opening and none is open, the bus port is left as it was before.
    void open_amplifier_file();

    // Does what there is to do now and returns when there is more, at the latest. Whatever comes in on the
    // line before that, and every act of the operator, is a reason to call it sooner.
    Instant step();

    // No head is open, nothing is under way and nobody wants the line.
    bool idle() const { return open_count() == 0 && !services_.bus.under_way() && !guests_due(); }

    // Somebody else who uses the line, until he is taken out again; what is under way for him then is nobody's.
    void add_guest(BusGuest& guest) { guests_.push_back(&guest); }
    void remove_guest(const BusGuest& guest);

    // The window in front; 0 for none. What it shows is asked for first.
    void set_active(int slot) { active_ = slot; }

    // Every read of every open amplifier, and every setting that a head has sent.
    Signal<Reading> readings;
    Signal<Setting> settings;

    // Frees the slot and keeps the head's screen settings; a failure to keep them is told, and the
    // window closes all the same. Safe at any time, from inside the head's own visit too: the head
    // itself lives until its last handler has returned. The bus port stays open.
    void close_window(int slot);
    // All of them; what could not be kept, and what the caller could not, is told in one message.
    void close_all(UnsavedFiles unsaved = {});

    int open_count() const;
    std::vector<std::shared_ptr<ControlHead>> open_heads() const;  // in the order of their slots
    bool address_in_use(int unit_address) const;

    // Save family. save writes "com" + number + ".dat" with the settings of the line that is open, and the
    // screen settings; save_as writes the amplifier file under a name that is asked for. Each tells
    // what could not be written, as an amplifier file while no line is open, in one message.
    void save(const ControlHead& head);
    void save_as(const ControlHead& head);
    void save_all();

    std::function<void(const std::shared_ptr<ControlHead>&)> on_window_created;
    std::function<void(ControlHead&)> on_window_closed;

    // Names the band of an amplifier that does not tell its model; an empty answer ends the opening.
    // Without it the model stays empty. Only asked on behalf of open_amplifier_file.
    std::function<std::string()> ask_band;

  private:
    struct Slot {
        bool free = false;
        std::shared_ptr<ControlHead> head{};
        std::unique_ptr<Amplifier> amplifier{};
        Instant next_tick{};
    };
    // What is on the line. A head that has closed meanwhile gets nothing of it any more.
    struct Exchange {
        int slot = 0;
        std::weak_ptr<ControlHead> head;
        Try attempt;
        std::optional<Order> order;
        BusGuest* guest = nullptr;
    };
    struct Identity {
        std::string number;
        std::string model;
    };
    struct OpenTexts;

    int slot_number(const Slot& slot) const { return static_cast<int>(&slot - slots_.data()) + 1; }
    Slot& slot_at(int slot) { return slots_[static_cast<std::size_t>(slot - 1)]; }
    bool wants_restore();
    void give_line_back();
    void close_failed(int slot);
    Instant due() const;
    bool an_order_waits() const;
    Duration patience() const;
    void tick(Instant now);
    Slot* first_order();
    void cut_for_orders(Instant now);
    bool drop_stale(const Slot& slot, const Order& order, Instant now);
    bool begin_next(Instant now);
    bool begin_order(Instant now);
    bool begin_read(const Plan::Choice& choice, Instant now);
    bool begin_guest(Instant now);
    std::optional<Instant> guests_due() const;
    void end(const BusReply& reply);
    void took(Slot& slot, const Try& attempt, const BusReply& reply);
    void follow_silence(Slot& slot, const Reading& reading);
    std::vector<Plan::Head> heads_to_ask() const;
    void tell_waiting();
    void release(int slot, UnsavedFiles& unsaved);
    static std::string failure_of(const std::function<void()>& action);

    // amplifier_files.cpp
    void open_file(const std::string& path, const OpenTexts& texts);
    bool open_line(const Rs485File& file, const OpenTexts& texts);
    std::optional<Identity> identify(int address, const OpenTexts& texts);
    bool leads_to(const Rs485File& file, int address) const;
    bool may_replace(const std::string& name, int address);
    void make_amplifier_file(int address, const std::string& path);
    void write_amplifier_file(int address, const std::string& path);
    void save(const ControlHead& head, UnsavedFiles& unsaved);

    HeadServices& services_;
    std::vector<Slot> slots_;  // slot n at n - 1; grows and never shrinks
    Plan plan_;
    std::vector<BusGuest*> guests_;  // the one whose turn it is comes first
    std::optional<LineSettings> line_before_;  // the first head was opened
    std::optional<Exchange> exchange_;
    Instant next_choice_{};  // nothing is due before
    int active_ = 0;
    int silences_ = 0;              // exchanges in a row that nobody has answered
    std::set<int> silent_ones_;     // whose they were
    std::vector<Message> to_tell_;  // of heads that have failed
    bool telling_ = false;
    unsigned closings_ = 0;  // calls of close_all; an opening under way then ends
};

}  // namespace ampdesk
