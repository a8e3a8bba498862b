// What the two bus setup dialogs hold, apart from their windows: frmSetup finds and identifies a new
// amplifier, frmSerial changes the settings of the line.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "buslink/bus_link.h"
#include "buslink/line_settings.h"
#include "platform/operator.h"

namespace ampdesk {

// The fields as they stand: the texts of the two lists, Latin-1, and the selected option buttons.
struct BusChoices {
    std::string port = "COM2:";
    std::string address = "1";
    int baud = 6;    // index in k_baud_rates
    int bits = 3;    // data bits = index + 5
    int stop = 0;    // stop bits = index + 1
    int parity = 0;  // 0 none, 1 odd, 2 even
    bool operator==(const BusChoices&) const = default;
};

// Exactly "COM1:", "COM2:", "COM3:" or "COM4:".
bool accepted_port(std::string_view text);

// Not blank, and the leading number is 0..99; a text without a number counts as 0.
bool accepted_address(std::string_view text);

// Tells "Invalid Com Port" or "Invalid Unit Address" of a text that is not accepted and gives what
// takes its place; an accepted text comes back as it is.
std::string checked_port(const std::string& text, Operator& person);
std::string checked_address(const std::string& text, Operator& person);

LineSettings line_settings(const BusChoices& choices);

// Port, baud and address from "rs485.dat"; data bits, parity and stop bits are never kept there. A
// file that is missing or has another title gives the defaults, one that ends early the defaults of the
// port and baud that it lacks; one that cannot be read gives them after a message. The texts may still be
// ones that are not accepted, as the blank address of a file that holds none.
BusChoices load_bus_choices(const std::string& path, Operator& person);

// Writes "rs485.dat"; a failure is told in a message. Texts that are not accepted are replaced.
void save_bus_choices(const std::string& path, const BusChoices& choices, Operator& person);

struct SetupResult {
    enum class Outcome { stay_open, close, add };
    Outcome outcome = Outcome::stay_open;
    // With `add`: the amplifier that answered.
    std::int16_t unit_address = 0;
    std::string number{};  // decimal
    std::string model{};   // may be empty
    bool operator==(const SetupResult&) const = default;
};

// What OK does. It waits for nothing; failures are told by it.
class BusSetup {
  public:
    virtual ~BusSetup() = default;

    // OK has been pressed; not again before on_result.
    virtual void begin(const BusChoices& choices) = 0;

    // What it came to; once for each begin(), perhaps within it.
    std::function<void(const SetupResult&)> on_result;
};

}  // namespace ampdesk
