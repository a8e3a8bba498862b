// How long one exchange with an amplifier takes, beside the bare system calls for the same bytes and
// beside a Modbus library's exchange of about as many. Each talks over a pseudo-terminal of its own
// to a process that answers at once, so that what differs is the cost of the way there and back.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <modbus.h>
#include <poll.h>
#include <pty.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "buslink/bus_link.h"
#include "buslink/wire/binary_frame.h"
#include "buslink/wire/control_characters.h"
#include "platform/posix/posix_serial_port.h"
#include "platform/posix/system_clock.h"

namespace ampdesk {
namespace {

using Bytes = std::string;

constexpr int k_unit = 1;
constexpr int k_registers = 3;  // a Modbus reply of 11 bytes beside a status reply of 12
constexpr int k_round_trips = 400;
constexpr int k_repetitions = 101;

[[noreturn]] void give_up(const char* what) {
    std::perror(what);
    std::exit(1);
}

// A process at the far end of a pseudo-terminal that sends the reply after every request's worth of
// bytes.
class Responder {
  public:
    Responder(std::size_t request_size, const Bytes& reply) {
        int master = -1;
        int slave = -1;
        std::array<char, 64> name{};
        if (openpty(&master, &slave, name.data(), nullptr, nullptr) != 0)
            give_up("openpty");
        device_ = name.data();
        slave_ = slave;  // held, so that the far end never sees the line without a user
        termios raw{};
        tcgetattr(slave, &raw);
        cfmakeraw(&raw);
        tcsetattr(slave, TCSANOW, &raw);
        child_ = fork();
        if (child_ < 0)
            give_up("fork");
        if (child_ == 0) {
            ::close(slave);
            answer(master, request_size, reply);
        }
        ::close(master);
    }
    Responder(const Responder&) = delete;
    Responder& operator=(const Responder&) = delete;
    ~Responder() {
        ::close(slave_);
        kill(child_, SIGKILL);
        waitpid(child_, nullptr, 0);
    }
    const std::string& device() const { return device_; }

  private:
    [[noreturn]] static void answer(int line, std::size_t request_size, const Bytes& reply) {
        std::array<char, 256> block{};
        for (std::size_t received = 0;;) {
            const ssize_t count = ::read(line, block.data(), block.size());
            if (count <= 0)
                _exit(0);
            received += static_cast<std::size_t>(count);
            for (; received >= request_size; received -= request_size)
                if (::write(line, reply.data(), reply.size()) < 0)
                    _exit(0);
        }
    }

    std::string device_;
    int slave_ = -1;
    pid_t child_ = -1;
};

// All on one processor: where the scheduler happens to put the far ends, next door or across a wake-up
// of a sleeping core, makes a difference of six times, which has nothing to do with what is compared.
void stay_on_one_processor() {
    cpu_set_t here;
    CPU_ZERO(&here);
    CPU_SET(static_cast<std::size_t>(std::max(0, sched_getcpu())), &here);
    if (sched_setaffinity(0, sizeof here, &here) != 0)
        std::perror("not kept on one processor, figures will scatter");
}

// One way of making a round trip, and how long each one took.
struct Contender {
    std::string name;
    std::function<bool()> round_trip;
    std::vector<double> microseconds = {};

