#include "bench/soak_operator.h"

#include <algorithm>

#include "bench/soak_claims.h"
#include "tests/support/hex_bytes.h"

namespace ampdesk::bench {

using std::chrono::milliseconds;

namespace {

constexpr std::string_view k_hard_keys[] = {"\x10\x12", "\x10\x13", "\x10\x16", "\x10\x17"};
constexpr const char* k_hard_key_names[] = {"HV On", "HV Off", "RF On", "RF Off"};

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
    if (legend == "OK" && shows_shutdown(panel))
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
    if (burst_ > 0 || chance_.one_in(100)) {  // hard keys here and there, in haste
        burst_ = burst_ > 0 ? burst_ - 1 : chance_.number(5, 15);
        intent_.reset();
        next_ = clock_.now() + milliseconds(chance_.number(0, 100));
        const auto heads = station_.open_heads();
        const auto any = static_cast<std::size_t>(chance_.number(0, static_cast<int>(heads.size()) - 1));
        return act(hard_key(heads.at(any), chance_.number(0, 3)));
    }
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
    if (const auto asked = key < 4 ? asked_by_soft_key(head->panel(), key) : std::nullopt) {
        intent.permit = {.begins = *asked, .key = "soft key"};
        intent.soft_key = key;
        intent.did = did;
    }
    intent.act = [head, index, did, by_lamp] {
        if (by_lamp)
            head->click_lamp(index, did);
        else
            head->press_key(index, did);
    };
    return intent;
}

// Whose window comes to the front, or stays there.
std::shared_ptr<ControlHead> Finger::somebody() {
    const auto heads = station_.open_heads();
    if (chance_.one_in(5))
        front_ = static_cast<std::size_t>(chance_.number(0, static_cast<int>(heads.size()) - 1));
    auto head = heads.at(front_);
    station_.set_active(head->identity().slot);
    active_ = head->identity().unit_address;
    return head;
}

Finger::Intent Finger::hard_key(const std::shared_ptr<ControlHead>& head, int key) {
    return {.head = head,
            .permit = Permit{.begins = std::string(k_hard_keys[key]),
                             .on_key = key % 2 == 0,
                             .key = k_hard_key_names[key]},
            .act = [head, key] { head->press_hard_key(static_cast<std::int16_t>(key)); }};
}

Finger::Intent Finger::look() {
    const auto head = somebody();
    const Panel& panel = head->panel();
    const ScrollBar scroll = panel.scroll();
    seen_.clear();
    for (int row = 1; row <= 4; ++row) seen_ += " / " + panel.line(row);
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
    return hard_key(head, choice % 4);
}

void Finger::act(const Intent& intent) {
    ++counts.presses;
    const int address = intent.head->identity().unit_address;
    const std::vector<std::string> before = commands_of(*intent.head);
    const bool must = intent.permit && must_come_of(intent);
    if (on_act)
        on_act(address);
    intent.act();
    if (intent.permit) {
        Permit& permit = permits_.emplace_back(*intent.permit);
        permit.address = address;
        permit.pressed = clock_.now();
        permit.must = must;
        permit.settings_before = settings_out_;
    }
    forget_replaced(address, before, commands_of(*intent.head));
}

// Nothing has changed since the operator looked, and the panel takes keys. A second OK goes nowhere before
// the first one has been answered; the page of the switch moves with the status.
bool Finger::must_come_of(const Intent& intent) const {
    const Panel& panel = intent.head->panel();
    const bool shut_down = shows_shutdown(panel);
    if (intent.soft_key < 0)
        return *intent.permit->key != 0 && !shut_down;
    const bool covered_soon = !shut_down && in_shutdown(intent.head->state());
    if (shows_error(panel) || covered_soon || intent.permit->begins == "\x10\x1B" ||
        panel.key_name(intent.soft_key) != intent.did ||
        asked_by_soft_key(panel, intent.soft_key) != intent.permit->begins)
        return false;
    return !shut_down || std::none_of(permits_.begin(), permits_.end(), [&](const Permit& p) {
        return p.address == intent.head->identity().unit_address && p.begins == intent.permit->begins;
    });
}

void Finger::lose(const Permit& permit, const std::string& what) {
    ++counts.unsent;
    findings_.tell("key", permit.address, std::string(permit.key) + " to go out", what);
}

// "JEX Amplifier 1001: HV On not sent, it has waited too long": the oldest one.
void Finger::read(std::string_view status) {
    if (status.find("waited too long") == std::string_view::npos)
        return;
    for (auto permit = permits_.begin(); permit != permits_.end(); ++permit) {
        const bool named =
            status.find(std::string(": ") + permit->key + " not sent") != std::string_view::npos;
        const auto heads = station_.open_heads();
        const bool own = std::any_of(heads.begin(), heads.end(), [&](const auto& head) {
            return head->identity().unit_address == permit->address &&
                   status.starts_with(head->caption() + ":");
        });
        if (permit->used || !permit->on_key || !named || !own)
            continue;
        ++counts.dropped;
        permits_.erase(permit);
        return;
    }
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
        for (const bool must : {true, false})
            for (auto permit = permits_.rbegin(); permit != permits_.rend(); ++permit) {
                if (permit->address != head->identity().unit_address || permit->used || permit->must != must)
                    continue;
                const auto order = std::find_if(
                    waiting.rbegin(), waiting.rend(),
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
        const bool gone = p.left && now - *p.left > (p.used ? Duration(k_remembered) : k_goes_out_within);
        if (gone && p.must && !p.used)
            lose(p, "nothing, and no word of it");
        return gone;
    });
}

// Compares what the station made of the reply with what the amplifier did.
void Finger::account(const Setting& setting) {
    const std::deque<Said>& said = line_.said(setting.unit_address);
    const bool carried_out = !said.empty() && said.back().number == line_.exchanges &&
                             said.back().command == setting.command && said.back().accepted;
    const bool believed = setting.outcome == Setting::Outcome::taken;
    counts.lost += carried_out && !believed ? 1 : 0;
    // The late answer to the same setting of before is as good.
    constexpr std::chrono::seconds k_late{5};
    const bool lately = std::any_of(said.begin(), said.end(), [&](const Said& one) {
        return one.accepted && one.command == setting.command && clock_.now() - one.at <= k_late;
    });
    if (believed && !carried_out && !lately) {
        if (!bus_.looks_at_reply_address(setting.unit_address))
            return void(++counts.misread_early);
        ++counts.misread;
        findings_.tell("setting", setting.unit_address, "not to count as carried out",
                       to_hex(setting.command));
    }
    const bool answered = believed || setting.outcome == Setting::Outcome::refused;
    if (!answered && !said.empty() && said.back().number == line_.exchanges && said.back().sound) {
        ++counts.deaf;
        findings_.tell("setting", setting.unit_address, "its sound reply to count", to_hex(setting.command));
    }
}

// Its last exchange with its head came to something.
bool Finger::has_answered(int address) const {
    const auto last = std::find_if(line_.log().rbegin(), line_.log().rend(), [&](const Exchange& one) {
        return one.order.address == address && one.order.speaker == Speaker::head;
    });
    return last != line_.log().rend() && last->sound;
}

// Those that went out before it were waited for, for it, no longer than that.
void Finger::off_key_went(const Permit& permit, Duration waited) {
    constexpr milliseconds k_each{650};
    const long before = settings_out_ - 1 - permit.settings_before;
    waited = std::max<Duration>(waited - before * k_each, {});
    findings_.judge("key", permit.address, waited, k_off_key_limit, counts.off_key,
                    std::string(permit.key) + " to go out", "sent");
}

void Finger::watch(const LineRequest& order) {
    if (!order.setting())
        return;
    ++counts.sent;
    const auto allows = [&](const Permit& p) {
        return p.address == order.address && order.command.starts_with(p.begins);
    };
    auto permit = std::find_if(permits_.begin(), permits_.end(),
                               [&](const Permit& p) { return !p.used && p.must && allows(p); });
    if (permit == permits_.end())
        permit = std::find_if(permits_.begin(), permits_.end(),
                              [&](const Permit& p) { return !p.used && allows(p); });
    ++settings_out_;
    if (permit != permits_.end()) {
        const Duration waited = clock_.now() - permit->pressed;
        if (permit->on_key && waited > k_on_key_is_fresh) {
            ++counts.stale;
            findings_.tell("key", order.address, std::string(permit->key) + " not to go out any more",
                           "sent after " + in_seconds(waited));
        }
        if (permit->must && !permit->on_key && *permit->key != 's')
            off_key_went(*permit, waited);
        // Who has not answered his last one comes last.
        const auto earlier = std::find_if(permits_.begin(), permit, [&](const Permit& p) {
            return p.must && !p.used && (p.address == order.address || has_answered(p.address));
        });
        if (permit->must && earlier != permit) {
            ++counts.overtaken;
            findings_.tell("key", order.address, std::string(earlier->key) + " first, as it was pressed",
                           std::string(permit->key) + " first");
        }
        permit->used = true;
        permit->left = clock_.now();
        return;
    }
    if (std::any_of(permits_.begin(), permits_.end(), allows)) {
        ++counts.twice;
        findings_.tell("setting", order.address, "once", to_hex(order.command) + " again");
        return;
    }
    ++counts.unasked;
    findings_.tell("setting", order.address, "nothing that no key asks for", to_hex(order.command) + seen_);
}

}  // namespace ampdesk::bench
