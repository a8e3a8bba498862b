#include "bench/soak_operator.h"

#include <algorithm>

#include "tests/support/hex_bytes.h"

namespace ampdesk::bench {

using std::chrono::milliseconds;

namespace {

constexpr std::string_view k_hard_keys[] = {"\x10\x12", "\x10\x13", "\x10\x16", "\x10\x17"};

// An order that has left its head's queue goes out when the line is at rest, at most 300 ms later.
constexpr milliseconds k_goes_out_within{500};
constexpr milliseconds k_on_key_is_fresh{2300};

// A used permit tells a second sending from one that nobody asked for.
constexpr std::chrono::seconds k_remembered{10};

std::vector<std::string> commands_of(ControlHead& head) {
    std::vector<std::string> commands;
    for (const Order& order : head.orders()) commands.push_back(order.command);
    return commands;
}

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

void Finger::turn(bool locked) {
    forget_dropped();
    if (clock_.now() < next_)
        return;
    next_ = clock_.now() + milliseconds(chance_.one_in(5) ? chance_.number(0, 100) : chance_.number(0, 2500));
    if (locked)
        return;
    if (!intent_) {
        intent_ = look();
        next_ = clock_.now() + milliseconds(chance_.number(0, 400));
        return;
    }
    act(*intent_);
    intent_.reset();
}

Finger::Intent Finger::soft_key(const std::shared_ptr<ControlHead>& head, int key, bool by_lamp) {
    Intent intent{.head = head, .permit = {}, .act = {}};
    const auto index = static_cast<std::int16_t>(key);
    std::optional<std::string> did;
    if (key < 4)
        did = head->panel().key_name(key);
    if (const auto asked = key < 4 ? asked_by_soft_key(head->panel(), key) : std::nullopt)
        intent.permit = {.begins = *asked};
    intent.act = [head, index, did, by_lamp] {
        if (by_lamp)
            head->click_lamp(index, did);
        else
            head->press_key(index, did);
    };
    return intent;
}

Finger::Intent Finger::look() {
    const auto heads = station_.open_heads();
    const auto head =
        heads.at(static_cast<std::size_t>(chance_.number(0, static_cast<int>(heads.size()) - 1)));
    station_.set_active(head->identity().slot);
    const Panel& panel = head->panel();
    const ScrollBar scroll = panel.scroll();
    seen_.clear();
    for (int row = 1; row <= 4; ++row) seen_ += " |" + panel.line(row);
    const int choice = chance_.number(0, 19);
    if (choice < 4 && scroll.visible) {
        const int value = chance_.number(scroll.minimum, scroll.maximum);
        Intent intent{.head = head, .permit = {}, .act = {}};
        if (panel.line(4).starts_with("ATTN") && panel.line(4).find("dB") != std::string::npos)
            intent.permit = {.begins = std::string{'\x10', '\x18', static_cast<char>(value % 256),
                                                   static_cast<char>(value / 256)}};
        intent.act = [head, value, scroll] { head->move_scroll_bar(value, scroll); };
        return intent;
    }
    if (choice < 15)
        return soft_key(head, choice % 5, choice >= 10 && choice % 5 != 4);
    const int key = choice % 4;
    return {.head = head,
            .permit = Permit{.begins = std::string(k_hard_keys[key]), .on_key = key % 2 == 0},
            .act = [head, key] { head->press_hard_key(static_cast<std::int16_t>(key)); }};
}

void Finger::act(const Intent& intent) {
    ++counts.presses;
    const int address = intent.head->identity().unit_address;
    const std::vector<std::string> before = commands_of(*intent.head);
    intent.act();
    if (intent.permit) {
        permits_.push_back(*intent.permit);
        permits_.back().address = address;
        permits_.back().pressed = clock_.now();
    }
    forget_replaced(address, before, commands_of(*intent.head));
}

// What waited before the press and does not after it has been replaced, and must not go out any more.
void Finger::forget_replaced(int address, const std::vector<std::string>& before,
                             const std::vector<std::string>& after) {
    for (std::size_t i = 0; i < before.size(); ++i) {
        if (i < after.size() && after[i] == before[i])
            continue;
        const auto permit = std::find_if(permits_.rbegin(), permits_.rend(), [&](const Permit& p) {
            return p.address == address && !p.used && before[i].starts_with(p.begins);
        });
        if (permit != permits_.rend())
            permits_.erase(std::next(permit).base());
    }
}

// A press that has made no order, or whose order was dropped, allows nothing any more.
void Finger::forget_dropped() {
    const Instant now = clock_.now();
    for (const auto& head : station_.open_heads()) {
        std::vector<std::string> waiting = commands_of(*head);
        for (auto permit = permits_.rbegin(); permit != permits_.rend(); ++permit) {
            if (permit->address != head->identity().unit_address || permit->used)
                continue;
            const auto order =
                std::find_if(waiting.rbegin(), waiting.rend(),
                             [&](const std::string& command) { return command.starts_with(permit->begins); });
            if (order == waiting.rend()) {
                permit->left = permit->left.value_or(now);
            } else {
                waiting.erase(std::next(order).base());
                permit->left.reset();
            }
        }
    }
    std::erase_if(permits_, [&](const Permit& p) {
        return p.left && now - *p.left > (p.used ? Duration(k_remembered) : k_goes_out_within);
    });
}

// Compares what the station made of the reply with what the amplifier did.
void Finger::account(const Setting& setting) {
    const std::deque<Said>& said = line_.said(setting.unit_address);
    const bool carried_out = !said.empty() && said.back().number == line_.exchanges &&
                             said.back().command == setting.command && said.back().accepted;
    const bool believed = setting.outcome == Setting::Outcome::taken;
    counts.lost += carried_out && !believed ? 1 : 0;
    counts.misread += believed && !carried_out ? 1 : 0;
}

void Finger::watch(const LineRequest& order) {
    if (!order.setting())
        return;
    ++counts.sent;
    const auto allows = [&](const Permit& p) {
        return p.address == order.address && order.command.starts_with(p.begins);
    };
    const auto permit =
        std::find_if(permits_.begin(), permits_.end(), [&](const Permit& p) { return !p.used && allows(p); });
    if (permit != permits_.end()) {
        counts.stale += permit->on_key && clock_.now() - permit->pressed > k_on_key_is_fresh ? 1 : 0;
        permit->used = true;
        permit->left = clock_.now();
        return;
    }
    if (std::any_of(permits_.begin(), permits_.end(), allows)) {
        ++counts.twice;
        return;
    }
    ++counts.unasked;
    if (counts.first_unasked.empty())
        counts.first_unasked = "amplifier " + std::to_string(order.address) + ", exchange " +
                               std::to_string(line_.exchanges) + ": " + to_hex(order.command) + seen_;
}

}  // namespace ampdesk::bench
