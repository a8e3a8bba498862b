#include "station/unsaved_files.h"

#include <exception>

namespace ampdesk {

void UnsavedFiles::attempt(const std::string& file, const std::function<void()>& write) {
    try {
        write();
    } catch (const std::exception& error) {
        failures_.push_back({file, error.what()});
    }
}

void UnsavedFiles::tell(Operator& person) const {
    if (failures_.empty())
        return;
    const std::string& cause = failures_.front().cause;
    std::string files;
    for (const Failure& failure : failures_)
        files += (files.empty() ? "" : ", ") + failure.file +
                 (failure.cause == cause ? "" : " (" + failure.cause + ")");
    person.notify(cause, files);
}

}  // namespace ampdesk
