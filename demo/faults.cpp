#include "demo/faults.h"

#include <algorithm>
#include <array>
#include <vector>

#include "demo/whole_number.h"
#include "platform/numbers.h"

namespace ampdesk::demo {

namespace {

using std::chrono::milliseconds;
using Argument = std::string_view;

constexpr long k_most_replies = 9999;
constexpr long k_longest_wait = 60'000;  // ms
constexpr std::size_t k_longest_text = 60;

// The first word, taken off the front of the text; what remains starts with the next word.
Argument take_word(Argument& text) {
    text = trimmed(text);
    const Argument word = text.substr(0, text.find(' '));
    text = trimmed(text.substr(word.size()));
    return word;
}

std::string wants(std::string_view what) {
    return "wants " + std::string(what);
}

// Sets a number that lies in low..high.
template <class Number>
std::string put_number(Number& number, Argument argument, long low, long high) {
    const auto value = whole_number(argument, low, high);
    if (!value)
        return wants("a number from " + std::to_string(low) + " to " + std::to_string(high));
    number = static_cast<Number>(*value);
    return {};
}

std::string put_wait(milliseconds& wait, Argument argument) {
    long number = 0;
    std::string error = put_number(number, argument, 0, k_longest_wait);
    if (error.empty())
        wait = milliseconds(number);
    return error;
}

// One of two words.
template <class Set>
std::string put_choice(Argument argument, Argument yes, Argument no, Set set) {
    if (argument != yes && argument != no)
        return wants(std::string(yes) + " or " + std::string(no));
    set(argument == yes);
    return {};
}

std::string check_text(Argument text) {
    const bool printable =
        std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) >= 32; });
    if (text.empty() || text.size() > k_longest_text || !printable)
        return wants("a text of 1 to 60 characters");
    return {};
}

std::string make_shutdown(SimAmplifier& a, Argument argument) {
    int number = 0;
    std::string error = put_number(number, take_word(argument), 0, 999);
    if (error.empty())
        error = check_text(argument);
    if (error.empty())
        a.shut_down(number, argument);
    return error;
}

std::string make_alarm(SimAmplifier& a, Argument argument) {
    std::string error = check_text(argument);
    if (error.empty())
        a.faults.alarm = argument;
    return error;
}

std::string force_word(SimAmplifier& a, Argument argument) {
    std::size_t item = 0;
    int value = 0;
    std::string error = put_number(item, take_word(argument), 1, static_cast<long>(k_analog_words));
    if (error.empty())
        error = put_number(value, argument, -32768, 65535);
    if (error.empty())
        a.faults.analog[item] = static_cast<std::uint16_t>(value);
    return error;
}

std::string force_status(SimAmplifier& a, Argument argument) {
    std::size_t position = 0;
    std::uint8_t value = 0;
    std::string error = put_number(position, take_word(argument), 1, 6);
    if (error.empty())
        error = put_number(value, argument, 0, 255);
    if (error.empty())
        a.faults.status[position] = value;
    return error;
}

