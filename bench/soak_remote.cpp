#include "bench/soak_remote.h"

#include <algorithm>
#include <cmath>

#include "platform/numbers.h"
#include "tests/support/hex_bytes.h"

namespace ampdesk::bench {

using namespace std::string_view_literals;
using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

constexpr std::string_view k_marker = "\x06\x06";
constexpr std::string_view k_text_marker = "\x03\x03";
constexpr std::string_view k_port_marker = "\x02\x02";
constexpr std::string_view k_replied =
    "No response from amplifier, check 422/485 connection to the amplifier";
constexpr std::string_view k_malformed = "No message from amplifier, wrong command";
constexpr std::size_t k_remembered = 200;  // lines that may still be carried out
constexpr seconds k_answer_limit{300};     // a burst on a bad line waits for itself
constexpr std::string_view k_manual_hang_up = "manually hang up";

constexpr std::string_view k_reads[] = {"RDBAND"sv, "RDS/N"sv, "RDSTAT"sv, "*IDN?"sv, "NOSUCH"sv};
constexpr std::string_view k_settings[] = {"SBAND 0"sv, "SBAND 1"sv, "SBAND 2"sv};
constexpr std::string_view k_malformed_lines[] = {
    ">1 SBAND 2"sv,      ">100,SBAND 1"sv,
    ">-3,SBAND 1"sv,     ">"sv,
    ">2,\x10\x12"sv,     ">3x,SBAND 1"sv,
    ">4,\x10\x18\x40"sv, ">1,SBAND 2                                         "sv};

double address_in(const std::string& text, std::size_t start, std::size_t comma) {
    const std::string address = text.substr(start + 1, comma - start - 1);
    const bool number = address.find_first_not_of("0123456789. ") == std::string::npos &&
                        address.find_first_of("0123456789") != std::string::npos &&
                        std::count(address.begin(), address.end(), '.') < 2;
    return number ? std::nearbyint(lenient_number(address)) : -1;
}

}  // namespace

RemoteStation::RemoteStation(Station& station, BusLink& bus, SoakLine& line, FaultyLine& chance, Clock& clock,
                             std::string folder, Findings& findings)
    : station_(station),
      bus_line_(line),
      chance_(chance),
      clock_(clock),
      findings_(findings),
      port_(clock, chance),
      line_(&port_, clock),
      terminal_(line_, bus, std::move(folder)) {
    line_.open({});
    terminal_.line_changed();
    station_.add_guest(*this);
    terminal_.on_text = [this](std::string_view text) { breaking_ = breaking_ || text == k_manual_hang_up; };
}

// Address and command of the text are those of the order.
bool RemoteStation::Asked::orders(const LineRequest& order) const {
    const std::size_t start = text.find('>');
    const std::size_t comma = text.find(',', start);
    return !malformed() && order.text == (text.find(k_text_marker) != std::string::npos) &&
           address_in(text, start, comma) == order.address &&
           trimmed(std::string_view(text).substr(comma + 1)) == order.command;
}

