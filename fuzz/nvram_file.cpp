// An nvRam file on its way to an amplifier: the blocks of its lines go out in their order, each once,
// until a line that is none, and nothing else does.
#include "tools/nvram_transfer.h"

#include <vector>

#include "buslink/wire/binary_frame.h"
#include "fuzz/memory_file.h"
#include "platform/run_time_error.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scripted_port.h"
#include "tests/support/sent_frame.h"

namespace {

using namespace ampdesk;
using fuzz::check;

struct Wanted {
    std::vector<std::string> commands;
    std::string status = "end of nvRam file";
};

// The lines as a person reads them: line feeds end them, the first is the date.
Wanted wanted_of(std::string_view bytes) {
    Wanted wanted;
    for (bool first = true; !bytes.empty(); first = false) {
        const std::size_t end = std::min(bytes.find('\n'), bytes.size());
        std::string_view line = bytes.substr(0, end);
        bytes.remove_prefix(std::min(end + 1, bytes.size()));
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        if (first)
            continue;
        if (ends_nvram_file(line))
            break;
        const NvramLine parsed = parse_nvram_line(line);
        if (!parsed.block) {
            wanted.status = "Set nvRam Error, Exit And Set Again";
            break;
        }
        wanted.commands.push_back(nvram_set_command(*parsed.block));
    }
    return wanted;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static fuzz::MemoryFile file;
    const std::string_view bytes = fuzz::text_of(data, size);
    ManualClock clock;
    ScriptedPort port(clock);
    RecordingOperator person;
    BusLink bus(port, clock);
    bus.open_bus_port("COM1:", 9600, 0, 8, 1);
    const Crc16 crc;
    port.responder = [&](const std::string& sent) {
        return ScriptedPort::Answer{{{}, build_reply_frame(crc, '\x06', 1, sent_frame(sent).command)}};
    };
    std::optional<NvramTransfer> transfer;
    try {
        transfer.emplace(NvramTransfer::Mode::set, file.put(bytes), std::int16_t{1}, bus, person);
    } catch (const RunTimeError&) {
        check(bytes.empty(), "only an empty file cannot be begun");
        return 0;
    }
    transfer->start();
    carry_out(bus, *transfer);

    const Wanted wanted = wanted_of(bytes);
    check(transfer->panel().status == wanted.status, "the end is told as it is");
    check(port.written.size() == wanted.commands.size(), "one command a line");
    for (std::size_t i = 0; i < wanted.commands.size(); ++i)
        check(port.written[i] == build_command_frame(crc, 1, wanted.commands[i]),
              "the line's block goes out");
    check(person.messages.empty(), "no box");
    return 0;
}
