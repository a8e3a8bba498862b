// The rows of the table of faults.
#include <array>
#include <type_traits>

#include "demo/fault_arguments.h"
#include "demo/faults.h"

namespace ampdesk::demo {

namespace {

using std::chrono::milliseconds;
using Amp = SimAmplifier;
using Argument = std::string_view;
using Texts = std::vector<std::string>;
using Make = std::string (*)(Amp&, Argument);
using enum FaultGroup;

constexpr long k_most_replies = 9999;
constexpr long k_longest_wait = 60'000;  // ms

Texts listed(bool in_force) {
    return in_force ? Texts{""} : Texts{};
}

template <ShutdownCause cause>
Texts active_shutdown(const Amp& a) {
    const auto* shutdown = a.shutdowns().find(cause);
    const bool gone = shutdown != nullptr && text_of(cause).lasting && !shutdown->held;
    return gone ? Texts{"cause gone, not acknowledged"} : listed(shutdown != nullptr);
}

template <ShutdownCause cause>
std::string end_shutdown(Amp& a, Argument) {
    a.end_shutdown(cause);
    return {};
}

// A shutdown with a number and a text of its own. Of the words, if it takes one, the first brings the
// cause and the second takes it away.
template <ShutdownCause cause>
constexpr Fault shutdown_row(Argument name, Argument words, Argument help, Make make = nullptr) {
    const Make at_once = [](Amp& a, Argument) {
        a.shut_down(cause);
        return std::string();
    };
    return {name,
            shutdowns,
            text_of(cause).number,
            text_of(cause).text,
            words,
            words,
            help,
            make != nullptr ? make : at_once,
            active_shutdown<cause>,
            end_shutdown<cause>};
}

template <ShutdownCause cause>
std::string bring_or_take(Amp& a, Argument t, Argument there, Argument gone) {
    return put_choice(t, there, gone, [&](bool is_there) {
        if (is_there)
            a.shut_down(cause);
        else
            a.cause_gone(cause);
    });
}

std::string shut_down(Amp& a, Argument argument) {
    int number = 0;
    std::string error = put_number(number, take_word(argument), 0, 999);
    if (error.empty())
        error = check_text(argument);
    if (error.empty())
        a.shut_down(number, argument);
    return error;
}

Texts told_shutdown(const Amp& a) {
    const auto* shutdown = a.shutdowns().find(ShutdownCause::told);
    if (shutdown == nullptr)
        return {};
    return {std::to_string(shutdown->number) + " " + shutdown->text};
}

template <WarningLevel level>
constexpr Fault level_row(Argument name, Argument title, Argument help) {
    return {name,
            warning_levels,
            0,
            title,
            "",
            "",
            help,
            [](Amp& a, Argument) {
                a.warnings.cross(level, true);
                return std::string();
            },
            [](const Amp& a) { return listed(a.warnings.crossed(level)); },
            [](Amp& a, Argument) {
                a.warnings.cross(level, false);
                return std::string();
            }};
}

// The field of a fault, in the line's or in the contents' part.
template <auto Field, class Amplifier>
auto& field(Amplifier& a) {
    if constexpr (std::is_invocable_v<decltype(Field), const LineFaults&>)
        return a.line.*Field;
    else
        return a.faults.*Field;
}

template <auto Field>
std::string reset_field(Amp& a, Argument) {
    auto& value = field<Field>(a);
    value = {};
    return {};
}

// A number 0..most; 0 is no fault.
template <auto Field, long most>
constexpr Fault number_row(Argument name, Argument title, Argument arguments, Argument proposals,
                           Argument help) {
    return {name,
            line_faults,
            0,
            title,
            arguments,
            proposals,
            help,
            [](Amp& a, Argument t) {
                long number = 0;
                std::string error = put_number(number, t, 0, most);
                auto& value = field<Field>(a);
                if (error.empty())
                    value = static_cast<std::remove_reference_t<decltype(value)>>(number);
                return error;
            },
            [](const Amp& a) {
                const auto& value = field<Field>(a);
                if (value == std::remove_cvref_t<decltype(value)>{})
                    return Texts{};
                if constexpr (std::is_same_v<decltype(value), const milliseconds&>)
                    return Texts{std::to_string(value.count()) + " ms"};
                else
                    return Texts{std::to_string(value)};
            },
            reset_field<Field>};
}

template <auto Field>
constexpr Fault switch_row(Argument name, Argument title, Argument help) {
    return {
        name,
        line_faults,
        0,
        title,
        "on|off",
        "on|off",
        help,
        [](Amp& a, Argument t) { return put_choice(t, "on", "off", [&](bool on) { field<Field>(a) = on; }); },
        [](const Amp& a) { return listed(field<Field>(a)); },
        reset_field<Field>};
}

std::string answer_as(Amp& a, Argument argument) {
    if (argument == "off") {
        a.line.wrong_address.reset();
        return {};
    }
    std::uint8_t value = 0;
    if (!put_number(value, argument, 0, 255).empty())
        return wants("a number from 0 to 255 or off");
    a.line.wrong_address = value;
    return {};
}

// Forced values: an array of optional ones, from 1, each a fault of its own.
template <auto Field, long lowest, long highest>
constexpr Fault forced_row(Argument name, Argument title, Argument arguments, Argument proposals,
                           Argument help) {
    return {name,
            forced_values,
            0,
            title,
            arguments,
            proposals,
            help,
            [](Amp& a, Argument t) {
                auto& values = field<Field>(a);
                std::size_t item = 0;
                long value = 0;
                std::string error = put_number(item, take_word(t), 1, static_cast<long>(values.size() - 1));
                if (error.empty())
                    error = put_number(value, t, lowest, highest);
                if (error.empty())
                    values[item] = static_cast<typename std::remove_reference_t<decltype(*values[0])>>(value);
                return error;
            },
            [](const Amp& a) {
                Texts texts;
                const auto& values = field<Field>(a);
                for (std::size_t i = 1; i < values.size(); ++i) {
                    if (values[i])
                        texts.push_back(std::to_string(i) + " " + std::to_string(*values[i]));
                }
                return texts;
            },
            [](Amp& a, Argument which) {
                auto& values = field<Field>(a);
                if (which.empty()) {
                    values = {};
                    return std::string();
                }
                std::size_t item = 0;
                std::string error = put_number(item, which, 1, static_cast<long>(values.size() - 1));
                values[item].reset();  // item 0 is never set
                return error;
            },
            true};
}

std::string clear(Amp& a, Argument argument) {
    if (argument.empty()) {
        a.clear_faults();
        return {};
    }
    const Fault* fault = find_fault(take_word(argument));
    if (fault == nullptr || fault->end == nullptr)
        return wants("nothing or the name of a fault");
    if (!fault->several && !argument.empty())
        return wants("nothing behind " + std::string(fault->name));
    return fault->end(a, argument);
}

std::string nothing_to_do(Amp&, Argument) {
    return {};
}

constexpr std::array k_table = {
    shutdown_row<ShutdownCause::helix>("helix", "", "too much helix current; can be acknowledged at once"),
    shutdown_row<ShutdownCause::over_temperature>("overtemp", "",
                                                  "the tube is too hot; can be acknowledged at once"),
    shutdown_row<ShutdownCause::cabinet_temperature>("cabinet", "",
                                                     "the cabinet is too hot; can be acknowledged at once"),
    shutdown_row<ShutdownCause::arc>("arc", "", "an arc in the high voltage; can be acknowledged at once"),
    shutdown_row<ShutdownCause::interlock>(
        "interlock", "open|closed", "while it is open the acknowledgement is refused",
        [](Amp& a, Argument t) { return bring_or_take<ShutdownCause::interlock>(a, t, "open", "closed"); }),
    shutdown_row<ShutdownCause::air_flow>(
        "airflow", "low|normal", "while it is low the acknowledgement is refused",
        [](Amp& a, Argument t) { return bring_or_take<ShutdownCause::air_flow>(a, t, "low", "normal"); }),
    Fault{"shutdown", shutdowns, 0, "Another shutdown", "N TEXT", "99 Test Shutdown|12 Helix Arc",
          "shuts the amplifier down for that reason; HV and RF go off", shut_down, told_shutdown,
          end_shutdown<ShutdownCause::told>},

    Fault{"alarm", alarms, 0, "Alarm", "TEXT", "Fan Slow|Line Voltage|Standby Battery",
          "raises an alarm; up to 16 characters fit the display",
          [](Amp& a, Argument text) {
              std::string error = check_text(text);
              if (error.empty())
                  a.raise_alarm(text);
              return error;
          },
          [](const Amp& a) { return a.faults.alarm.empty() ? Texts{} : Texts{a.faults.alarm}; },
          reset_field<&ContentFaults::alarm>},
    Fault{"fan", alarms, 0, "Fan stopped", "stopped|running", "stopped|running",
          "it gets hot: transmitting, an alarm after one minute and a shutdown after two",
          [](Amp& a, Argument t) {
              return put_choice(t, "stopped", "running", [&](bool stopped) { a.stop_fan(stopped); });
          },
          [](const Amp& a) { return listed(a.fan_stopped()); },
          [](Amp& a, Argument) {
              a.stop_fan(false);
              return std::string();
          }},

    level_row<WarningLevel::over_forward>("overforward", "Over forward power",
                                          "raises Fwd Power High; less power (ATTN) ends it"),
    level_row<WarningLevel::under_forward>("underforward", "Under forward power", "raises Fwd Power Low"),
    level_row<WarningLevel::over_reverse>("overreverse", "Over reverse power",
                                          "raises Rev Power High; less power (ATTN) ends it"),
    level_row<WarningLevel::cabinet>("hotcabinet", "Cabinet temperature",
                                     "raises Cabinet Temp, but no shutdown yet"),
    level_row<WarningLevel::baseplate>("hottube", "TWT temperature", "raises TWT Temp, but no shutdown yet"),
    level_row<WarningLevel::helix>("highhelix", "Helix current", "raises Helix Current, but no shutdown yet"),

    switch_row<&LineFaults::silent>("silent", "No answer", "neither hears nor answers"),
    number_row<&LineFaults::late, k_longest_wait>("late", "Next reply late", "MS", "1500|300",
                                                  "holds the next reply only back so long"),
    number_row<&LineFaults::delay, k_longest_wait>("delay", "Every reply late", "MS", "300|1500",
                                                   "holds every reply back so long; 0 ends it"),
    number_row<&LineFaults::drip, k_longest_wait>("drip", "Drip", "MS", "20|100",
                                                  "leaves that gap before every byte of a reply; 0 ends it"),
    number_row<&LineFaults::noisy_replies, k_most_replies>("noise", "Noise", "N", "20|3",
                                                           "puts stray bytes before the next N replies"),
    number_row<&LineFaults::bad_crc_replies, k_most_replies>("badcrc", "Bad CRC", "N", "20|3",
                                                             "spoils the CRC of the next N binary replies"),
    Fault{"address", line_faults, 0, "Wrong address", "N|off", "98|off",
          "puts a wrong unit address into the replies", answer_as,
          [](const Amp& a) {
              return a.line.wrong_address ? Texts{std::to_string(*a.line.wrong_address)} : Texts{};
          },
          reset_field<&LineFaults::wrong_address>},
    number_row<&ContentFaults::refuse_code, 255>(
        "refuse", "Settings refused", "CODE", "1|3|4|26",
        "refuses every setting with that code: 1 not found, 3 remote off, 4 invalid; 0 ends it"),
    number_row<&ContentFaults::short_words, k_analog_words>(
        "short", "Too short", "WORDS", "3",
        "ends the analog and limits blocks after so many words; 0 ends it"),
    switch_row<&ContentFaults::overflow_words>(
        "overflow", "Overflow words",
        "sets the top bit of every analog word: Overflow, or absurd values with negative_words=signed"),

    Fault{"remote", forced_values, 0, "Remote off", "on|off", "off|on",
          "with remote off every setting is refused with code 3",
          [](Amp& a, Argument t) { return put_choice(t, "on", "off", [&](bool on) { a.set_remote(on); }); },
          [](const Amp& a) { return listed(!a.remote_allowed()); },
          [](Amp& a, Argument) {
              a.set_remote(true);
              return std::string();
          }},
    forced_row<&ContentFaults::analog, -32768, 65535>("analog", "Analog word", "ITEM VALUE", "4 450|1 523",
                                                      "forces analog word 1 to 15, -32768 to 65535"),
    forced_row<&ContentFaults::status, 0, 255>("status", "Status character", "BYTE VALUE", "1 12|2 0",
                                               "forces status character 1 to 6"),

    Fault{"clear", commands, 0, "", "[NAME]", "",
          "ends every fault, shutdowns and forced values included, or the named one", clear, nullptr,
          nullptr},
    Fault{"quit", commands, 0, "", "", "", "ends the simulator", nothing_to_do, nullptr, nullptr, false,
          true},
};

}  // namespace

std::span<const Fault> fault_table() {
    return k_table;
}

}  // namespace ampdesk::demo
