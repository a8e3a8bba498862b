// How received text reaches the terminal's text box: backspaces, line feeds, and the limit of what is
// kept. The text box does what comes out of here.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ampdesk {

// Characters shown; the limit of 16384 bytes at two bytes a character.
inline constexpr std::size_t k_terminal_limit = 8192;

// How many of the oldest go once the limit is reached.
inline constexpr std::size_t k_terminal_cut = 4096;

struct ShownText {
    std::size_t drop = 0;  // characters to take from the front of the text first
    std::string insert;    // then to put at its end; carriage returns break lines
};

// `shown` is the number of characters in the text box now. A backspace takes the character before it
// within the chunk; at the chunk's start it takes nothing, not even of what is shown already.
ShownText ShowData(std::size_t shown, std::string_view data);

}  // namespace ampdesk
