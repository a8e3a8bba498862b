// A process at the far end of a pseudo-terminal that answers requests over a faulty line.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "bench/line_faults.h"

namespace ampdesk::bench {

class FaultyResponder {
  public:
    struct Manner {
        // The replies to the requests that are whole with these next bytes.
        std::function<std::vector<std::string>(std::string_view received)> answer;
        std::size_t echo_at = 0;  // of the byte that names the command, in a reply
        const Crc16* crc = nullptr;
        Duration deadline{};  // of the client
    };

    FaultyResponder(const Manner& manner, unsigned seed, int percent);
    FaultyResponder(const FaultyResponder&) = delete;
    FaultyResponder& operator=(const FaultyResponder&) = delete;
    ~FaultyResponder();

    const std::string& device() const { return device_; }

    // How many replies met which fault so far.
    std::array<long, k_fault_names.size()> counts() const;

  private:
    [[noreturn]] void serve(int line, const Manner& manner, FaultyLine faults) const;

    std::string device_;
    int slave_ = -1;
    pid_t child_ = -1;
    long* counts_ = nullptr;  // shared with the process
};

}  // namespace ampdesk::bench