std::string answer_as(SimAmplifier& a, Argument argument) {
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

std::string nothing_to_do(SimAmplifier&, Argument) {
    return {};
}

constexpr std::array k_table = {
    Fault{"shutdown", "N TEXT", "shuts the amplifier down for that reason; HV and RF go off", make_shutdown},
    Fault{"interlock", "open|closed", "an open interlock shuts down (number 1) and cannot be acknowledged",
          [](SimAmplifier& a, Argument t) {
              return put_choice(t, "open", "closed", [&](bool open) { a.set_interlock(open); });
          }},
    Fault{"alarm", "TEXT", "raises an alarm; up to 16 characters fit the display", make_alarm},
    Fault{"clear", "", "ends every fault, the shutdown and the forced values included",
          [](SimAmplifier& a, Argument) {
              a.clear_faults();
              return std::string();
          }},
    Fault{"remote", "on|off", "with remote off every setting is refused with code 3",
          [](SimAmplifier& a, Argument t) {
              return put_choice(t, "on", "off", [&](bool on) { a.set_remote(on); });
          }},
    Fault{"silent", "on|off", "neither hears nor answers",
          [](SimAmplifier& a, Argument t) {
              return put_choice(t, "on", "off", [&](bool on) { a.line.silent = on; });
          }},
    Fault{"noise", "N", "puts stray bytes before the next N replies",
          [](SimAmplifier& a, Argument t) { return put_number(a.line.noisy_replies, t, 0, k_most_replies); }},
    Fault{
        "badcrc", "N", "spoils the CRC of the next N binary replies",
        [](SimAmplifier& a, Argument t) { return put_number(a.line.bad_crc_replies, t, 0, k_most_replies); }},
    Fault{"refuse", "CODE", "refuses every setting with that code, 1 to 255; 0 ends it",
          [](SimAmplifier& a, Argument t) { return put_number(a.faults.refuse_code, t, 0, 255); }},
    Fault{"delay", "MS", "holds every reply back so long; 0 ends it",
          [](SimAmplifier& a, Argument t) { return put_wait(a.line.delay, t); }},
    Fault{"late", "MS", "holds the next reply only back so long",
          [](SimAmplifier& a, Argument t) { return put_wait(a.line.late, t); }},
    Fault{"drip", "MS", "leaves that gap before every byte of a reply; 0 ends it",
          [](SimAmplifier& a, Argument t) { return put_wait(a.line.drip, t); }},
    Fault{"address", "N|off", "puts a wrong unit address into the replies", answer_as},
    Fault{"short", "WORDS", "ends the analog and limits blocks after so many words; 0 ends it",
          [](SimAmplifier& a, Argument t) {
              return put_number(a.faults.short_words, t, 0, static_cast<long>(k_analog_words));
          }},
    Fault{"overflow", "on|off", "sets the top bit of every analog word",
          [](SimAmplifier& a, Argument t) {
              return put_choice(t, "on", "off", [&](bool on) { a.faults.overflow_words = on; });
          }},
    Fault{"analog", "ITEM VALUE", "forces analog word 1 to 15, -32768 to 65535", force_word},
    Fault{"status", "BYTE VALUE", "forces status character 1 to 6", force_status},
    Fault{"quit", "", "ends the simulator", nothing_to_do, true},
};

FaultAnswer error(const std::string& text) {
    return {.text = "error: " + text};
}

}  // namespace

std::span<const Fault> fault_table() {
    return k_table;
}

FaultAnswer make_fault(const SimBus& bus, std::string_view line) {
    std::vector<SimAmplifier*> targets;
    std::string_view rest = trimmed(line);
    if (!rest.empty() && rest.front() == '@') {
        const std::string_view word = take_word(rest);
        const auto address = whole_number(word.substr(1), 0, 99);
        SimAmplifier* amplifier = address ? bus.find(static_cast<int>(*address)) : nullptr;
        if (amplifier == nullptr)
            return error("no amplifier at " + std::string(word));
        targets.push_back(amplifier);
    } else {
        for (const auto& amplifier : bus.amplifiers()) targets.push_back(amplifier.get());
    }
    const std::string_view name = take_word(rest);
    const auto* fault =
        std::find_if(k_table.begin(), k_table.end(), [&](const Fault& known) { return known.name == name; });
    if (fault == k_table.end())
        return error("no fault is named \"" + std::string(name) + "\"");
    if (fault->arguments.empty() && !rest.empty())
        return error(std::string(name) + " takes no argument");
    for (SimAmplifier* target : targets) {
        const std::string problem = fault->make(*target, rest);
        if (!problem.empty())
            return error(std::string(name) + " " + problem);
    }
    return {.text = "ok", .quit = fault->ends_program};
}

}  // namespace ampdesk::demo
