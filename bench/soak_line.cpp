#include "bench/soak_line.h"

#include <algorithm>
#include <utility>

#include "buslink/bus_link.h"
#include "buslink/wire/control_characters.h"

namespace ampdesk::bench {

namespace {

constexpr std::chrono::seconds k_memory{30};
constexpr std::chrono::seconds k_late{5};               // after that nothing of a reply is under way any more
constexpr std::chrono::milliseconds k_text_limit{394};  // of the station at 9600 baud

// With such a fault it is no reply of its own any more.
bool comes_through(LineFault fault) {
    using enum LineFault;
    return fault != silence && fault != bad_crc && fault != truncated && fault != wrong_echo;
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
    const LineRequest order{sent_frame(bytes), std::exchange(next_speaker, Speaker::head)};
    ++exchanges;
    if (on_request)
        on_request(order);
    bus_.receive(bytes);
    const std::string reply = bus_.take_due();
    if (reply.empty())
        return PortError::none;  // it is out
    const LineFault fault = faults_.draw();
    remember(order, reply, fault);
    const FaultyLine::Frame frame{
        .bytes = reply,
        .echo_at = order.text ? std::size_t{1} : std::size_t{3},
        .crc = order.text ? nullptr : &crc_,
        .deadline = order.text ? Duration(k_text_limit) : Duration(BusLink::k_reply_limit),
        .request_size = bytes.size()};
    for (const Arrival& arrival : faults_.arrivals(fault, frame))
        under_way_.emplace(clock_.now() + arrival.after, arrival.byte);
    return PortError::none;
}

void SoakLine::remember(const LineRequest& order, const std::string& reply, LineFault fault) {
    const std::size_t front = order.text ? 1 : 3 + order.command.size();
    const std::size_t end = order.text ? reply.find(k_etx) : reply.size() - 2;
    std::deque<Said>& all = said_[order.address];
    all.push_back({.at = clock_.now(),
                   .command = order.command,
                   .accepted = order.text || reply[0] == k_ack,
                   .payload = reply.substr(front, end - front),
                   .fault = fault,
                   .alone = under_way_.empty(),
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
        return comes_through(one.fault) && clock_.now() - one.at <= k_late &&
               one.command.starts_with(command.substr(0, 2));
    });
}

std::string SoakLine::read_waiting() {
    const auto end = under_way_.upper_bound(clock_.now());
    std::string bytes;
    for (auto it = under_way_.begin(); it != end; ++it) bytes += it->second;
    under_way_.erase(under_way_.begin(), end);
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
