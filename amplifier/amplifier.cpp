#include "amplifier/amplifier.h"

#include <algorithm>
#include <chrono>

#include "amplifier/commands.h"
#include "buslink/wire/control_characters.h"
#include "platform/numbers.h"

namespace ampdesk {

namespace {

using std::chrono::milliseconds;

constexpr std::size_t k_header = 3;  // ACK or NAK, second byte, length
constexpr std::size_t k_check = 2;   // CRC

// A reply that once took long is as good as forgotten when this many have come since.
constexpr int k_fading = 64;

std::string bytes_of(const Request& request) {
    using enum Request::Kind;
    switch (request.kind) {
        case status:
            return std::string(k_status_request);
        case analog:
            return std::string(k_analog_request);
        case alarm_state:
            return std::string(k_alarm_request);
        case shutdown:
            return std::string(k_shutdown_request);
        case limits:
            return std::string(k_limits_request);
        case identity:
            return std::string(k_identity_request);
        case event:
            return event_request(request.entry);
        case band:
            break;
    }
    return std::string(k_band_word);
}

// What follows the echo of the command, check bytes included; empty for a reply that is too short.
std::string_view behind_echo(std::string_view reply, std::string_view command) {
    const std::size_t front = k_header + command.size();
    return reply.size() > front ? reply.substr(front) : std::string_view{};
}

// The exchange compares the first two bytes of the command with their echo; the late reply to the request for
// another event, or to another value of the same setting, differs behind them. The reply is long enough.
bool repeats(std::string_view reply, std::string_view command) {
    return reply.substr(k_header, command.size()) == command;
}

// Nothing for a reply that is none.
std::optional<std::string_view> payload_of(std::string_view reply, std::string_view command,
                                           bool whole_echo) {
    constexpr std::size_t k_shortest = 2;
    const std::string_view rest = behind_echo(reply, command);
    if (reply.empty() || reply[0] != k_ack || rest.size() < k_shortest + k_check)
        return std::nullopt;
    if (whole_echo && !repeats(reply, command))
        return std::nullopt;
    return rest.substr(0, rest.size() - k_check);
}

// The text behind the first "=" of a text reply, or all of it when there is none.
std::string text_of(std::string_view reply) {
    reply = reply.substr(0, reply.find(k_etx));
    if (reply.starts_with(k_stx))
        reply.remove_prefix(1);
    return std::string(trimmed(reply.substr(reply.find('=') + 1)));  // npos + 1 is 0
}

bool answers_another(std::string_view reply, std::string_view command) {
    return reply.size() >= k_header + command.size() + k_check && !repeats(reply, command);
}

// The refusal code of a NAK reply in the operator's words; empty when the reply carries no code.
std::string refusal_text(std::string_view reply, std::string_view command) {
    const std::string_view rest = behind_echo(reply, command);
    if (rest.size() <= k_check)
        return {};
    const auto code = static_cast<unsigned char>(rest[rest.size() - k_check - 1]);
    switch (code) {
        case 1:
            return "Command Not Found";
        case 3:
            return "Remote Is Not On";
        case 4:
            return "Invalid Data";
        default:
            return "Setting Failed, code H" + hex(code);
    }
}

template <class T>
void put(Reading& reading, std::optional<T> value) {
    if (value)
        reading.value = *std::move(value);
}

void parse(Reading& reading, std::string_view payload, NegativeWords negative) {
    using enum Request::Kind;
    switch (reading.request.kind) {
        case status:
            return put(reading, Status::parse(payload));
        case analog:
            return put(reading, Analog::parse(payload, negative));
        case alarm_state:
            return put(reading, AlarmState::parse(payload));
        case shutdown:
            return put(reading, Shutdown::parse(payload));
        case limits:
            return put(reading, Limits::parse(payload, negative));
        case identity:
            return put(reading, Identity::parse(payload));
        case event:
        case band:
            reading.value = std::string(payload);
    }
}

Reading::Outcome outcome_of(BusFailure failure) {
    switch (failure) {
        case BusFailure::not_sent:
            return Reading::Outcome::not_sent;
        case BusFailure::bad_crc:
            return Reading::Outcome::bad_crc;
        default:
            return Reading::Outcome::silence;
    }
}

}  // namespace

BusCommand Amplifier::command_of(const Request& request) const {
    return {.address = unit_address,
            .command = bytes_of(request),
            .form = request.kind == Request::Kind::band ? CommandForm::text : CommandForm::binary,
            .limit = read_limit(request.guess)};
}

BusCommand Amplifier::command_of(std::string_view setting) const {
    return {.address = unit_address, .command = std::string(setting)};
}

Reading Amplifier::take(const Try& tried, const BusReply& reply) {
    const Request& request = tried.request;
    Reading reading{.unit_address = unit_address,
                    .request = request,
                    .asked_at = tried.asked_at,
                    .last_try = tried.last,
                    .at = clock_.now(),
                    .wall = clock_.local_time()};
    const bool answered = reply.failure == BusFailure::none;
    if (!answered) {
        reading.outcome = outcome_of(reply.failure);
    } else if (request.kind == Request::Kind::band) {
        reading.outcome = Reading::Outcome::good;
        reading.value = text_of(reply.bytes);
    } else if (const auto payload =
                   payload_of(reply.bytes, bytes_of(request), request.kind == Request::Kind::event)) {
        reading.outcome = Reading::Outcome::good;
        parse(reading, *payload, negative_);
    } else {
        reading.outcome = Reading::Outcome::unusable;
    }
    if (answered) {
        silences_ = 0;
        if (request.kind != Request::Kind::band)  // a text takes its own time
            longest_reply_ = std::max(reply.took, longest_reply_ - longest_reply_ / k_fading);
    } else if (reading.outcome != Reading::Outcome::bad_crc) {
        ++silences_;
    }
    readings.publish(reading);
    return reading;
}

Setting Amplifier::take(std::string_view setting, Origin origin, const BusReply& reply) {
    constexpr std::size_t k_shortest_ack = 7;
    Setting sent{.unit_address = unit_address,
                 .origin = origin,
                 .command = std::string(setting),
                 .at = clock_.now(),
                 .wall = clock_.local_time()};
    if (reply.failure == BusFailure::not_sent) {
        sent.outcome = Setting::Outcome::not_sent;
    } else if (answers_another(reply.bytes, setting)) {
        sent.outcome = Setting::Outcome::unanswered;
    } else if (reply.bytes.size() >= k_shortest_ack && reply.bytes[0] == k_ack) {
        sent.outcome = Setting::Outcome::taken;
    } else if (!reply.bytes.empty() && reply.bytes[0] == k_nak) {
        sent.outcome = Setting::Outcome::refused;
        sent.refusal = refusal_text(reply.bytes, setting);
    }
    settings.publish(sent);
    return sent;
}

Duration Amplifier::read_limit(bool guess) const {
    constexpr int k_patient_look = 12;
    const Duration longest = BusLink::k_reply_limit;
    const bool patient = !guess && silences_ % k_patient_look == 0 && (silences_ > 0 || !line_suspected_);
    return patient ? longest : std::clamp<Duration>(3 * longest_reply_, milliseconds(300), longest);
}

Duration Amplifier::patience_before_order() const {
    return std::clamp<Duration>(3 * longest_reply_, milliseconds(100), milliseconds(300));
}

}  // namespace ampdesk
