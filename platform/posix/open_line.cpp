#include "platform/posix/open_line.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "platform/posix/line_modes.h"

namespace ampdesk {

namespace {

// The name of the group that owns the device, its number when it has no name.
std::string owning_group(const std::string& device) {
    struct stat info {};
    if (stat(device.c_str(), &info) != 0)
        return {};
    group entry{};
    group* found = nullptr;
    std::array<char, 4096> names{};
    if (getgrgid_r(info.st_gid, &entry, names.data(), names.size(), &found) == 0 && found != nullptr)
        return found->gr_name;
    return std::to_string(info.st_gid);
}

PortResult failure(const std::string& device, int error) {
    switch (error) {
        case ENOENT:
        case ENOTDIR:
        case ENXIO:
        case ENODEV:
        case EIO:  // a device file without a line behind it
            return {PortError::not_found, device + ": no such device"};
        case EACCES:
        case EPERM: {
            const std::string group = owning_group(device);
            return {PortError::permission_denied,
                    device + ": permission denied" +
                        (group.empty() ? "" : "; the device belongs to the group " + group)};
        }
        case EBUSY:
        case EWOULDBLOCK:
            return {PortError::in_use, device + ": in use by another program"};
        case ENOTTY:
        case EINVAL:
        case EISDIR:
            return {PortError::not_a_serial_line, device + " is not a serial line"};
        default:
            return {PortError::failed, device + ": " + std::generic_category().message(error)};
    }
}

// Unix98 slaves have the majors 136 to 143.
bool is_pseudo_terminal(int fd) {
    struct stat info {};
    return fstat(fd, &info) == 0 && major(info.st_rdev) >= 136 && major(info.st_rdev) <= 143;
}

// What counts is what is read back: tcsetattr succeeds when it could do any of what was asked, and
// fails on a pseudo-terminal, which does all that matters here.
bool apply_modes(int fd, const PortSettings& settings) {
    const auto wanted = line_modes(settings);
    termios kept{};
    if (!wanted)
        return false;
    static_cast<void>(tcsetattr(fd, TCSANOW, &*wanted));
    return tcgetattr(fd, &kept) == 0 && modes_kept(*wanted, kept, is_pseudo_terminal(fd));
}

}  // namespace

PortResult open_line(const PortSettings& settings, Descriptor& line) {
    const std::string& device = settings.device;
    line = Descriptor();
    // Looked at before it is opened: opening a queue, a disk or a tape drive can have effects.
    struct stat info {};
    if (stat(device.c_str(), &info) != 0)
        return failure(device, errno);
    if (!S_ISCHR(info.st_mode))
        return failure(device, ENOTTY);

    int fd = -1;
    do fd = ::open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    while (fd < 0 && errno == EINTR);
    Descriptor opened(fd);
    termios before{};
    if (!opened || tcgetattr(fd, &before) != 0)
        return failure(device, errno);
    // An exclusive-use flag on the terminal would not stop the superuser; a file lock does.
    if (flock(fd, LOCK_EX | LOCK_NB) != 0)
        return failure(device, errno);
    if (!apply_modes(fd, settings))
        return {PortError::bad_settings, device + " refused " + settings_text(settings)};
    tcflush(fd, TCIFLUSH);
    line = std::move(opened);
    return {};
}

}  // namespace ampdesk
