#include "terminal/transfer.h"

#include <utility>

namespace ampdesk {

std::string Transfer::take_output(std::size_t) {
    return std::exchange(output_, {});
}

void Transfer::cancel() {
    if (finished())
        return;
    output_ = farewell();
    finish(TransferState::cancelled, "Cancelled.");
}

void Transfer::fail(std::string message) {
    if (!finished())
        finish(TransferState::failed, std::move(message));
}

void Transfer::give_up(std::string message) {
    output_ = farewell();
    fail(std::move(message));
}

void Transfer::finish(TransferState state, std::string message) {
    state_ = state;
    message_ = std::move(message);
}

}  // namespace ampdesk
