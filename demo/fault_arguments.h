// Reading the arguments of fault commands. Each reader returns an empty text, or what it wants.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "demo/whole_number.h"
#include "platform/numbers.h"

namespace ampdesk::demo {

constexpr std::size_t k_longest_fault_text = 60;

// The first word, taken off the front of the text; what remains starts with the next word.
inline std::string_view take_word(std::string_view& text) {
    text = trimmed(text);
    const std::string_view word = text.substr(0, text.find(' '));
    text = trimmed(text.substr(word.size()));
    return word;
}

inline std::string wants(std::string_view what) {
    return "wants " + std::string(what);
}

// Sets a number that lies in low..high.
template <class Number>
std::string put_number(Number& number, std::string_view argument, long low, long high) {
    const auto value = whole_number(argument, low, high);
    if (!value)
        return wants("a number from " + std::to_string(low) + " to " + std::to_string(high));
    number = static_cast<Number>(*value);
    return {};
}

// Passes on which of two words it is.
template <class Set>
std::string put_choice(std::string_view argument, std::string_view yes, std::string_view no, Set set) {
    if (argument != yes && argument != no)
        return wants(std::string(yes) + " or " + std::string(no));
    set(argument == yes);
    return {};
}

inline std::string check_text(std::string_view text) {
    const bool printable =
        std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) >= 32; });
    if (text.empty() || text.size() > k_longest_fault_text || !printable)
        return wants("a text of 1 to 60 characters");
    return {};
}

}  // namespace ampdesk::demo
