#include "terminal/null_modem_test.h"

#include "platform/numbers.h"

namespace ampdesk {

namespace {

// More than this cannot hold the text alone; the line is busy with something else.
constexpr std::size_t k_most_received = 4096;

std::string on_off(std::string_view name, bool on) {
    return std::string(name) + (on ? " on" : " off");
}

std::string_view meaning(const ModemLines& lines) {
    if (lines.cts && lines.dsr)
        return "The other side is there and ready.";
    if (lines.cts)
        return "It takes data (CTS), but does not say that it is ready (DSR): the cable may lack that wire.";
    if (lines.dsr)
        return "It is there (DSR), but takes no data (CTS): it is busy, or the cable lacks that wire.";
    return "Nothing is connected, the other side is switched off, or the cable has no such wires.";
}

std::string modem_line_report(const std::optional<ModemLines>& lines) {
    if (!lines)
        return "Modem lines: this port shows none.";
    return "Modem lines: " + on_off("CTS", lines->cts) + ", " + on_off("DSR", lines->dsr) + ", " +
           on_off("carrier", lines->carrier) + ", " + on_off("ring", lines->ring) + ". " +
           std::string(meaning(*lines));
}

}  // namespace

// No CR: a computer that happens to be at the other end must not take the text for a command.
NullModemTest::NullModemTest(std::optional<ModemLines> lines, unsigned stamp, Duration character_time,
                             Instant now)
    : lines_(lines),
      text_("<loop-back test " + hex(stamp) + ">"),
      start_(now),
      deadline_(now + k_limit + 2 * text_.size() * character_time) {
    output_ = text_;
}

void NullModemTest::feed(std::string_view bytes, Instant now) {
    if (finished())
        return;
    received_ += bytes.substr(0, k_most_received - received_.size());
    if (received_.find(text_) == std::string::npos)
        return;
    const auto took = std::chrono::ceil<std::chrono::milliseconds>(now - start_);
    report("the text came back in " + std::to_string(took.count()) +
           " ms. Sending and receiving work, and something at the other end returns what is sent.");
}

void NullModemTest::tick(Instant now) {
    if (finished() || now < deadline_)
        return;
    if (received_.empty())
        report(
            "nothing came back within a second. With a loop-back plug that means a wrong port or a "
            "broken cable; a computer or a modem at the other end need not return anything.");
    else
        report(std::to_string(received_.size()) +
               " bytes came in, but not the text. The other side sends something of its own, or its speed, "
               "data bits or parity differ.");
}

void NullModemTest::report(std::string_view loop_back) {
    finish(TransferState::done, modem_line_report(lines_) + "\nLoop-back: " + std::string(loop_back));
}

}  // namespace ampdesk
