// A control head whose amplifier answers anything, in any order, with keys in between: no reply may throw out
// of a handler, spoil the display or make the head want a setting that no key asked for.
//
// input: flags (1 negative words are signed, 2 C/KU/X amplifier, 4 KU/DBS), then steps, each a number
// that chooses one of the kinds below and one that says which; every exchange takes its answer from the same
// bytes.
#include "controlhead/control_head.h"

#include "buslink/wire/binary_frame.h"
#include "buslink/wire/control_characters.h"
#include "fuzz/input.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scripted_port.h"
#include "tests/support/sent_frame.h"

namespace {

using namespace ampdesk;
using fuzz::check;

const Crc16 k_crc;

ScriptedPort::Answer answer(const std::string& frame, fuzz::Input& input) {
    enum Kind { silence, refusal, raw };
    const unsigned choice = input.number();
    std::string bytes;
    if (choice % 8 == silence)
        return {};
    if (frame[0] == k_stx)
        bytes = "\x02" + input.stretch() + "\x03" + "00\r";
    else if (choice % 8 == raw)
        bytes = input.stretch();
    else
        bytes = build_reply_frame(k_crc, choice % 8 == refusal ? k_nak : k_ack, 7,
                                  (sent_frame(frame).command + input.stretch()).substr(0, 255));
    return {{std::chrono::milliseconds(choice), bytes}};
}

// What the station does next: the first order, else something that is read all the time or once.
void exchange(ControlHead& head, Amplifier& amplifier, BusLink& bus, unsigned value) {
    constexpr Request::Kind k_periodic[] = {Request::Kind::status, Request::Kind::analog,
                                            Request::Kind::alarm_state, Request::Kind::limits};
    if (!head.orders().empty()) {
        const Order order = head.orders().front();
        head.orders().pop_front();
        const BusReply reply = bus.carry_out(amplifier.command_of(order.command));
        return head.take(order, amplifier.take(order.command, Origin::key, reply));
    }
    const auto& wanted = head.requests();
    const bool once = value % 2 == 1 && !wanted.empty();
    const Request request = once ? wanted[value / 2 % wanted.size()] : Request{k_periodic[value / 2 % 4]};
    const Try attempt{request, bus.clock().now(), request.guess || (value & 64U) != 0};
    head.take(amplifier.take(attempt, bus.carry_out(amplifier.command_of(request))));
}

enum Kind { reading, display, soft_key, hard_key, lamp, scroll, dead_line, kinds };

void act(ControlHead& head, unsigned kind, unsigned value) {
    const auto index = static_cast<std::int16_t>(static_cast<int>(value % 10) - 1);
    const auto did = value < 128 ? std::nullopt : std::optional(head.panel().legend(index));
    switch (kind) {
        case display:
            return head.tick();
        case soft_key:
            return head.press_key(index, did);
        case hard_key:
            return head.press_hard_key(index);
        case lamp:
            return head.click_lamp(index, did);
        case scroll:
            return head.move_scroll_bar(static_cast<int>(2 * value) - 10);
        default:
            return head.line_is_dead();
    }
}

void check_panel(const Panel& panel) {
    for (int line = 1; line <= 4; ++line) {
        const std::string& text = panel.line(line);
        check(text.size() >= Panel::k_columns, "20 characters at least");
        for (const char c : text) {
            const auto byte = static_cast<unsigned char>(c);
            check(byte >= 0x20 && (byte < 0x7F || byte > 0x9F), "all of it prints");
        }
    }
    const ScrollBar& scroll = panel.scroll();
    check(!scroll.visible || (scroll.minimum <= scroll.value && scroll.value <= scroll.maximum),
          "the scroll bar stands between its ends");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const unsigned flags = input.number();
    ManualClock clock;
    ScriptedPort port(clock);
    RecordingOperator person;
    BusLink bus(port, clock);
    bus.open_bus_port("COM2:", 9600, 0, 8, 1);
    HeadServices services{bus, clock, person, {}};
    services.options.folder = services.options.shipped_folder = "/nowhere";
    services.options.negative_words =
        ((flags & 1U) != 0) ? NegativeWords::two_complement : NegativeWords::overflow;
    services.options.identity_patterns = {{"Rev (.*)", "R$1"}};
    std::size_t settings = 0;
    port.responder = [&](const std::string& frame) {
        settings += sent_frame(frame).setting() ? 1 : 0;
        return answer(frame, input);
    };

    const char* model = (flags & 2U) != 0 ? "C/KU/X" : (flags & 4U) != 0 ? "KU/DBS" : "KU";
    ControlHead head(services, {.slot = 1, .unit_address = 7, .number = "1234", .model = model});
    Amplifier amplifier(clock, 7, services.options.negative_words);
    head.machine_init(false);
    while (!input.empty() && head.life() != ControlHead::Life::failed) {
        const unsigned kind = input.number() % kinds;
        const std::size_t orders = head.orders().size();
        const std::size_t sent = settings;
        if (kind == reading)
            exchange(head, amplifier, bus, input.number());
        else
            act(head, kind, input.number());
        const bool key = kind >= soft_key && kind <= scroll;
        check(head.orders().size() <= orders + (key ? 1 : 0), "no setting without a key, none twice");
        check(settings <= sent + std::min<std::size_t>(orders, 1), "what is sent was ordered");
        check(head.requests().size() <= 16, "what is wanted has an end");
        check_panel(head.panel());
        clock.advance(std::chrono::milliseconds(100));
        port.written.clear();
    }
    return 0;
}
