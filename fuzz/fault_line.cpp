// Fault commands of the simulator, one a line; after them the amplifiers still answer as they should.
#include "buslink/wire/binary_frame.h"
#include "demo/demonstration.h"
#include "demo/faults.h"
#include "fuzz/input.h"
#include "tests/support/manual_clock.h"

namespace {

using namespace ampdesk;
using fuzz::check;

// All that a fault can change and a reply does not show.
std::string state(demo::SimAmplifier& a) {
    std::string text = a.status_block() + a.alarm_state() + a.shutdown_state();
    for (const long value :
         {static_cast<long>(a.line.silent), static_cast<long>(a.line.noisy_replies),
          static_cast<long>(a.line.bad_crc_replies), static_cast<long>(a.line.delay.count()),
          static_cast<long>(a.line.late.count()), static_cast<long>(a.line.drip.count()),
          static_cast<long>(a.line.wrong_address.value_or(0)), static_cast<long>(a.faults.refuse_code),
          static_cast<long>(a.faults.short_words)})
        text += std::to_string(value) + " ";
    for (const auto& word : a.faults.analog) text += std::to_string(word ? *word : -1) + " ";
    return text;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Crc16 crc;
    ManualClock clock;
    demo::SimBus bus(clock);
    demo::add_demonstration(bus, 2);
    fuzz::Input input(data, size);
    while (!input.empty()) {
        const std::string line = input.line();
        const std::string before = state(*bus.find(1)) + state(*bus.find(2));
        const demo::FaultAnswer answer = demo::make_fault(bus, line);
        const bool ok = answer.text == "ok";
        check(ok || answer.text.starts_with("error: "), "ok or an error");
        check(ok || before == state(*bus.find(1)) + state(*bus.find(2)), "an error changes nothing");
        check(!answer.quit || line.find("quit") != std::string::npos, "only quit ends it");
    }
    for (const char request : {'\x11', '\x12'}) {
        for (std::uint8_t address = 1; address <= 2; ++address) {
            const std::string sent = build_command_frame(crc, address, {&request, 1});
            bus.receive(sent);
            clock.advance(std::chrono::hours(5));
            const bool hears = !bus.find(address)->line.silent;
            const std::string reply = bus.take_due();
            check(reply.empty() != hears, "an answer unless it is silent");
            check(reply.size() <= k_longest_frame + 6, "no more than a frame behind noise");
        }
    }
    return 0;
}
