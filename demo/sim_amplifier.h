// One simulated amplifier behind its bus commands. Knows no line and no frame: a command's bytes in,
// the reply's data out. Everything that time does to it happens when it is next spoken to.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "demo/sim_event_log.h"
#include "demo/sim_faults.h"
#include "demo/sim_model.h"
#include "demo/sim_nvram.h"
#include "demo/sim_shutdowns.h"
#include "demo/sim_tube.h"
#include "demo/sim_warnings.h"
#include "platform/clock.h"

namespace ampdesk::demo {

// The last byte of a NAK reply's data.
enum class Refusal : std::uint8_t {
    none = 0,
    command_not_found = 1,
    remote_is_not_on = 3,
    invalid_data = 4,
    no_such_block = 0x20,  // an nvRam read past the last block: the transfer is complete
};

class SimAmplifier {
  public:
    SimAmplifier(SimModel model, const Clock& clock);

    struct Reply {
        bool accepted = false;  // ACK, else NAK
        std::string data;       // the command, then the payload or the refusal code; 255 bytes at most
    };

    // Carries out a binary command. Never fails: what it does not know it refuses.
    Reply answer(std::string_view command);

    // Carries out a text command; the reply's text without its frame, "NAK 1" for a refusal.
    std::string answer_text(std::string_view command);

    const SimModel& model() const { return model_; }

    // Settings, as the bus commands give them.
    Refusal set_hv(bool on);
    Refusal set_rf(bool on);
    Refusal acknowledge_shutdown();  // refused while a cause is still there
    Refusal throw_switch();
    Refusal set_switch_mode(int mode);  // 0 off, 1 manual, 2 auto
    Refusal set_attenuation(int tenths);
    Refusal set_band(int number);

    // Payloads of the reads.
    std::string status_block() const;
    std::string analog_block();
    std::string limits_block() const;
    std::string identity_text() const;
    std::string alarm_state() const;     // flag "0" or "1", comma, text
    std::string shutdown_state() const;  // number, comma, blank, text; number 0 without a shutdown
    std::string event_entry(std::size_t n) const { return log_.entry(n); }
    std::string readable_status();
    int band() const { return band_; }

    bool remote_on() const { return (status_character(2) & 1U) != 0; }
    bool remote_allowed() const { return remote_; }  // what set_remote said
    bool fan_stopped() const { return tube_.fan_stopped(); }

    // What goes wrong. A shutdown takes HV and RF off and stays until it is acknowledged; that of an
    // open interlock or of low air flow is refused until its cause has gone. The latest is told.
    void shut_down(int number, std::string_view text);
    void shut_down(ShutdownCause cause);
    void cause_gone(ShutdownCause cause) { shutdowns_.hold(cause, false); }
    void end_shutdown(ShutdownCause cause);  // without an acknowledgement
    const SimShutdowns& shutdowns() const { return shutdowns_; }
    void raise_alarm(std::string_view text);
    void stop_fan(bool stopped);  // leads to over-temperature
    void set_remote(bool on);
    void clear_faults();  // all of them, shutdowns and the line's included

    SimNvram nvram;
    SimWarnings warnings;
    LineFaults line;
    ContentFaults faults;

  private:
    void refresh();
    bool trip(const AnalogWords& measured);
    void shut_down(const SimShutdowns::Entry& entry);
    std::uint8_t status_character(std::size_t position) const;
    std::string state_text() const;
    void log(std::string_view text) { log_.add(clock_.local_time(), text); }

    SimModel model_;
    const Clock& clock_;
    SimTube tube_;
    SimShutdowns shutdowns_;
    SimEventLog log_;
    AnalogWords words_{};  // as measured last, forced words among them
    bool warming_up_ = false;
    bool remote_ = true;
    int switch_mode_ = 0;
    int band_ = 0;
};

}  // namespace ampdesk::demo