    double median() {
        const auto middle = microseconds.begin() + static_cast<std::ptrdiff_t>(microseconds.size() / 2);
        std::nth_element(microseconds.begin(), middle, microseconds.end());
        return *middle;
    }
};

// Google Benchmark runs the repetitions; each round trip is timed by itself, since a mean would
// carry every interruption by other programs.
void measure(benchmark::State& state, Contender& contender) {
    for (auto unused : state) {
        static_cast<void>(unused);
        const auto start = std::chrono::steady_clock::now();
        const bool good = contender.round_trip();
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        if (!good) {
            state.SkipWithError("no valid reply");
            return;
        }
        state.SetIterationTime(taken.count());
        contender.microseconds.push_back(taken.count() * 1e6);
    }
}

// The same bytes with nothing around them: write, wait, read.
bool bare_round_trip(int line, const Bytes& request, std::size_t reply_size) {
    if (::write(line, request.data(), request.size()) != static_cast<ssize_t>(request.size()))
        return false;
    std::array<char, 256> block{};
    for (std::size_t received = 0; received < reply_size;) {
        pollfd watched{.fd = line, .events = POLLIN, .revents = 0};
        if (poll(&watched, 1, 1000) != 1)
            return false;
        const ssize_t count = ::read(line, block.data(), block.size());
        if (count <= 0)
            return false;
        received += static_cast<std::size_t>(count);
    }
    return true;
}

int run(int argc, char** argv) {
    const Crc16 crc;
    const Bytes status_command = "\x11";
    const Bytes request = build_command_frame(crc, k_unit, status_command);
    const Bytes reply = build_reply_frame(crc, k_ack, k_unit, status_command + "\x01\x02\x03\x04\x05\x06");
    const Crc16 modbus_crc(CrcParameters{.initial = 0xFFFF});
    Bytes modbus_reply = {k_unit, 3, 2 * k_registers, 0, 1, 0, 2, 0, 3};
    const unsigned check = modbus_crc.c_chkCRC(modbus_reply);
    modbus_reply += {static_cast<char>(check & 0xFFU), static_cast<char>(check >> 8U)};
    constexpr std::size_t k_modbus_request = 8;

    stay_on_one_processor();
    // All far ends first, so that none of them inherits another's line.
    Responder ours_far(request.size(), reply);
    Responder bare_far(request.size(), reply);
    Responder modbus_far(k_modbus_request, modbus_reply);

    SystemClock clock;
    PosixSerialPort port(clock);
    BusOptions options;
    options.ports.set(1, ours_far.device());
    BusLink bus(port, clock, options);
    if (bus.open_bus_port("COM1:", 19200, 0, 8, 1) != 0)
        give_up(bus.open_failure().c_str());

    const Descriptor bare_line(::open(bare_far.device().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!bare_line)
        give_up("open");

    modbus_t* modbus = modbus_new_rtu(modbus_far.device().c_str(), 19200, 'N', 8, 1);
    if (modbus == nullptr || modbus_set_slave(modbus, k_unit) != 0 || modbus_connect(modbus) != 0)
        give_up("modbus");

    Bytes received;
    std::array<std::uint16_t, k_registers> registers{};
    std::array<Contender, 3> contenders = {{
        {.name = "bare system calls",
         .round_trip = [&] { return bare_round_trip(bare_line.get(), request, reply.size()); }},
        {.name = "bus_command",
         .round_trip =
             [&] {
                 return bus.bus_command(k_unit, status_command, received) == static_cast<int>(reply.size());
             }},
        {.name = "libmodbus RTU",
         .round_trip =
             [&] { return modbus_read_registers(modbus, 0, k_registers, registers.data()) == k_registers; }},
    }};
    for (Contender& contender : contenders)
        benchmark::RegisterBenchmark(contender.name.c_str(),
                                     [&contender](benchmark::State& state) { measure(state, contender); })
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond)
            ->Iterations(k_round_trips)
            ->Repetitions(k_repetitions)
            ->ReportAggregatesOnly();

    // Interleaved, so that what else the machine does hits all alike.
    std::vector<char*> arguments(argv, argv + argc);
    std::string interleave = "--benchmark_enable_random_interleaving=true";
    arguments.insert(arguments.begin() + 1, interleave.data());
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    modbus_close(modbus);
    modbus_free(modbus);

    std::printf("\n%-20s %12s %10s\n", "round trip", "median (us)", "samples");
    for (Contender& c : contenders) {
        if (c.microseconds.empty())
            return 1;
        std::printf("%-20s %12.2f %10zu\n", c.name.c_str(), c.median(), c.microseconds.size());
    }
    const double ours = contenders[1].median();
    std::printf("bus_command / bare system calls  %.3f  (at most 1.25)\n", ours / contenders[0].median());
    std::printf("bus_command / libmodbus          %.3f  (at most 1)\n", ours / contenders[2].median());
    return 0;
}

}  // namespace
}  // namespace ampdesk

int main(int argc, char** argv) {
    return ampdesk::run(argc, argv);
}
