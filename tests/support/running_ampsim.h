// The program ampsim as another program sees it: two pipes and a device.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <utility>
#include <vector>

namespace ampdesk {

class RunningAmpsim {
  public:
    explicit RunningAmpsim(std::vector<std::string> arguments) {
        int in[2];
        int out[2];
        if (::pipe2(in, O_CLOEXEC) != 0 || ::pipe2(out, O_CLOEXEC) != 0)
            return;
        process_ = ::fork();
        if (process_ == 0) {
            ::dup2(in[0], STDIN_FILENO);
            ::dup2(out[1], STDOUT_FILENO);
            std::string program = AMPSIM_PROGRAM;
            std::vector<char*> argv{program.data()};
            for (std::string& argument : arguments) argv.push_back(argument.data());
            argv.push_back(nullptr);
            ::execv(program.c_str(), argv.data());
            ::_exit(127);
        }
        ::close(in[0]);
        ::close(out[1]);
        commands = in[1];
        answers = out[0];
    }
    ~RunningAmpsim() {
        if (process_ > 0)
            end(SIGKILL);
        close_commands();
        ::close(answers);
    }
    void close_commands() { ::close(std::exchange(commands, -1)); }

    // Halts the program where it stands, or lets it go on; halted is it when the call returns.
    void halt(bool halted) const {
        ::kill(process_, halted ? SIGSTOP : SIGCONT);
        int status = 0;
        if (halted)
            ::waitpid(process_, &status, WUNTRACED);
    }

    // Sends the signal unless it is 0, and returns the exit status, or -1 when a signal ended it.
    int end(int signal) {
        if (signal != 0)
            ::kill(process_, signal);
        int status = 0;
        ::waitpid(std::exchange(process_, -1), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::string command(const std::string& line) const {
        const std::string whole = line + "\n";
        return ::write(commands, whole.data(), whole.size()) < 0 ? "gone" : answer();
    }
    std::string answer() const {
        std::string line;
        while (!line.ends_with('\n')) {
            const std::string byte = read_some(answers, 1, 10'000);
            if (byte.empty())
                return line + " (nothing more)";
            line += byte;
        }
        return line.substr(0, line.size() - 1);
    }

    // Up to `count` bytes, waiting at most so long for each stretch.
    static std::string read_some(int descriptor, std::size_t count, int milliseconds) {
        std::string bytes;
        pollfd wait{.fd = descriptor, .events = POLLIN, .revents = 0};
        while (bytes.size() < count && ::poll(&wait, 1, milliseconds) > 0) {
            std::string piece(count - bytes.size(), '\0');
            const ssize_t got = ::read(descriptor, piece.data(), piece.size());
            if (got <= 0)
                break;
            bytes += piece.substr(0, static_cast<std::size_t>(got));
        }
        return bytes;
    }

    int commands = -1;
    int answers = -1;

  private:
    pid_t process_ = -1;
};

}  // namespace ampdesk
