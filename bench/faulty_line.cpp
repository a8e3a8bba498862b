// What a faulty line does to the exchange of this program and to a Modbus library's client, side by
// side: each reads two blocks of four units in turn over a pseudo-terminal whose far end spoils one
// reply in ten, the same faults for all. Every reply tells whose it is, which block and to which
// request, so that a wrong one shows. Nobody tries a read again, all have the same limit for a reply.
// What differs is the protocol, too: our replies repeat the command but, unless checked, not the unit;
// Modbus replies name the unit, but not the registers.
#include <modbus.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include "bench/faulty_responder.h"
#include "buslink/bus_link.h"
#include "buslink/wire/binary_frame.h"
#include "buslink/wire/control_characters.h"
#include "demo/request_finder.h"
#include "platform/posix/posix_serial_port.h"
#include "platform/posix/system_clock.h"

using namespace ampdesk;
using namespace ampdesk::bench;

namespace {

constexpr std::chrono::milliseconds k_deadline{200};
constexpr int k_units = 4;
constexpr int k_registers = 3;
constexpr int k_block_step = 16;  // register address of the second block

// What a reply says of itself. The request is counted from 1 and kept to 16 bits.
struct Label {
    int unit = 0;
    int block = 0;
    int request = 0;
    bool operator==(const Label&) const = default;
};

struct Tally {
    int right = 0, failed = 0;
    int others = 0;  // of another unit or another block
    int stale = 0;   // of this unit and block, but the reply to an earlier request
    double seconds = 0;
};

using Read = std::function<bool(int unit, int block, Label& label)>;

Tally run(int exchanges, const Read& read) {
    Tally tally;
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < exchanges; ++i) {
        const Label expected{1 + i / 2 % k_units, i % 2, (i + 1) & 0xFFFF};
        Label label;
        if (!read(expected.unit, expected.block, label))
            ++tally.failed;
        else if (label.unit != expected.unit || label.block != expected.block)
            ++tally.others;
        else
            ++(label.request == expected.request ? tally.right : tally.stale);
    }
    tally.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return tally;
}

// Our amplifiers: two commands, the label as the payload.
const std::array<std::string, 2> k_commands = {"\x12", {"\xA0\x15\x00", 3}};

FaultyResponder::Manner our_manner(const Crc16& crc) {
    const auto answer = [&crc, finder = demo::RequestFinder(crc), count = 0](std::string_view bytes) mutable {
        std::vector<std::string> replies;
        for (const demo::Request& request : finder.feed(bytes)) {
            ++count;
            const char label[] = {static_cast<char>(request.address),
                                  static_cast<char>(request.command == k_commands[1]),
                                  static_cast<char>(count & 0xFF), static_cast<char>(count >> 8 & 0xFF)};
            replies.push_back(build_reply_frame(crc, k_ack, static_cast<std::uint8_t>(request.address),
                                                request.command + std::string(label, sizeof label)));
        }
        return replies;
    };
    return {.answer = answer, .echo_at = 3, .crc = &crc, .deadline = k_deadline};
}

Tally run_ours(int exchanges, const FaultyResponder& far, bool address_checked) {
    SystemClock clock;
    PosixSerialPort port(clock);
    BusOptions options;
    options.ports.set(1, far.device());
    options.reply_address = address_checked ? ReplyAddress::checked : ReplyAddress::ignored;
    BusLink bus(port, clock, options);
    if (bus.open_bus_port("COM1:", 19200, 0, 8, 1) != 0) {
        std::fprintf(stderr, "%s\n", bus.open_failure().c_str());
        std::exit(1);
    }
    return run(exchanges, [&](int unit, int block, Label& label) {
        const std::string& command = k_commands[static_cast<std::size_t>(block)];
        std::string reply;
        if (bus.bus_command(static_cast<std::int16_t>(unit), command, reply, k_deadline) !=
            static_cast<int>(command.size()) + 9)
            return false;
        const auto byte = [&](std::size_t i) {
            return static_cast<int>(static_cast<unsigned char>(reply[3 + command.size() + i]));
        };
        label = {byte(0), byte(1), byte(2) + 256 * byte(3)};
        return true;
    });
}

