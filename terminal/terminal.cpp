#include "terminal/terminal.h"

#include <algorithm>
#include <utility>

namespace ampdesk {

namespace {

constexpr char k_end_of_file = 26;
constexpr std::string_view k_hang_up_text = "manually hang up";

}  // namespace

Terminal::Terminal(TerminalLine& line, BusLink& bus, std::string folder)
    : line_(line),
      clock_(line.clock()),
      modem_(line),
      remote_(
          bus, [this](std::string_view text) { answer(text); }, std::move(folder)) {
    line_.on_received = [this](std::string_view chunk) { received(chunk); };
    line_changed();
}

Terminal::~Terminal() {
    line_.on_received = nullptr;
}

void Terminal::type(std::string_view text) {
    if (line_.is_open() && !line_.is_connected())
        line_.pump();  // whoever types wants it back now
    if (line_.taken() || modem_.hanging_up())
        return;
    if (!line_.send(text) && line_.is_connected())
        report(k_event_transmit_full);
}

bool Terminal::hang_up() {
    if (line_.taken() || !modem_.hang_up())
        return false;
    forget_requests();
    buffer_.clear();
    status("Hanging up");
    return true;
}

void Terminal::received(std::string_view chunk) {
    show(chunk);
    if (chunk.find(k_end_of_file) != std::string_view::npos)
        report(k_event_end_of_file);
    LineBuffer::Received found = buffer_.receive(chunk);
    if (found.marked)
        line_.discard_input();
    if (found.overflowed && !hang_up_at_ && !modem_.hanging_up()) {
        show(k_hang_up_text);
        hang_up_at_ = clock_.now() + k_wait_before_hang_up;
        second_hang_up_ = false;
    }
    for (std::string& request : found.requests) {
        const bool command = request.find('>') != std::string::npos ||
                             request.find(remote_.port_command_marker) != std::string::npos;
        if (!command)
            continue;
        if (remote_.orders_nothing(request))
            wrong_behind_ = wrong_behind_.value_or(requests_.size());
        else if (requests_.size() < k_most_requests)
            requests_.push_back(std::move(request));
    }
}

// The answer to the one in hand would go to the next caller, or into the modem's escape.
void Terminal::forget_requests() {
    remote_.forget();
    requests_.clear();
    wrong_behind_.reset();
}

// After half a second; and once more when as much has come meanwhile as no line has.
void Terminal::step_manual_hang_up(Instant now) {
    if (!hang_up_at_ || now < *hang_up_at_ || modem_.hanging_up())
        return;
    hang_up_at_.reset();
    const bool again = !second_hang_up_ && buffer_.overflows_still();
    hang_up();
    if (!again)
        return;
    show(k_hang_up_text);
    second_hang_up_ = true;
    hang_up_at_ = now + k_wait_before_hang_up;
}

void Terminal::tick() {
    const Instant now = clock_.now();
    if (line_.waiting() > 0 || (line_.is_open() && !line_.is_connected()))
        line_.pump();
    step_manual_hang_up(now);
    if (modem_.tick())
        status("Hung up");
    if (tells_ && now >= next_look_)
        look();
    if (wrong_waits() && now >= next_wrong_answer_) {
        wrong_behind_.reset();
        next_wrong_answer_ = now + k_between_wrong_answers;
        remote_.answer_wrong_command();
    }
}

bool Terminal::request_waits() const {
    return !requests_.empty() && !remote_.busy() && !line_.taken() && !modem_.hanging_up();
}

// Behind the lines that came before it, as long as that second lets it: none of them waits for it.
bool Terminal::wrong_waits() const {
    return wrong_behind_ == 0U && !remote_.busy() && !line_.taken() && !modem_.hanging_up();
}

std::optional<Instant> Terminal::due() const {
    return request_waits() ? std::optional(Instant{}) : remote_.due();
}

std::optional<BusCommand> Terminal::next() {
    if (request_waits())
        take_request();
    return remote_.next();
}

void Terminal::ended(const BusReply& reply) {
    remote_.ended(reply);
}

void Terminal::take_request() {
    const std::string request = std::move(requests_.front());
    requests_.pop_front();
    if (wrong_behind_.value_or(0) > 0)
        --*wrong_behind_;
    remote_.commCommandProc(request);
}

std::optional<Duration> Terminal::next_tick() const {
    const Instant now = clock_.now();
    std::optional<Instant> next;
    const auto want = [&](std::optional<Instant> at) {
        if (at && (!next || *at < *next))
            next = at;
    };
    if (wrong_waits())
        want(next_wrong_answer_);
    if (line_.waiting() > 0)
        want(now + k_send_on);
    if (line_.is_open() && !line_.is_connected())
        want(now + k_look_for_lost_line);
    if (!modem_.hanging_up())
        want(hang_up_at_);
    want(modem_.due());
    if (tells_)
        want(next_look_);
    if (!next)
        return std::nullopt;
    return std::max(*next - now, Duration::zero());
}

void Terminal::line_changed() {
    buffer_.clear();
    forget_requests();
    hang_up_at_.reset();
    held_back_.reset();
    cts_told_ = false;
    modem_.tick();
    state_ = line_.is_connected() ? read_line_state(*line_.port()) : LineState{};
    tells_ = state_.any();
    next_look_ = clock_.now() + k_look;
}

void Terminal::look() {
    const Instant now = clock_.now();
    next_look_ = now + k_look;
    const LineState before = std::exchange(state_, read_line_state(*line_.port()));
    for (const int code : events_between(before, state_)) report(code);
    watch_cts(now);
}

// Output that the other side's CTS has held back for too long is told once a stretch.
void Terminal::watch_cts(Instant now) {
    const bool held = line_.settings().handshake == Handshake::rts_cts && state_.lines &&
                      !state_.lines->cts && !line_.output_left();
    if (!held) {
        held_back_.reset();
        cts_told_ = false;
        return;
    }
    if (!held_back_)
        held_back_ = now;
    if (now - *held_back_ >= k_cts_limit && !cts_told_) {
        cts_told_ = true;
        report(k_event_cts_timeout);
    }
}

void Terminal::report(int code) {
    const PortEvent event = describe_event(code);
    if (event.kind == EventKind::status)
        status(event.text);
    else if (event.kind == EventKind::error && on_error)
        on_error(event.text);
}

void Terminal::show(std::string_view text) {
    if (on_text && visible())
        on_text(text);
}

void Terminal::status(std::string_view text) {
    if (on_status && visible())
        on_status(text);
}

// A transfer that has begun meanwhile must not find it among its blocks.
void Terminal::answer(std::string_view text) {
    if (!line_.taken() && !line_.send(text) && line_.is_connected())
        report(k_event_transmit_full);
    show(text);
}

}  // namespace ampdesk
