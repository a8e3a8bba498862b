// Another program at the other end of a line that is its standard input and output. Not a
// pseudo-terminal: some programs flush theirs when they end, and their last answer with it.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/descriptor.h"

namespace ampdesk {

// Up to `most` bytes, waiting at most so long for each stretch.
inline std::string read_some(int descriptor, std::size_t most, int patience_ms) {
    std::string bytes;
    pollfd wait{.fd = descriptor, .events = POLLIN, .revents = 0};
    while (bytes.size() < most && ::poll(&wait, 1, patience_ms) > 0) {
        std::string piece(most - bytes.size(), '\0');
        const ssize_t got = ::read(descriptor, piece.data(), piece.size());
        if (got <= 0)
            break;
        bytes.append(piece, 0, static_cast<std::size_t>(got));
    }
    return bytes;
}

class ChildProgram {
  public:
    explicit ChildProgram(std::vector<std::string> arguments, const std::string& folder = ".") {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
            throw std::runtime_error("no line to the program");
        line_ = Descriptor(ends[0]);
        const Descriptor far(ends[1]);
        std::vector<char*> argv;
        argv.reserve(arguments.size() + 1);
        for (std::string& argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        process_ = fork();
        if (process_ != 0)
            return;
        for (const int fd : {STDIN_FILENO, STDOUT_FILENO}) dup2(far.get(), fd);
        if (chdir(folder.c_str()) == 0)
            execvp(argv[0], argv.data());
        _exit(127);
    }
    ~ChildProgram() {
        if (process_ > 0)
            end(SIGKILL);
    }

    void send(const std::string& bytes) const {
        if (bytes.empty())
            return;  // it may be gone
        EXPECT_EQ(::write(line_.get(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    std::string receive(std::size_t most, int patience_ms) const {
        return read_some(line_.get(), most, patience_ms);
    }
    void end_its_input() const { shutdown(line_.get(), SHUT_WR); }

    // Sends the signal unless it is 0, waits until the program has ended and returns its exit status, or
    // -1 when it had to be killed: by that signal, or because it went on for five seconds.
    int end(int signal = 0) {
        if (signal != 0)
            kill(process_, signal);
        int status = 0;
        for (int i = 0; waitpid(process_, &status, WNOHANG) == 0; ++i) {
            receive(4096, 0);  // it may have more to say
            usleep(10'000);
            if (i == 500)
                kill(process_, SIGKILL);
        }
        process_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    pid_t process_ = -1;
    Descriptor line_;
};

}  // namespace ampdesk
