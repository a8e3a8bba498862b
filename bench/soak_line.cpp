#include "bench/soak_line.h"

#include <algorithm>
#include <utility>

#include "amplifier/commands.h"
#include "buslink/bus_link.h"
#include "buslink/wire/binary_frame.h"
#include "buslink/wire/control_characters.h"
#include "buslink/wire/text_frame.h"

namespace ampdesk::bench {

using std::chrono::milliseconds;

namespace {

constexpr std::chrono::seconds k_memory{60};
constexpr std::chrono::minutes k_log{3};
constexpr std::chrono::seconds k_late{5};     // after that nothing of a reply is under way any more
constexpr milliseconds k_text_limit{394};     // of the station at 9600 baud
constexpr milliseconds k_never_cut{95};       // a wait is cut for an order after 100 ms at the earliest
constexpr milliseconds k_longest_loss{1300};  // a reply's limit, then the wait for a quiet line

// With such a fault it is no reply of its own any more.
bool comes_through(LineFault fault) {
    using enum LineFault;
    return fault != silence && fault != bad_crc && fault != truncated && fault != wrong_echo;
}

// What the station has to find the reply behind. A text has nothing that tells it from what stands before it.
bool is_skipped(Stray stray, bool text) {
    const bool frame =
        stray == Stray::echo_part || stray == Stray::other_command || stray == Stray::other_address;
    return !text || !frame;
}

}  // namespace

PortResult SoakLine::open(const PortSettings&) {
    under_way_.clear();
    open_ = true;
    return {};
}

PortError SoakLine::write(std::string_view bytes, Instant) {
    if (!open_)
        return PortError::failed;
    note_band();
    const LineRequest order{sent_frame(bytes), std::exchange(next_speaker, Speaker::head)};
    ++exchanges;
    if (on_request)
        on_request(order);
    const Duration lost = log_.empty() ? Duration{} : log_.back().lost_until(clock_.now());
    log_.push_back({.at = clock_.now(), .order = order, .lost_before = lost});
    while (log_.front().at < clock_.now() - k_log) log_.pop_front();
    first_in_ = last_in_ = Instant{};
    carry(bytes, order);
    return PortError::none;  // it is out
}

// The amplifier hears the request at its first byte; what comes back takes its time.
void SoakLine::carry(std::string_view bytes, const LineRequest& order) {
    const Stray stray = faults_.draw_stray();
    const RequestFault fault = faults_.draw_request();
    const bool alone = under_way_.empty();
    const std::string heard = faults_.heard(fault, bytes);
    bus_.receive((stray == Stray::garbage ? faults_.random_bytes(1, 12) : std::string()) + heard);
    const std::string reply = bus_.take_due();
    log_.back().silence = reply.empty() && alone && (stray == Stray::none || stray == Stray::garbage);
    Instant end = carry_stray(stray, bytes, order);
    if (!reply.empty()) {
        // A text has no CRC: the amplifier may have heard another request than was sent.
        const SentFrame understood = fault == RequestFault::garbled ? sent_frame(heard) : SentFrame(order);
        const bool clear = alone && fault == RequestFault::none && is_skipped(stray, order.text);
        end = carry_reply(reply, {understood, order.speaker}, clear, end);
    } else if (!order.text) {
        passed_over_[order.address] = 0;
    }
    if (stray == Stray::noise)
        for (Instant at = end; const char byte : faults_.random_bytes(1, 30))
            put({&byte, 1}, at += milliseconds(faults_.number(1, 40)));
}

// What comes in before the reply; when the reply may begin.
Instant SoakLine::carry_stray(Stray stray, std::string_view bytes, const LineRequest& order) {
    if (stray == Stray::echo)
        put(bytes, clock_.now());
    if (stray == Stray::echo_part)
        put(bytes.substr(0, static_cast<std::size_t>(faults_.number(1, static_cast<int>(bytes.size()) - 1))),
            clock_.now());
    const Instant end = clock_.now() + static_cast<int>(bytes.size()) * faults_.byte_time();
    const std::string foreign = stray_reply(stray, order);
    return foreign.empty() ? end : put(foreign, end);
}

// `understood`: the request that the amplifier answers. `clear`: nothing else has spoilt the exchange. The
// end of the reply.
Instant SoakLine::carry_reply(const std::string& reply, const LineRequest& understood, bool clear,
                              Instant from) {
    const LineRequest& order = log_.back().order;
    const LineFault fault = faults_.draw();
    const FaultyLine::Frame frame{
        .bytes = reply,
        .echo_at = order.text ? std::size_t{1} : std::size_t{3},
        .crc = order.text ? nullptr : &crc_,
        .deadline = order.text ? Duration(k_text_limit) : Duration(BusLink::k_reply_limit)};
    Instant end = from;
    for (const Arrival& arrival : faults_.arrivals(fault, frame)) {
        const bool late = fault == LineFault::late;  // counted from the request
        end = (late ? clock_.now() : from) + arrival.after;
        under_way_.emplace(end, arrival.byte);
    }
    // The end of a request that was cut off may make the next one whole, and another one.
    const bool own = order.text || reply.compare(3, order.command.size(), order.command) == 0;
    const bool unspoilt = fault == LineFault::none || (fault == LineFault::noise && !order.text);
    const bool whole = clear && own && unspoilt && end - clock_.now() < k_never_cut;
    const bool looked_at = !order.text && is_known && is_known(order.address);
    const bool fits = !looked_at || sends_its_address(order.address);
    if (!order.text)
        passed_over_[order.address] = whole && !fits ? passed_over_[order.address] + 1 : 0;
    log_.back().sound = whole && fits;
    log_.back().accepted = order.text || reply[0] == k_ack;
    log_.back().answered = comes_through(fault) && fits && own;
    if (own)
        remember(understood, reply, fault, end);
    return end;
}

// One byte after the other; the end of the last one.
Instant SoakLine::put(std::string_view bytes, Instant from) {
    for (const char byte : bytes) under_way_.emplace(from += faults_.byte_time(), byte);
    return from;
}

bool SoakLine::sends_its_address(int address) const {
    const demo::SimAmplifier* amplifier = bus_.find(address);
    return amplifier == nullptr || !amplifier->line.wrong_address;
}

// What another amplifier said lately, once more. To the same command only where the station can know it.
std::string SoakLine::stray_reply(Stray stray, const LineRequest& order) {
    if (stray != Stray::other_command && stray != Stray::other_address)
        return {};
    const bool same = stray == Stray::other_address;
    const bool known = order.text || (is_known && is_known(order.address));
    if (same && !known)
        return {};
    const std::size_t first = static_cast<std::size_t>(faults_.number(0, 3));
    for (std::size_t i = 0; i < bus_.amplifiers().size(); ++i) {
        const auto& amplifier = bus_.amplifiers()[(first + i) % bus_.amplifiers().size()];
        const int other = amplifier->model().address;
        const std::deque<Said>& all = said_[other];
        const auto fits = [&](const Said& one) {
            const bool text = one.command.starts_with("RD");
            const bool alike = one.command.substr(0, 2) == order.command.substr(0, 2);
            return one.accepted && other != order.address &&
                   (same ? one.command == order.command && text == order.text : !text && !alike);
        };
        const auto newest = std::find_if(all.rbegin(), all.rend(), fits);
        if (newest == all.rend())
            continue;
        if (!order.text || !same)
            return build_reply_frame(crc_, k_ack, static_cast<std::uint8_t>(other),
                                     newest->command + newest->payload);
        const std::string text = k_stx + newest->payload + k_etx;
        return text + text_checksum(text) + k_cr;
    }
    return {};
}

// The last digit of the first line that has come in since RDBAND went out.
void SoakLine::note_band() {
    const std::string came = std::exchange(came_in_, {});
    if (log_.empty() || log_.back().order.command != k_band_word ||
        log_.back().order.speaker != Speaker::head)
        return;
    constexpr std::size_t k_kept = 12;
    std::string& bands = bands_heard_[log_.back().order.address];
    for (std::size_t etx = came.find(k_etx); etx != std::string::npos; etx = came.find(k_etx, etx + 1))
        if (etx > 0)
            bands += came[etx - 1];
    bands.erase(0, bands.size() - std::min(bands.size(), k_kept));
}

// One garbled frame of 65 536 has a good CRC. What it says counts as said: nobody can tell.
void SoakLine::look_for_forgery() {
    if (log_.empty() || log_.back().sound || log_.back().order.text || forged_in_ == exchanges)
        return;
    const LineRequest& order = log_.back().order;
    const bool any_byte = !is_known(order.address);
    for (std::size_t at = came_in_.find(k_ack); at != std::string::npos; at = came_in_.find(k_ack, at + 1)) {
        const std::string_view rest = std::string_view(came_in_).substr(at);
        const std::size_t length = rest.size() < 3 ? 0 : static_cast<unsigned char>(rest[2]);
        if (length < order.command.size() || rest.size() < length + 5 ||
            !rest.substr(3).starts_with(order.command) ||
            (!any_byte && static_cast<unsigned char>(rest[1]) != order.address) ||
            crc_.c_chkCRC(rest.substr(0, length + 5)) != 0)
            continue;
        const std::string payload(rest.substr(3 + order.command.size(), length - order.command.size()));
        const bool true_one = std::any_of(said_.begin(), said_.end(), [&](const auto& one) {
            return std::any_of(one.second.begin(), one.second.end(), [&](const Said& said) {
                return said.command == order.command && said.payload == payload;
            });
        });
        if (true_one)
            continue;
        ++forgeries;
        forged_in_ = exchanges;
        said_[order.address].push_back({.at = clock_.now(),
                                        .command = order.command,
                                        .accepted = true,
                                        .payload = payload,
                                        .heard = true,
                                        .number = exchanges,
                                        .speaker = order.speaker});
        return;
    }
}

// Behind a text that nobody answered, whose wait has a fixed length, 50 ms of a quiet line; 300 at most,
// while something comes in.
bool SoakLine::is_too_soon() const {
    constexpr milliseconds k_quiet{45};
    constexpr milliseconds k_at_most{250};
    if (log_.empty() || !log_.back().asked_by_head() || !log_.back().order.text)
        return false;
    const Instant waited = log_.back().at + k_text_limit;
    if (clock_.now() < waited || (first_in_ != Instant{} && first_in_ <= waited))
        return false;
    return clock_.now() < std::min(std::max(waited, last_in_) + k_quiet, waited + k_at_most);
}

bool SoakLine::may_mistake_band(int address, char band) const {
    constexpr int k_last = 4;
    const auto heard = bands_heard_.find(address);
    if (heard != bands_heard_.end() && std::count(heard->second.begin(), heard->second.end(), band) > 1)
        return true;
    int asked = 0;
    Instant since = clock_.now();
    for (auto one = log_.rbegin(); one != log_.rend() && asked < k_last; ++one)
        if (one->reads_band_of(address)) {
            ++asked;
            since = one->at;
        }
    return spoilt_bands(address, since) > 1;
}

int SoakLine::spoilt_bands(int address, Instant since) const {
    return static_cast<int>(std::count_if(log_.begin(), log_.end(), [&](const Exchange& one) {
        return one.reads_band_of(address) && !one.sound && one.at >= since;
    }));
}

int SoakLine::passed_over(int address) const {
    const auto found = passed_over_.find(address);
    return found == passed_over_.end() ? 0 : found->second;
}

bool Exchange::reads_band_of(int address) const {
    return order.address == address && asked_by_head() && order.command == k_band_word;
}

Duration Exchange::lost_until(Instant instant) const {
    return lost_before + (sound ? Duration{} : std::min<Duration>(instant - at, k_longest_loss));
}

Duration SoakLine::lost(Instant since) const {
    const auto next = std::upper_bound(log_.begin(), log_.end(), since,
                                       [](Instant instant, const Exchange& one) { return instant < one.at; });
    if (log_.empty())
        return {};
    const Duration before = next == log_.begin() ? next->lost_before : std::prev(next)->lost_until(since);
    return log_.back().lost_until(clock_.now()) - before;
}

Duration SoakLine::lost_or_failing(Instant since, int address) const {
    Duration lost{};
    bool failing = false;
    for (auto one = log_.begin(); one != log_.end(); ++one) {
        if (one->order.address == address && one->order.read())
            failing = !one->sound;
        const auto next = std::next(one);
        const Instant end = next == log_.end() ? clock_.now() : next->at;
        const Instant loss = failing ? end : std::min<Instant>(end, one->at + k_longest_loss);
        if ((failing || !one->sound) && loss > since)
            lost += loss - std::max(one->at, since);
    }
    return lost;
}

void SoakLine::remember(const LineRequest& order, const std::string& reply, LineFault fault,
                        Instant arrived) {
    const std::size_t front = order.text ? 1 : 3 + order.command.size();
    const std::size_t end = order.text ? reply.find(k_etx) : reply.size() - 2;
    std::deque<Said>& all = said_[order.address];
    all.push_back({.at = clock_.now(),
                   .command = order.command,
                   .accepted = order.text || reply[0] == k_ack,
                   .payload = reply.substr(front, end - front),
                   .heard = comes_through(fault),
                   .sound = log_.back().sound,
                   .arrived = arrived,
                   .number = exchanges,
                   .speaker = order.speaker});
    while (all.front().at < clock_.now() - k_memory) all.pop_front();
    if (order.speaker == Speaker::head && comes_through(fault))
        last_answer_[order.address] = clock_.now();
}

Instant SoakLine::last_answer(int address) const {
    const auto at = last_answer_.find(address);
    return at == last_answer_.end() ? Instant{} : at->second;
}

bool SoakLine::may_have_answered(int address, std::string_view command) {
    const std::deque<Said>& all = said_[address];
    return std::any_of(all.rbegin(), all.rend(), [&](const Said& one) {
        return one.heard && clock_.now() - one.at <= k_late && one.command.starts_with(command.substr(0, 2));
    });
}

std::string SoakLine::read_waiting() {
    const auto end = under_way_.upper_bound(clock_.now());
    std::string bytes;
    for (auto it = under_way_.begin(); it != end; ++it) bytes += it->second;
    under_way_.erase(under_way_.begin(), end);
    came_in_ += bytes;
    if (!bytes.empty()) {
        last_in_ = clock_.now();
        first_in_ = first_in_ == Instant{} ? last_in_ : first_in_;
    }
    look_for_forgery();
    return bytes;
}

std::optional<Instant> SoakLine::input_due() const {
    return under_way_.empty() ? std::nullopt : std::optional(under_way_.begin()->first);
}

WaitResult SoakLine::wait_readable(Instant deadline) {
    if (!open_)
        return WaitResult::lost;
    const bool comes = !under_way_.empty() && under_way_.begin()->first <= std::max(deadline, clock_.now());
    clock_.sleep_until(comes ? under_way_.begin()->first : deadline);
    return comes ? WaitResult::data : WaitResult::timed_out;
}

}  // namespace ampdesk::bench
