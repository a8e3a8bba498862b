// What a flood on the terminal's port does to the amplifiers: three control heads are polled while a
// pseudo-terminal delivers bytes as fast as they are taken. The event loop is a plain poll(), the text
// box a string: no window is drawn. Prints how often each is asked for its status, the bytes taken, what went
// to the amplifiers for them, and the memory.
#include <fcntl.h>
#include <poll.h>
#include <pty.h>

#include <atomic>
#include <cstdlib>
#include <random>
#include <thread>

#include "bench/watched_station.h"
#include "platform/posix/posix_serial_port.h"
#include "platform/posix/system_clock.h"
#include "terminal/received_text.h"
#include "terminal/terminal.h"
#include "tests/support/scratch_folder.h"

using namespace ampdesk;

namespace {

constexpr std::size_t k_flood = 1 << 20;

// The far end of the terminal's line: writes its bytes again and again until it is told to stop, and
// reads what the terminal answers.
class Flood {
  public:
    Flood() {
        int slave = -1;
        char name[64] = "";
        if (openpty(&master_, &slave, name, nullptr, nullptr) != 0)
            std::exit((std::perror("bench_flood"), 1));
        close(slave);
        fcntl(master_, F_SETFL, O_NONBLOCK);  // else a write waits for ever once nobody reads
        device = name;
    }
    ~Flood() { close(master_); }

    void start(std::string bytes) {
        stopped_ = false;
        writer_ = std::thread([this, bytes = std::move(bytes)] {
            std::size_t at = 0;
            while (!stopped_) {
                pollfd watched{.fd = master_, .events = POLLIN | POLLOUT, .revents = 0};
                poll(&watched, 1, 100);
                char answer[4096];
                if ((watched.revents & POLLIN) != 0 && read(master_, answer, sizeof answer) < 0)
                    return;
                if ((watched.revents & POLLOUT) == 0)
                    continue;
                const ssize_t taken =
                    write(master_, bytes.data() + at, std::min<std::size_t>(4096, bytes.size() - at));
                at = (at + static_cast<std::size_t>(std::max<ssize_t>(taken, 0))) % bytes.size();
            }
        });
    }
    void stop() {
        stopped_ = true;
        writer_.join();
    }

    std::string device;

  private:
    int master_ = -1;
    std::atomic<bool> stopped_ = false;
    std::thread writer_;
};

// All byte values by chance, the marker of a remote station among them about sixteen times. With
// `request_every` the beginning of a request stands before every so many of them.
std::string random_bytes(std::size_t request_every = k_flood) {
    std::mt19937 random(1);
    std::string bytes;
    while (bytes.size() < k_flood) {
        if (request_every < k_flood)
            bytes += "\x06\x06>";
        for (std::size_t i = 0; i < request_every; ++i) bytes += static_cast<char>(random());
    }
    return bytes;
}

class Desk : public WatchedStation {
  public:
    Desk(SystemClock& system_clock, const std::string& folder, const std::string& device)
        : WatchedStation(system_clock, folder, 3) {
        line_.add_watcher([this](const TerminalTraffic& t) { taken += t.sent ? 0 : t.bytes.size(); });
        terminal_.on_text = [this](std::string_view data) {
            const ShownText text = ShowData(shown.size(), data);
            shown.erase(0, text.drop);
            shown += text.insert;
            longest = std::max(longest, shown.size());
        };
        station.add_guest(guest_);
        if (const PortResult result = line_.open({.device = device}); !result.ok())
            std::exit((std::fprintf(stderr, "bench_flood: %s\n", result.cause.c_str()), 1));
    }

    ~Desk() { station.remove_guest(guest_); }

    // As the main window's event loop does it: at most one read, one tick and one step a turn.
    void run(double seconds) {
        const Instant end = clock.now() + std::chrono::duration_cast<Duration>(Seconds(seconds));
        Instant step{};
        std::optional<Instant> tick;
        while (clock.now() < end) {
            const Instant next = std::min({step, tick.value_or(step), bus.port().input_due().value_or(step)});
            const Duration wait = std::max(Duration::zero(), next - clock.now());
            pollfd watched{.fd = port_.watch_handle(), .events = POLLIN, .revents = 0};
            poll(&watched, 1, static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(wait).count()));
            if (watched.revents != 0)
                line_.pump();
            if (tick && clock.now() >= *tick)
                terminal_.tick();
            step = station.step();
            const auto next_tick = terminal_.next_tick();
            tick = next_tick ? std::optional(clock.now() + *next_tick) : std::nullopt;
        }
    }

    std::size_t taken = 0;    // bytes from the terminal's line
    long sent = 0;            // frames to amplifiers on its behalf
    std::string shown;        // the text box
    std::size_t longest = 0;  // it ever was

  private:
    PosixSerialPort port_{clock};
    TerminalLine line_{&port_, clock};
    Terminal terminal_{line_, bus};

    // The terminal, whose frames are counted.
    class Guest : public BusGuest {
      public:
        explicit Guest(Desk& desk) : desk_(desk) {}
        std::optional<Instant> due() const override { return desk_.terminal_.due(); }
        std::optional<BusCommand> next() override {
            auto command = desk_.terminal_.next();
            desk_.sent += command ? 1 : 0;
            return command;
        }
        void ended(const BusReply& reply) override { desk_.terminal_.ended(reply); }

      private:
        Desk& desk_;
    };
    Guest guest_{*this};
};

long memory_kib() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

Intervals status_intervals(Desk& desk) {
    Intervals intervals;
    for (const auto& [address, at] : desk.asked(k_status_request))
        for (std::size_t i = 1; i < at.size(); ++i) intervals.add(at[i] - at[i - 1]);
    return intervals;
}

void measure(Desk& desk, Flood& flood, const char* what, const std::string& bytes, double seconds) {
    const long memory = memory_kib();
    desk.forget();
    desk.taken = 0;
    desk.sent = 0;
    if (!bytes.empty())
        flood.start(bytes);
    desk.run(seconds);
    if (!bytes.empty())
        flood.stop();
    const Intervals status = status_intervals(desk);
    std::printf("%-42s mean %6.1f ms   least %6.1f ms   most %6.1f ms   (%zu intervals)\n", what,
                status.mean(), status.least, status.most, status.count);
    std::printf(
        "%-42s %.1f MB taken, %ld frames sent for it, %zu characters shown at most, %ld KiB more memory\n",
        "", static_cast<double>(desk.taken) / 1e6, desk.sent, desk.longest, memory_kib() - memory);
}

}  // namespace

int main(int argc, char** argv) {
    double seconds = 10;
    if (argc == 3 && std::string(argv[1]) == "--seconds")
        seconds = std::atof(argv[2]);
    if (seconds <= 0 || (argc != 1 && argc != 3)) {
        std::fprintf(stderr, "Usage: bench_flood [--seconds N]\n");
        return 2;
    }
    const ScratchFolder folder;
    std::printf("Logic only: no windows, and a bus of this process that answers at once.\n");
    Flood flood;
    SystemClock clock;
    Desk desk(clock, folder.path(), flood.device);
    desk.run(1);
    measure(desk, flood, "three heads, nothing on the terminal", "", seconds);
    measure(desk, flood, "random bytes without end", random_bytes(), seconds);
    measure(desk, flood, "half requests, each with 60 random bytes", random_bytes(60), seconds);
    measure(desk, flood, "requests that an amplifier answers", "\x06\x06>01,RDSTAT\r", seconds);
    measure(desk, flood, "requests that nobody answers (1 s each)", "\x06\x06>77,RDSTAT\r", seconds);
    return 0;
}
