#include "platform/posix/open_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/run_time_error.h"

namespace ampdesk {

namespace {

Descriptor open_ordinary(const std::filesystem::path& path, int flags) {
    Descriptor file(::open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC, 0644));
    struct stat info {};
    if (!file || fstat(file.get(), &info) != 0)
        throw_file_error(errno, path);
    if (!S_ISREG(info.st_mode))
        throw RunTimeError::device_io();
    return file;
}

bool folder_exists(const std::filesystem::path& path) {
    std::error_code ignored;
    const std::filesystem::path folder = path.parent_path();
    return folder.empty() || std::filesystem::is_directory(folder, ignored);
}

}  // namespace

std::optional<RunTimeError> file_error(int error, const std::filesystem::path& path) {
    switch (error) {
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return RunTimeError::disk_full();
        case EACCES:
        case EPERM:
        case EROFS:
            return RunTimeError::permission_denied();
        case ENOENT:
            return folder_exists(path) ? RunTimeError::file_not_found() : RunTimeError::path_not_found();
        case ENOTDIR:
            return RunTimeError::path_not_found();
        default:
            return std::nullopt;
    }
}

void throw_file_error(int error, const std::filesystem::path& path) {
    throw file_error(error, path).value_or(RunTimeError::device_io());
}

Descriptor open_to_read(const std::filesystem::path& path) {
    return open_ordinary(path, O_RDONLY);
}

Descriptor open_to_write(const std::filesystem::path& path) {
    return open_ordinary(path, O_WRONLY | O_CREAT);
}

std::size_t read_some(const Descriptor& file, char* buffer, std::size_t size,
                      const std::filesystem::path& path) {
    for (;;) {
        const ssize_t count = ::read(file.get(), buffer, size);
        if (count >= 0)
            return static_cast<std::size_t>(count);
        if (errno != EINTR)
            throw_file_error(errno, path);
    }
}

void write_all(const Descriptor& file, std::string_view bytes, const std::filesystem::path& path) {
    while (!bytes.empty()) {
        const ssize_t taken = ::write(file.get(), bytes.data(), bytes.size());
        if (taken < 0 && errno != EINTR)
            throw_file_error(errno, path);
        if (taken > 0)
            bytes.remove_prefix(static_cast<std::size_t>(taken));
    }
}

}  // namespace ampdesk
