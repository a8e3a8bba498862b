// Reading the operator's help pages, "mhelp.txt":
//
//   first line  contains "machine help"
//   section     a line whose leading number is the status screen's, its text lines, "[END]"
//   text line   what stands between its first double quote and its last, 20 characters at most; to the
//               end without a closing quote, and from the start without any
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "controlhead/services.h"
#include "platform/run_time_error.h"

namespace ampdesk {

inline constexpr std::size_t k_longest_help = 100;

struct HelpSection {
    // 20 characters each, k_longest_help at most; none when the file lacks the section.
    std::vector<std::string> lines;
    // No "mhelp.txt" in the program's folder nor among what the program shipped.
    bool file_missing = false;
    // Why the file that is there could not be used.
    std::optional<RunTimeError> refusal;
};

// The help for status screen 1..4. Never throws; what it cannot read it tells in the result.
HelpSection read_help(const HeadOptions& options, int screen);

}  // namespace ampdesk
