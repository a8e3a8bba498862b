#include "bench/faulty_responder.h"

#include <poll.h>
#include <pty.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>

namespace ampdesk::bench {

namespace {

using SteadyClock = std::chrono::steady_clock;

[[noreturn]] void give_up(const char* what) {
    std::perror(what);
    std::exit(1);
}

}  // namespace

FaultyResponder::FaultyResponder(const Manner& manner, unsigned seed, int percent) {
    int master = -1;
    std::array<char, 64> name{};
    if (openpty(&master, &slave_, name.data(), nullptr, nullptr) != 0)
        give_up("openpty");
    device_ = name.data();
    termios raw{};
    tcgetattr(slave_, &raw);
    cfmakeraw(&raw);
    tcsetattr(slave_, TCSANOW, &raw);
    void* shared = mmap(nullptr, k_fault_names.size() * sizeof(long), PROT_READ | PROT_WRITE,
                        MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED)
        give_up("mmap");
    counts_ = static_cast<long*>(shared);
    child_ = fork();
    if (child_ < 0)
        give_up("fork");
    if (child_ == 0) {
        ::close(slave_);
        serve(master, manner, FaultyLine(seed, percent, {}));
    }
    ::close(master);
}

FaultyResponder::~FaultyResponder() {
    ::close(slave_);
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
    munmap(counts_, k_fault_names.size() * sizeof(long));
}

std::array<long, k_fault_names.size()> FaultyResponder::counts() const {
    std::array<long, k_fault_names.size()> all{};
    std::copy_n(counts_, all.size(), all.begin());
    return all;
}

void FaultyResponder::serve(int line, const Manner& manner, FaultyLine faults) const {
    std::multimap<Instant, char> under_way;
    std::array<char, 256> block{};
    for (;;) {
        int wait = -1;  // in milliseconds
        if (!under_way.empty()) {
            const Duration left = std::max(under_way.begin()->first - SteadyClock::now(), Duration{});
            wait = static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(left).count());
        }
        pollfd watched{.fd = line, .events = POLLIN, .revents = 0};
        if (poll(&watched, 1, wait) > 0) {
            const ssize_t count = ::read(line, block.data(), block.size());
            if (count <= 0)
                _exit(0);
            for (const std::string& reply : manner.answer({block.data(), static_cast<std::size_t>(count)})) {
                const LineFault fault = faults.draw();
                ++counts_[static_cast<std::size_t>(fault)];
                for (const Arrival& arrival : faults.arrivals(fault, {.bytes = reply,
                                                                     .echo_at = manner.echo_at,
                                                                     .crc = manner.crc,
                                                                     .deadline = manner.deadline}))
                    under_way.emplace(SteadyClock::now() + arrival.after, arrival.byte);
            }
        }
        std::string due;
        const auto end = under_way.upper_bound(SteadyClock::now());
        for (auto it = under_way.begin(); it != end; ++it) due += it->second;
        under_way.erase(under_way.begin(), end);
        if (!due.empty() && ::write(line, due.data(), due.size()) < 0)
            _exit(0);
    }
}

}  // namespace ampdesk::bench
