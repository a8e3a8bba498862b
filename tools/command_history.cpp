#include "tools/command_history.h"

namespace ampdesk {

void CommandHistory::add(const std::string& command) {
    if (commands_.empty() || commands_.back() != command)
        commands_.push_back(command);
    if (commands_.size() > k_length)
        commands_.erase(commands_.begin());
    at_ = commands_.size() - 1;  // the entry still shows it
    draft_.clear();
}

bool CommandHistory::recalled(const std::string& shown) const {
    return at_ < commands_.size() && commands_[at_] == shown;
}

std::string CommandHistory::older(const std::string& shown) {
    if (!recalled(shown)) {
        draft_ = shown;
        at_ = commands_.size();
    }
    if (at_ > 0)
        --at_;
    return commands_.empty() ? shown : commands_[at_];
}

std::string CommandHistory::newer(const std::string& shown) {
    if (!recalled(shown))
        return shown;
    ++at_;
    return at_ < commands_.size() ? commands_[at_] : draft_;
}

}  // namespace ampdesk
