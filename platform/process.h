// Other programs on this machine.
#pragma once

#include <cstdint>

namespace ampdesk {

// Whether no process has that number any more. One that may not be asked about is there.
bool process_is_gone(std::int64_t number);

}  // namespace ampdesk