bool RemoteStation::Asked::malformed() const {
    const std::size_t start = text.find('>');
    const std::size_t comma = text.find(',', start);
    if (start == std::string::npos || comma == std::string::npos)
        return true;
    const double address = address_in(text, start, comma);
    const std::string_view command = trimmed(std::string_view(text).substr(comma + 1));
    return address < 0 || address > 99 || text.size() > 50 || command.empty() ||
           !std::all_of(command.begin(), command.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
}

std::string RemoteStation::command_line() {
    const auto one_of = [this](const auto& table) {
        return std::string(
            table[static_cast<std::size_t>(chance_.number(0, static_cast<int>(std::size(table)) - 1))]);
    };
    if (chance_.one_in(15))
        return one_of(k_malformed_lines);
    const int address = chance_.one_in(15) ? chance_.number(5, 99) : chance_.number(1, 4);
    const std::string command = chance_.one_in(3) ? one_of(k_settings) : one_of(k_reads);
    const bool as_text = command[0] >= ' ' && chance_.one_in(2);
    return (as_text ? std::string(k_text_marker) : std::string()) + ">" + std::to_string(address) + "," +
           command;
}

// Alone it may come in pieces, as a modem hands them on. The first one holds the whole marker, which
// clears what stands before it; a line that the next one follows before it is whole would be lost so.
void RemoteStation::say_line(bool alone) {
    const std::string text = command_line();
    const std::string bytes = std::string(k_marker) + text + '\r';
    std::size_t end = k_marker.size();
    std::size_t begin = 0;
    while (begin < bytes.size()) {
        end = alone && chance_.one_in(3) ? static_cast<std::size_t>(chance_.number(static_cast<int>(end), 40))
                                         : bytes.size();
        say(std::string_view(bytes).substr(begin, end - begin), milliseconds(chance_.number(0, 40)));
        begin = end = std::min(end, bytes.size());
    }
    ++counts.lines;
    ++(Asked{text}.malformed() ? awaited_wrong_ : awaited_);
}

void RemoteStation::say_other() {
    std::string bytes;
    switch (chance_.number(0, 4)) {
        case 0:  // without the marker
            bytes = command_line() + '\r';
            break;
        case 1: {  // half a line
            bytes = std::string(k_marker) + command_line();
            bytes.resize(static_cast<std::size_t>(chance_.number(1, static_cast<int>(bytes.size()))));
            break;
        }
        case 2:  // the bus port is to be opened anew
            bytes = std::string(k_marker) + std::string(k_port_marker) + "RS422\r";
            break;
        default:
            for (int i = chance_.number(1, chance_.one_in(8) ? 200 : 30); i > 0; --i)
                bytes += static_cast<char>(chance_.number(0, 255));
            break;
    }
    say(bytes, milliseconds(chance_.number(0, 300)));
    ++counts.others;
}

void RemoteStation::say(std::string_view bytes, Duration pause) {
    remember_requests(bytes);
    port_.say(bytes, pause);
}

// Whatever the line breaks off or starts anew with, a request is what stands behind one of its markers.
void RemoteStation::remember_requests(std::string_view bytes) {
    for (const char byte : bytes) {
        if (byte != '\r') {
            said_since_line_end_ += byte;
            continue;
        }
        const std::string line = std::exchange(said_since_line_end_, {});
        for (std::size_t at = line.find(k_marker); at != std::string::npos; at = line.find(k_marker, at + 1))
            asked_.push_back({.text = line.substr(at + k_marker.size())});
    }
    while (asked_.size() > k_remembered) asked_.pop_front();
}

void RemoteStation::speak() {
    const int unanswered = std::exchange(awaited_, 0) + (std::exchange(awaited_wrong_, 0) > 0 ? 1 : 0);
    counts.unanswered += unanswered;
    if (unanswered > 0)
        findings_.tell("remote line", 0, "an answer", "none");
    if (chance_.one_in(4))
        say_other();
    else if (chance_.one_in(6))
        for (int i = chance_.number(2, 6); i > 0; --i) say_line(false);
    else
        say_line(true);
    next_call_ = clock_.now() + milliseconds(chance_.number(200, 10'000));
    give_up_ = clock_.now() + k_answer_limit;
}

void RemoteStation::turn() {
    const Instant now = clock_.now();
    if (now >= next_call_ && (awaited_ + awaited_wrong_ == 0 || now >= give_up_))
        speak();
    if (port_.input_due() && now >= *port_.input_due())
        line_.pump();
    terminal_.tick();
    hear();
    if (breaking_ && terminal_.modem().hanging_up())
        hung_up();
}

// After noise without a line end the terminal ends the call; what it was asked before is forgotten.
void RemoteStation::hung_up() {
    breaking_ = false;
    forgotten_ = under_way_;
    orders_.clear();
    ++counts.hang_ups;
    awaited_ = awaited_wrong_ = 0;
    expected_.clear();
    heard_.clear();
    port_.heard();
    next_call_ = clock_.now() + seconds(10);
}

std::optional<BusCommand> RemoteStation::next() {
    auto command = terminal_.next();
    under_way_ = command.has_value();
    if (under_way_)
        bus_line_.next_speaker = Speaker::remote;
    return command;
}

// Behind a text comes a question, which decides the answer.
void RemoteStation::ended(const BusReply& reply) {
    under_way_ = false;
    const bool forgotten = std::exchange(forgotten_, false);
    const bool answer_comes = !orders_.empty() && !orders_.back().text;
    if (answer_comes && !forgotten) {
        const bool setting_sent =
            std::any_of(orders_.begin(), orders_.end(), [](auto& o) { return o.setting(); });
        expected_.push_back(expected(orders_.back(), setting_sent, reply.failure == BusFailure::cut));
    }
    if (answer_comes || forgotten)
        orders_.clear();
    terminal_.ended(reply);
}

void RemoteStation::watch(const LineRequest& order) {
    const bool second = !orders_.empty() && orders_.back().text && !order.text &&
                        order.address == orders_.back().address && order.command == "RDSTAT";
    orders_.push_back(order);
    if (second)
        return;
    counts.settings += order.setting() ? 1 : 0;
    const auto asks = [&](const Asked& asked) { return asked.orders(order); };
    const auto fresh = std::find_if(asked_.begin(), asked_.end(),
                                    [&](const Asked& asked) { return !asked.used && asks(asked); });
    if (fresh != asked_.end()) {
        fresh->used = true;
        return;
    }
    if (std::any_of(asked_.begin(), asked_.end(), asks)) {
        ++counts.settings_twice;
        findings_.tell("remote line", order.address, "its command once", to_hex(order.command) + " again");
        return;
    }
    ++counts.unasked;
    findings_.tell("remote line", order.address, "nothing that no line asks for", to_hex(order.command));
}

// Asked at the end of the exchange that decides the answer.
RemoteStation::Expected RemoteStation::expected(const LineRequest& order, bool setting_sent, bool cut) {
    Expected result{.replied = bus_line_.may_have_answered(order.address, order.command),
                    .silence = true,
                    .what = "amplifier " + std::to_string(order.address) + ", exchange " +
                            std::to_string(bus_line_.exchanges) + ": " + to_hex(order.command)};
    for (const auto& amplifier : bus_line_.bus().amplifiers())
        result.another =
            result.another || (amplifier->model().address != order.address &&
                               bus_line_.may_have_answered(amplifier->model().address, order.command));
    const std::deque<Said>& said = bus_line_.said(order.address);
    if (said.empty() || said.back().number != bus_line_.exchanges)
        return result;
    result.silence = cut || !said.back().sound;
    result.lost = setting_sent && said.back().accepted;
    return result;
}

void RemoteStation::hear() {
    heard_ += port_.heard();
    for (const std::string_view modem : {"+++"sv, "ATH\r"sv})
        if (heard_.starts_with(modem))
            heard_.erase(0, modem.size());
    for (std::size_t end = heard_.find("\r\n"); end != std::string::npos; end = heard_.find("\r\n")) {
        judge(heard_.substr(0, end));
        heard_.erase(0, end + 2);
    }
}

void RemoteStation::judge(const std::string& answer) {
    ++counts.answers;
    if (answer == k_malformed) {
        awaited_wrong_ = 0;  // those that come within a second share an answer
        const auto line = std::find_if(asked_.begin(), asked_.end(),
                                       [](const Asked& asked) { return !asked.used && asked.malformed(); });
        if (line == asked_.end())
            return wrong("an answer to a sound line", answer);
        line->used = true;
        return;
    }
    awaited_ = std::max(0, awaited_ - 1);
    if (expected_.empty())
        return wrong("no answer to nothing", answer);
    const Expected due = expected_.front();
    expected_.pop_front();
    if (answer == k_replied) {
        if (!due.replied && due.another)
            ++counts.of_another;
        else if (!due.replied)
            wrong("an empty line, " + due.what + " got no reply", answer);
    } else if (!answer.empty()) {
        wrong("an answer that there is", answer);
    } else if (!due.silence) {
        wrong("word of the sound reply to " + due.what, "an empty line");
    } else {
        counts.settings_lost += due.lost ? 1 : 0;
    }
}

void RemoteStation::wrong(const std::string& expected, const std::string& seen) {
    ++counts.wrong;
    findings_.tell("remote answer", 0, expected, "\"" + seen + "\"");
}

Instant RemoteStation::next_turn() {
    Instant next = std::max(next_call_, awaited_ + awaited_wrong_ == 0 ? next_call_ : give_up_);
    if (const auto piece = port_.input_due())
        next = std::min(next, *piece);
    if (const auto tick = terminal_.next_tick())
        next = std::min(next, clock_.now() + *tick);
    return next;
}

}  // namespace ampdesk::bench
