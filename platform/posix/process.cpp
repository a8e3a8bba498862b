#include "platform/process.h"

#include <sys/types.h>

#include <cerrno>
#include <csignal>

namespace ampdesk {

bool process_is_gone(std::int64_t number) {
    return kill(static_cast<pid_t>(number), 0) != 0 && errno == ESRCH;
}

}  // namespace ampdesk
