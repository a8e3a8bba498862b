#include "platform/text_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "platform/posix/open_file.h"
#include "platform/run_time_error.h"

namespace ampdesk {

namespace {

using Path = std::filesystem::path;

Path folder_of(const Path& path) {
    return path.has_parent_path() ? path.parent_path() : Path(".");
}

// The file that a name stands for: what a link points to, also when that does not exist yet.
Path link_target(Path path) {
    constexpr int k_longest_chain = 40;
    std::error_code error;
    for (int i = 0; i < k_longest_chain && std::filesystem::is_symlink(path, error); ++i)
        path = path.parent_path() / std::filesystem::read_symlink(path, error);
    return path;
}

// The new content of a file, beside it under another name until it is whole. Unless put_in_place
// has succeeded it vanishes with this object.
class Replacement {
  public:
    explicit Replacement(const std::string& path) : target_(link_target(path)) {
        replaces_ = stat(target_.c_str(), &old_) == 0;
        if (!replaces_ && errno != ENOENT)
            throw_file_error(errno, target_);
        if (replaces_ && !S_ISREG(old_.st_mode))
            throw RunTimeError::device_io();
        // A rename would pass over a write-protected file.
        if (replaces_ && faccessat(AT_FDCWD, target_.c_str(), W_OK, AT_EACCESS) != 0)
            throw_file_error(errno, target_);
        create();
    }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement() {
        if (!name_.empty())
            unlink(name_.c_str());
    }

    void append(std::string_view bytes) {
        size_ += bytes.size();
        write_all(file_, bytes, target_);
    }

    void put_in_place() {
        if (replaces_)
            take_rights();
        struct stat info {};
        if (fsync(file_.get()) != 0 || fstat(file_.get(), &info) != 0)
            throw_file_error(errno, target_);
        if (static_cast<std::size_t>(info.st_size) != size_)
            throw RunTimeError::device_io();
        if (file_.close() != 0 && errno != EINTR)
            throw_file_error(errno, target_);
        if (std::rename(name_.c_str(), target_.c_str()) != 0)
            throw_file_error(errno, target_);
        name_.clear();
        // The new file is in place. Flushing the folder makes the change outlast a power cut; a
        // folder that cannot be flushed takes nothing back.
        const Descriptor folder(::open(folder_of(target_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (folder)
            fsync(folder.get());
    }

  private:
    void create() {
        const Path start = folder_of(target_) / (".save-" + std::to_string(getpid()) + "-");
        for (int number = 0; !file_; ++number) {
            name_ = start.string() + std::to_string(number);
            file_ = Descriptor(::open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
            if (!file_ && errno != EEXIST && errno != EINTR)
                throw_file_error(errno, target_);
        }
    }

    // The old file's mode, and its owner and group as far as this user may give them.
    void take_rights() {
        if (fchown(file_.get(), old_.st_uid, old_.st_gid) != 0)
            static_cast<void>(fchown(file_.get(), static_cast<uid_t>(-1), old_.st_gid) == 0);
        if (fchmod(file_.get(), old_.st_mode & 0777U) != 0)
            throw_file_error(errno, target_);
    }

    Path target_;
    struct stat old_ {};
    bool replaces_ = false;
    std::string name_;  // of the temporary file; empty once there is none
    Descriptor file_;
    std::size_t size_ = 0;
};

}  // namespace

std::string read_file_bytes(const std::string& path, std::size_t limit) {
    const Descriptor file = open_to_read(path);
    std::string bytes;
    std::array<char, 16384> block;
    while (bytes.size() < limit) {
        const std::size_t count =
            read_some(file, block.data(), std::min(block.size(), limit - bytes.size()), path);
        if (count == 0)
            break;
        bytes.append(block.data(), count);
    }
    return bytes;
}

std::vector<std::string> read_text_lines(const std::string& path, std::size_t limit) {
    const std::string text = read_file_bytes(path, limit);
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const bool cr_lf = end < text.size() && end > at && text[end - 1] == '\r';
        lines.push_back(text.substr(at, end - at - (cr_lf ? 1 : 0)));
        at = end + 1;
    }
    return lines;
}

bool file_exists(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && !S_ISDIR(info.st_mode);
}

void write_text_lines(const std::string& path, const std::vector<std::string>& lines) {
    std::string bytes;
    for (const std::string& line : lines) bytes.append(line).append("\r\n");
    write_file_bytes(path, bytes);
}

void write_titled_lines(const std::string& path, const std::vector<std::string>& lines) {
    const std::string& title = lines.front();
    const std::string found = file_exists(path) ? read_file_bytes(path, title.size()) : std::string();
    if (!found.empty() && found != title)
        throw RunTimeError(321, "Invalid file format");
    write_text_lines(path, lines);
}

void write_file_bytes(const std::string& path, std::string_view bytes) {
    Replacement replacement(path);
    replacement.append(bytes);
    replacement.put_in_place();
}

void copy_file_bytes(const std::string& from, const std::string& to) {
    const Descriptor source = open_to_read(from);
    Replacement replacement(to);
    std::array<char, 16384> block;
    while (const std::size_t count = read_some(source, block.data(), block.size(), from))
        replacement.append({block.data(), count});
    replacement.put_in_place();
}

}  // namespace ampdesk
