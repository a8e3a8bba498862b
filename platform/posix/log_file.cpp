#include "platform/log_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "platform/posix/open_file.h"
#include "platform/run_time_error.h"

namespace ampdesk {

namespace {

[[noreturn]] void fail(int error, const std::string& path) {
    // The file itself is made: what is missing is its folder.
    if (const auto known = file_error(error == ENOENT ? ENOTDIR : error, path))
        throw *known;
    throw RunTimeError(57, std::generic_category().message(error));
}

}  // namespace

void LogFile::open(const std::string& path, std::string_view head) {
    file_ = Descriptor();
    path_ = path;
    Descriptor opened(::open(path.c_str(), O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0666));
    if (!opened)
        fail(errno, path_);
    file_ = std::move(opened);
    append(head);
    // A device has nothing to cut.
    static_cast<void>(ftruncate(file_.get(), static_cast<off_t>(head.size())) == 0);
}

void LogFile::append(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t taken = ::write(file_.get(), bytes.data(), bytes.size());
        if (taken >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(taken));
        } else if (errno != EINTR) {
            const int error = errno;
            file_ = Descriptor();
            fail(error, path_);
        }
    }
}

void LogFile::close() {
    if (file_ && file_.close() != 0)
        fail(errno, path_);
}

}  // namespace ampdesk
