#include "platform/line_file.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/posix/open_file.h"
#include "platform/run_time_error.h"

namespace ampdesk {

LineReader::LineReader(const std::string& path) : path_(path), file_(open_to_read(path)) {}

bool LineReader::fill() {
    at_ = 0;
    size_ = read_some(file_, block_.data(), block_.size(), path_);
    return size_ > 0;
}

std::optional<std::string> LineReader::next_line() {
    if (at_ == size_ && !fill())
        return std::nullopt;
    std::string line;
    do {
        const char* begin = block_.data() + at_;
        const char* end = block_.data() + size_;
        const char* found = std::find(begin, end, '\n');
        line.append(begin, found);
        if (line.size() > k_longest_line)
            throw RunTimeError(14, "Out of string space");
        if (found != end) {
            at_ = static_cast<std::size_t>(found - block_.data()) + 1;
            if (!line.empty() && line.back() == '\r')
                line.pop_back();
            return line;
        }
    } while (fill());
    return line;
}

LineWriter::LineWriter(const std::string& path) : path_(path), file_(open_to_write(path)) {}

void LineWriter::append_line(std::string_view line) {
    const std::string bytes = std::string(line) + "\r\n";
    try {
        write_all(file_, bytes, path_);
    } catch (const RunTimeError&) {
        if (size_ > 0 && ftruncate(file_.get(), static_cast<off_t>(size_)) == 0)
            lseek(file_.get(), static_cast<off_t>(size_), SEEK_SET);
        throw;
    }
    if (size_ == 0 && ftruncate(file_.get(), static_cast<off_t>(bytes.size())) != 0)
        throw_file_error(errno, path_);
    size_ += bytes.size();
}

void LineWriter::close() {
    if (!file_)
        return;
    const bool flushed = fsync(file_.get()) == 0;
    const int error = errno;
    if (file_.close() != 0 && errno != EINTR)
        throw_file_error(errno, path_);
    if (!flushed)
        throw_file_error(error, path_);
}

}  // namespace ampdesk
