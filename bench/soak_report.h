// What a run of the soak came to, and the table of it.
#pragma once

#include <array>
#include <string>

#include "bench/line_faults.h"
#include "bench/soak_display.h"
#include "bench/soak_nvram.h"
#include "bench/soak_operator.h"
#include "bench/soak_pace.h"
#include "bench/soak_remote.h"
#include "bench/soak_timely.h"

namespace ampdesk::bench {

// Kilobytes in memory and open descriptors of this process.
struct Footprint {
    long memory = 0;
    long descriptors = 0;
    static Footprint now();
};

// What a process may grow by from the first tenth of the exchanges to the last, in kilobytes: the
// allocator's own coming and going. A leak of six bytes an exchange is more, at 100 000 of them.
inline constexpr long k_memory_allowance = 512;

struct Outcome {
    long exchanges = 0;
    double hours = 0;
    std::array<long, k_fault_names.size()> faults{};
    std::array<long, k_request_fault_names.size()> request_faults{};
    std::array<long, k_stray_names.size()> strays{};
    DisplayCounts display;
    TimelyCounts timely;
    PaceCounts pace;
    SettingCounts settings;
    RemoteCounts remote;
    NvramCounts nvram;
    long boxes = 0, outages = 0, shutdowns = 0, dead_lines = 0, replacements = 0, forgeries = 0,
         interruptions = 0;
    int heads = 0;
    Footprint start, end;
    std::vector<std::string> findings{};
};

// Prints the table, a column an outcome: reply_address=learned and reply_address=checked, and what
// was found wrong. False when something is not as it must be.
bool report(const std::array<Outcome, 2>& outcomes, unsigned seed);

}  // namespace ampdesk::bench