// Modbus: unit, function 3, address, count, CRC; the label in the registers.
FaultyResponder::Manner modbus_manner(const Crc16& crc) {
    const auto answer = [&crc, buffer = std::string(), count = 0](std::string_view bytes) mutable {
        constexpr std::size_t k_request = 8;
        std::vector<std::string> replies;
        for (buffer.append(bytes); buffer.size() >= k_request; buffer.erase(0, k_request)) {
            ++count;
            const char block = buffer[3] == k_block_step ? 1 : 0;
            std::string reply = {buffer[0],
                                 3,
                                 2 * k_registers,
                                 buffer[0],
                                 block,
                                 static_cast<char>(count >> 8),
                                 static_cast<char>(count & 0xFF),
                                 0,
                                 0};
            const unsigned check = crc.c_chkCRC(reply);
            reply += {static_cast<char>(check & 0xFFU), static_cast<char>(check >> 8U)};
            replies.push_back(reply);
        }
        return replies;
    };
    return {.answer = answer, .echo_at = 1, .crc = &crc, .deadline = k_deadline};
}

Tally run_modbus(int exchanges, const FaultyResponder& far, bool recovery) {
    modbus_t* modbus = modbus_new_rtu(far.device().c_str(), 19200, 'N', 8, 1);
    if (modbus == nullptr || modbus_connect(modbus) != 0) {
        std::perror("modbus");
        std::exit(1);
    }
    const auto limit = std::chrono::duration_cast<std::chrono::microseconds>(k_deadline).count();
    modbus_set_response_timeout(modbus, 0, static_cast<std::uint32_t>(limit));
    modbus_set_byte_timeout(modbus, 0, 0);  // the response's limit counts for all of it, as with us
    if (recovery)
        modbus_set_error_recovery(modbus, static_cast<modbus_error_recovery_mode>(
                                              MODBUS_ERROR_RECOVERY_LINK | MODBUS_ERROR_RECOVERY_PROTOCOL));
    const Tally tally = run(exchanges, [&](int unit, int block, Label& label) {
        std::array<std::uint16_t, k_registers> registers{};
        modbus_set_slave(modbus, unit);
        if (modbus_read_registers(modbus, block * k_block_step, k_registers, registers.data()) != k_registers)
            return false;
        label = {registers[0] >> 8, registers[0] & 0xFF, registers[1]};
        return true;
    });
    modbus_close(modbus);
    modbus_free(modbus);
    return tally;
}

using Client = std::function<Tally(int exchanges, const FaultyResponder& far)>;

// What a spoilt reply costs is the time beyond that of as many reads on a sound line.
void compare(const char* name, int exchanges, int percent, const FaultyResponder::Manner& manner,
             const Client& client) {
    constexpr unsigned k_seed = 1;
    constexpr int k_sound = 200;
    const double sound = client(k_sound, FaultyResponder(manner, k_seed, 0)).seconds / k_sound;
    const FaultyResponder far(manner, k_seed, percent);
    const Tally tally = client(exchanges, far);
    const auto counts = far.counts();
    const long spoilt = std::accumulate(counts.begin() + 1, counts.end(), 0L);
    const double lost =
        (tally.seconds - exchanges * sound) * 1000 / static_cast<double>(std::max(spoilt, 1L));
    std::printf("%-36s %8ld %8d %8d %8d %8d %8.1f %8.0f\n", name, spoilt, tally.right, tally.failed,
                tally.others, tally.stale, tally.seconds, lost);
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    int exchanges = 1000;
    int percent = 10;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string name = argv[i];
        (name == "--percent" ? percent : exchanges) = std::atoi(argv[i + 1]);
    }
    if (argc % 2 == 0 || exchanges < 1 || percent < 0 || percent > 100) {
        std::fprintf(stderr, "Usage: bench_faulty_line [--exchanges N] [--percent N]\n");
        return 2;
    }
    const Crc16 crc;
    const Crc16 modbus_crc(CrcParameters{.initial = 0xFFFF});
    std::printf(
        "%d reads each, %d %% of the replies spoilt, limit %lld ms\n"
        "others': a sound reply of another unit or block was taken; stale: of the same, but to an\n"
        "earlier request; lost: milliseconds a spoilt reply cost\n",
        exchanges, percent, static_cast<long long>(k_deadline.count()));
    std::printf("%-36s %8s %8s %8s %8s %8s %8s %8s\n", "", "spoilt", "right", "failed", "others'", "stale",
                "seconds", "lost");
    for (const bool checked : {false, true})
        compare(checked ? "bus_command, reply_address=checked" : "bus_command, reply_address=ignored",
                exchanges, percent, our_manner(crc),
                [&](int count, const FaultyResponder& far) { return run_ours(count, far, checked); });
    for (const bool recovery : {false, true})
        compare(recovery ? "libmodbus RTU, error recovery on" : "libmodbus RTU, as it comes", exchanges,
                percent, modbus_manner(modbus_crc),
                [&](int count, const FaultyResponder& far) { return run_modbus(count, far, recovery); });
    return 0;
}
