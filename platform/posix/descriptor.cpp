#include "platform/descriptor.h"

#include <unistd.h>

namespace ampdesk {

int Descriptor::close() {
    return fd_ < 0 ? 0 : ::close(std::exchange(fd_, -1));
}

}  // namespace ampdesk
