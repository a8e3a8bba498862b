// A remote station's session over two real lines: requests typed at the far end of the terminal's
// pseudo-terminal, simulated amplifiers at the far end of the bus, and the literal bytes on both.
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <thread>

#include "demo/demonstration.h"
#include "platform/posix/posix_serial_port.h"
#include "platform/posix/system_clock.h"
#include "terminal/terminal.h"
#include "tests/platform/far_end.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/recording_operator.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;

// The amplifiers 1 to 3 behind a line, on a thread of their own; notes the bytes that reach them.
class AmplifierLine {
  public:
    AmplifierLine() {
        demo::add_demonstration(bus_, 3);
        thread_ = std::thread([this] {
            while (!ended_) {
                const std::string bytes = far_.receive(1, 5);
                if (bytes.empty())
                    continue;
                bus_.receive(bytes);
                {
                    const std::lock_guard hold(noted_);
                    received_ += bytes;
                }
                if (const std::string reply = bus_.take_due(); !reply.empty())
                    far_.send(reply);
            }
        });
    }
    ~AmplifierLine() {
        ended_ = true;
        thread_.join();
    }
    const std::string& device() const { return far_.device(); }
    std::string take_received() {
        std::this_thread::sleep_for(milliseconds(20));  // the last byte may still be in the line
        const std::lock_guard hold(noted_);
        return to_hex(std::exchange(received_, {}));
    }

  private:
    SystemClock clock_;
    demo::SimBus bus_{clock_};
    FarEnd far_;
    std::atomic<bool> ended_ = false;
    std::mutex noted_;
    std::string received_;
    std::thread thread_;
};

struct RemoteSession : testing::Test {
    RemoteSession() {
        BusOptions options;
        options.ports.set(1, amplifiers.device());
        options.ports.set(3, "/dev/ampdesk-no-such-line");
        bus.emplace(bus_port, clock, person, options);
        terminal.emplace(line, *bus, folder.path());
        terminal->on_text = [this](std::string_view text) { shown += text; };
        line.on_change = [this] { terminal->line_changed(); };
        EXPECT_TRUE(line.open({.device = far.device()}).ok());
    }
    ~RemoteSession() override { line.on_change = nullptr; }

    // The main window's event loop, until nothing has happened for that long.
    void run(milliseconds quiet) {
        for (Instant end = clock.now() + quiet; clock.now() < end;) {
            const auto next = terminal->next_tick();
            const Instant wake = next ? std::min(end, clock.now() + *next) : end;
            const bool input = port.wait_readable(wake) == WaitResult::data;
            if (input)
                line.pump();
            const bool ticks = next && clock.now() >= wake && wake < end;
            if (ticks)
                terminal->tick();
            if (input || next)
                end = clock.now() + quiet;
        }
    }

    // What the remote station gets for its line, given in one chunk or byte by byte.
    std::string ask(const std::string& request, bool bytewise) {
        if (!bytewise)
            far.send(request);
        for (const char c : bytewise ? request : std::string()) {
            far.send({&c, 1});
            EXPECT_EQ(port.wait_readable(clock.now() + milliseconds(500)), WaitResult::data);
            line.pump();
        }
        run(milliseconds(20));
        std::string answer = far.receive(4096, 10);
        return answer;
    }

    SystemClock clock;
    ScratchFolder folder;
    AmplifierLine amplifiers;
    FarEnd far;
    RecordingOperator person;
    PosixSerialPort bus_port{clock};
    PosixSerialPort port{clock};
    std::optional<BusLink> bus;
    TerminalLine line{&port, clock};
    std::optional<Terminal> terminal;
    std::string shown;
};

