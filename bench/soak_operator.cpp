#include "bench/soak_operator.h"

#include <algorithm>

#include "tests/support/hex_bytes.h"

namespace ampdesk::bench {

namespace {

constexpr std::string_view k_hard_keys[] = {"\x10\x12", "\x10\x13", "\x10\x16", "\x10\x17"};

}  // namespace

// What an operator who reads the legend expects of the key; nothing for one that sets nothing.
std::optional<std::string> Finger::asked_by_soft_key(const Panel& panel, int key) {
    const std::string legend = panel.legend(key);
    if (legend == "BAND")
        return "SBAND ";
    if (legend == "ANT")
        return "\x10\x1A";
    if (legend == "OK" && panel.line(1).starts_with("System Shutdown"))
        return "\x10\x15";
    if (legend == "SET" && panel.line(1).starts_with("Redundant switch"))
        return "\x10\x1B";
    return std::nullopt;
}

void Finger::press() {
    const auto heads = station_.open_heads();
    if (heads.empty())
        return;
    ++counts.presses;
    act(*heads[static_cast<std::size_t>(chance_.number(0, static_cast<int>(heads.size()) - 1))]);
}

void Finger::act(ControlHead& head) {
    const Panel& panel = head.panel();
    const int address = head.identity().unit_address;
    const ScrollBar scroll = panel.scroll();
    const std::size_t before = permits_.size();
    pressed_ = " under";
    for (int row = 1; row <= 4; ++row) pressed_ += " |" + panel.line(row);
    const auto permit = [&](std::string_view begins) {
        permits_.push_back({.address = address, .begins = std::string(begins)});
    };
    const int choice = chance_.number(0, 19);
    if (choice < 4 && scroll.visible) {
        const int value = chance_.number(scroll.minimum, scroll.maximum);
        if (panel.line(4).starts_with("ATTN") && panel.line(4).find("dB") != std::string::npos)
            permit(
                std::string{'\x10', '\x18', static_cast<char>(value % 256), static_cast<char>(value / 256)});
        head.move_scroll_bar(value);
    } else if (choice < 15) {
        const int key = choice % 5;
        if (const auto asked = asked_by_soft_key(panel, key))
            permit(*asked);
        if (choice < 10 || key == 4)
            head.press_key(static_cast<std::int16_t>(key));
        else
            head.click_lamp(static_cast<std::int16_t>(key));
    } else {
        const int key = choice % 4;
        permit(k_hard_keys[key]);
        head.press_hard_key(static_cast<std::int16_t>(key));
    }
    if (permits_.size() > before && permits_[before].used)
        account(head, permits_[before]);
}

// Compares what the station made of the reply with what the amplifier did.
void Finger::account(const ControlHead& head, const Permit& permit) {
    const std::deque<Said>& said = line_.said(permit.address);
    const auto reply = std::find_if(said.rbegin(), said.rend(), [&](const Said& one) {
        return one.speaker == Speaker::head && one.command.starts_with(permit.begins);
    });
    const bool carried_out =
        reply != said.rend() && reply->accepted && !line_.bus().find(permit.address)->line.silent;
    const bool believed = head.state().last_command_status == 0;
    counts.lost += carried_out && !believed ? 1 : 0;
    counts.misread += believed && !carried_out ? 1 : 0;
}

void Finger::watch(const Order& order) {
    if (!order.setting())
        return;
    ++counts.sent;
    const auto permit = std::find_if(permits_.rbegin(), permits_.rend(), [&](const Permit& p) {
        return p.address == order.address && order.command.starts_with(p.begins);
    });
    if (permit == permits_.rend()) {
        ++counts.unasked;
        if (counts.first_unasked.empty())
            counts.first_unasked = "amplifier " + std::to_string(order.address) + ", exchange " +
                                   std::to_string(line_.exchanges) + ": " + to_hex(order.command) + pressed_;
        return;
    }
    counts.twice += permit->used ? 1 : 0;
    permit->used = true;
}

}  // namespace ampdesk::bench
