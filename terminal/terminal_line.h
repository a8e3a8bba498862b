// The terminal's serial port `MSComm1` as the terminal and the file transfers share it: output that
// waits for a slow line without holding up the caller, input for whoever holds the line, and watchers
// who see all of both.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "platform/serial_port.h"

namespace ampdesk {

// What a watcher (session log, traffic view) is told: every stretch of bytes as it goes out or comes
// in. `bytes` is valid during the call.
struct TerminalTraffic {
    bool sent = false;
    std::string_view bytes;
};

// Who holds the line for itself, a file transfer. Both calls return at once and show no boxes.
struct LineHolder {
    std::function<void(std::string_view bytes)> received;  // at most k_chunk bytes a call
    std::function<void()> ended;                           // the port was closed; the hold is over by then
};

class TerminalLine {
  public:
    // Output that may wait for the line.
    static constexpr std::size_t k_output_limit = 65536;

    // Received text is handed on in chunks of at most this many bytes, a quarter of what the
    // terminal shows.
    static constexpr std::size_t k_chunk = 4096;

    // Without a port (the demonstration) the line never opens. Takes the port's
    // on_connection_change until its end.
    TerminalLine(SerialPort* port, Clock& clock);
    ~TerminalLine();
    TerminalLine(const TerminalLine&) = delete;
    TerminalLine& operator=(const TerminalLine&) = delete;

    // A port that was open is closed first. On failure it stays closed.
    PortResult open(const PortSettings& settings);
    // Output that has not left is thrown away, and a hold ends.
    void close();
    bool is_open() const;

    // False while the open line is unplugged. Nothing is sent then; pump() looks for it again.
    bool is_connected() const;

    // Queues the bytes and sends what the line takes at once; never waits. False when nothing of them
    // was taken: the line is closed or unplugged, or they are more than room().
    bool send(std::string_view bytes);

    // How many bytes send() would take now; 0 while the line is closed or unplugged.
    std::size_t room() const;

    // Bytes that wait in this queue; what the driver still holds is not counted.
    std::size_t waiting() const { return output_.size(); }

    // Whether all output has left, also what the driver held.
    bool output_left();

    // Throws away what waits in this queue.
    void drop_output() { output_.clear(); }

    // Reads once what is waiting and hands it on, then sends on. To be called when the
    // descriptor is readable, and now and then while output waits or the line is unplugged. Returns
    // at once when it is already running.
    void pump();

    // Throws away input that nobody has read yet.
    void discard_input();

    // From now on received bytes go to the holder and not to on_received. False when the line is
    // closed or somebody holds it. The holder may release from within its call.
    bool take(LineHolder holder);
    void release();
    bool taken() const { return taken_; }

    // Watchers are told while the line is taken, too. None may come or go while one is being told.
    int add_watcher(std::function<void(const TerminalTraffic&)> watcher);
    void remove_watcher(int id);

    // The terminal's own input. Runs no window events.
    std::function<void(std::string_view chunk)> on_received;

    // Opened, closed, unplugged or back: the descriptor to watch has changed.
    std::function<void()> on_change;

    SerialPort* port() const { return port_; }
    Clock& clock() const { return clock_; }
    const PortSettings& settings() const { return settings_; }

  private:
    void send_on();
    void hand_on(std::string_view chunk);
    void tell(const TerminalTraffic& traffic);
    void changed();

    SerialPort* port_;
    Clock& clock_;
    PortSettings settings_;
    std::string output_;
    LineHolder holder_;
    bool taken_ = false;
    bool pumping_ = false;
    bool discarded_ = false;  // the rest of what pump() has read is to be thrown away
    std::map<int, std::function<void(const TerminalTraffic&)>> watchers_;
    int last_watcher_ = 0;
};

}  // namespace ampdesk