// Every path and every message of a request, from the far end's bytes to its answer.
TEST_F(RemoteSession, EveryPathAndMessage) {
    const std::string k_open = "\x06\x06\x02\x02RS422\r";
    const std::string k_no_response =
        "No response from amplifier, check 422/485 connection to the amplifier\r\n";
    const std::string k_wrong = "No message from amplifier, wrong command\r\n";
    const std::string k_good_file = "RS-422\r\nCOM1:\r\n6\r\n3\r\n0\r\n0\r\n";
    const struct {
        const char* fault;
        std::string file;  // "rs422.dat" from now on; "-" takes it away, nothing leaves it
        std::string request;
        std::string answer;
        std::string frames;  // on the bus
    } table[] = {
        {"an exchange while no port is open", "", "\x06\x06>01,RDSTAT\r", "", ""},
        {"no settings", "", k_open, "No default settings for serial port\r\n", ""},
        {"a file of another kind", "RS-485\r\nCOM1:\r\n", k_open,
         "Default settings for serial port corrupted\r\n", ""},
        {"a baud code that is none", "RS-422\r\nCOM1:\r\n8\r\n3\r\n0\r\n0\r\n", k_open,
         "Serial Initialization Failed\r\n", ""},
        {"a line that is not there", "RS-422\r\nCOM3:\r\n6\r\n3\r\n0\r\n0\r\n", k_open,
         "Serial Initialization Failed\r\n", ""},
        {"a wrong command while no port is open", "", "\x06\x06>01 RDSTAT\r", k_wrong, ""},
        {"the port marker without its word", k_good_file, "\x06\x06\x02\x02RS485\r", "", ""},
        {"a good file opens the port without a word", "", k_open, "", ""},
        {"a binary exchange", "", "\x06\x06>01,RDSTAT\r", k_no_response, "01 01 06 52 44 53 54 41 54 36 DA"},
        {"a line without the marker", "", ">01,RDSTAT\r", "", ""},
        {"a marker of one", "", "\x06>01,RDSTAT\r", "", ""},
        {"text before the marker, LF behind the CR", "", "hello \x06\x06 > 2 , RDBAND \r\n", k_no_response,
         "01 02 06 52 44 42 41 4E 44 66 0B"},
        {"a text frame, then the status", "", "\x06\x06\x03\x03>03,RDBAND\r", k_no_response,
         "02 3E 30 33 20 52 44 42 41 4E 44 03 30 32 0D 01 03 06 52 44 53 54 41 54 B7 03"},
        {"a text frame without its comma", "", "\x06\x06\x03\x03>03 RDBAND\r", k_wrong, ""},
        {"a text that no checksum holds", "", "\x06\x06\x03\x03>3," + std::string(300, '~') + "\r",
         "Overflow\r\n", ""},
        {"an address that no amplifier has", "", "\x06\x06>100,RDSTAT\r", k_wrong, ""},
        {"a request without command", "",
         "\x06\x06"
         "abc\r",
         "", ""},
        {"the file is gone, the port is as it was", "-", k_open, "No default settings for serial port\r\n",
         ""},
        {"a binary exchange after that", "", "\x06\x06>01,RDSTAT\r", k_no_response,
         "01 01 06 52 44 53 54 41 54 36 DA"},
    };
    for (const bool bytewise : {false, true}) {
        for (const auto& row : table) {
            SCOPED_TRACE(std::string(row.fault) + (bytewise ? ", byte by byte" : ""));
            if (row.request.size() > 60 && bytewise)
                continue;  // more than 50 characters byte by byte are no line
            if (row.file == "-")
                std::filesystem::remove(folder / "rs422.dat");
            else if (!row.file.empty())
                folder.put("rs422.dat", row.file);
            shown.clear();
            EXPECT_EQ(ask(row.request, bytewise), row.answer);
            EXPECT_EQ(shown, row.request + row.answer);
            EXPECT_EQ(amplifiers.take_received(), row.frames);
        }
        bus->close_bus_port();
    }
    EXPECT_EQ(person.take_texts(), std::vector<std::string>{});
}

// Nobody answers: an empty line, after the second that an exchange has.
TEST_F(RemoteSession, ASilentAmplifierIsAnEmptyLine) {
    folder.put("rs422.dat", "RS-422\r\nCOM1:\r\n6\r\n3\r\n0\r\n0\r\n");
    ask("\x06\x06\x02\x02RS422\r", false);
    const Instant start = clock.now();
    EXPECT_EQ(ask("\x06\x06>77,RDSTAT\r", false), "\r\n");
    EXPECT_GE(clock.now() - start, milliseconds(1000));
    EXPECT_EQ(amplifiers.take_received(), "01 4D 06 52 44 53 54 41 54 32 BF");
}

// The far end vanishes in the middle of a request: the program spins, ends, or stays deaf.
TEST_F(RemoteSession, AnUnpluggedTerminalIsLookedForInPeace) {
    far.send("\x06\x06>01,RD");
    run(milliseconds(20));
    far.unplug();
    line.pump();
    EXPECT_FALSE(line.is_connected());
    EXPECT_EQ(line.watch_handle(), -1);
    EXPECT_EQ(terminal->next_tick(), std::chrono::seconds(2));
    EXPECT_TRUE(terminal->Term_KeyPress('x'));
    terminal->tick();
    EXPECT_FALSE(line.is_connected());
}

}  // namespace
}  // namespace ampdesk
