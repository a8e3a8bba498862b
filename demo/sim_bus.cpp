#include "demo/sim_bus.h"

#include <algorithm>

#include "buslink/wire/binary_frame.h"
#include "buslink/wire/control_characters.h"
#include "buslink/wire/text_frame.h"

namespace ampdesk::demo {

SimBus::SimBus(const Clock& clock, Duration byte_time, CrcParameters crc)
    : clock_(clock), byte_time_(byte_time), crc_(crc), finder_(crc_), line_free_(clock.now()) {}

SimAmplifier& SimBus::add(const SimModel& model) {
    return *amplifiers_.emplace_back(std::make_unique<SimAmplifier>(model, clock_));
}

void SimBus::pace_commands(Duration turn_around) {
    command_byte_time_ = byte_time_;
    turn_around_ = turn_around;
}

SimAmplifier* SimBus::find(int address) const {
    const auto found = std::find_if(amplifiers_.begin(), amplifiers_.end(), [&](const auto& amplifier) {
        return amplifier->model().address == address;
    });
    return found == amplifiers_.end() ? nullptr : found->get();
}

void SimBus::receive(std::string_view bytes) {
    heard_ = clock_.now() + command_byte_time_ * bytes.size() + turn_around_;
    for (const Request& request : finder_.feed(bytes)) {
        SimAmplifier* amplifier = find(request.address);
        if (amplifier != nullptr && !amplifier->line.silent)
            carry_out(*amplifier, request);
    }
}

void SimBus::carry_out(SimAmplifier& amplifier, const Request& request) {
    LineFaults& faults = amplifier.line;
    std::string bytes;
    if (request.text) {
        bytes = k_stx + amplifier.answer_text(request.command) + k_etx;
        bytes += text_checksum(bytes) + k_cr;
    } else {
        const SimAmplifier::Reply reply = amplifier.answer(request.command);
        const auto address = static_cast<std::uint8_t>(amplifier.model().address);
        bytes = build_reply_frame(crc_, reply.accepted ? k_ack : k_nak,
                                  faults.wrong_address.value_or(address), reply.data);
        if (faults.bad_crc_replies > 0) {
            --faults.bad_crc_replies;
            bytes.back() = static_cast<char>(bytes.back() ^ 0x55);
        }
    }
    if (faults.noisy_replies > 0) {
        --faults.noisy_replies;
        bytes.insert(0, stray_bytes(request.text));
    }
    send(faults, bytes);
}

// One to six bytes. Before a binary reply they may be anything, the start of a false reply included;
// a text reply has no way to tell a stray ETX or CR from its own, so there they are high ones.
std::string SimBus::stray_bytes(bool text) {
    std::string bytes;
    const std::size_t count = 1 + (random_() >> 8U) % 6;
    while (bytes.size() < count) bytes += static_cast<char>((random_() >> 8U) | (text ? 0x80U : 0U));
    return bytes;
}

void SimBus::send(LineFaults& faults, const std::string& bytes) {
    const bool held_back = faults.delay.count() > 0 || faults.late.count() > 0;
    Instant at = heard_ + faults.delay + faults.late;
    faults.late = {};
    const Duration gap = std::max<Duration>(faults.drip, byte_time_);
    if (gap == Duration{}) {
        pending_.emplace(at, bytes);
        return;
    }
    // Replies that nothing holds back follow one another; a late one falls into whatever goes out then.
    if (!held_back)
        at = std::max(at, line_free_);
    for (const char byte : bytes) {
        at += gap;
        pending_.emplace(at, std::string(1, byte));
    }
    if (!held_back)
        line_free_ = at;
}

std::optional<Instant> SimBus::next_due() const {
    if (pending_.empty())
        return std::nullopt;
    return pending_.begin()->first;
}

std::string SimBus::take_due() {
    std::string bytes;
    const auto end = pending_.upper_bound(clock_.now());
    for (auto it = pending_.begin(); it != end; ++it) bytes += it->second;
    pending_.erase(pending_.begin(), end);
    return bytes;
}

}  // namespace ampdesk::demo
