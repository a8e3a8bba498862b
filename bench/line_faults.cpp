#include "bench/line_faults.h"

#include <algorithm>

namespace ampdesk::bench {

using std::chrono::milliseconds;

LineFault FaultyLine::draw() {
    const bool hit = number(1, 100) <= percent_;
    const auto fault = hit ? number(1, static_cast<int>(k_fault_names.size()) - 1) : 0;
    ++counts[static_cast<std::size_t>(fault)];
    return static_cast<LineFault>(fault);
}

std::vector<Arrival> FaultyLine::arrivals(LineFault fault, const Frame& frame) {
    constexpr milliseconds k_turnaround{3};
    std::string bytes(frame.bytes);
    std::vector<Arrival> all;
    Duration at = static_cast<Duration::rep>(frame.request_size) * byte_time_ + k_turnaround;
    const auto put = [&](std::string_view some, Duration gap) {
        for (const char byte : some) all.push_back({at += gap, byte});
    };
    const auto change = [&](char& byte) {
        byte = static_cast<char>(static_cast<unsigned char>(byte) ^ static_cast<unsigned>(number(1, 255)));
    };
    const int last = static_cast<int>(bytes.size()) - 1;
    switch (fault) {
        case LineFault::silence:
            return {};
        case LineFault::noise:
            for (int i = number(1, 12); i > 0; --i) bytes.insert(0, 1, static_cast<char>(number(0, 255)));
            break;
        case LineFault::bad_crc:
            change(bytes[static_cast<std::size_t>(number(0, last))]);
            break;
        case LineFault::truncated:
            bytes.resize(static_cast<std::size_t>(number(1, last)));
            break;
        case LineFault::late:
            at = frame.deadline + milliseconds(number(1, 1500));
            break;
        case LineFault::wrong_echo:
            change(bytes[frame.echo_at]);
            if (frame.crc != nullptr) {
                const unsigned value = frame.crc->c_chkCRC({bytes.data(), bytes.size() - 2});
                bytes[bytes.size() - 2] = static_cast<char>(value & 0xFFU);
                bytes[bytes.size() - 1] = static_cast<char>(value >> 8U);
            }
            break;
        case LineFault::drip:
            put(bytes, std::max<Duration>(milliseconds(number(5, 60)), byte_time_));
            return all;
        case LineFault::duplicate:
            put(bytes, byte_time_);
            at += milliseconds(number(0, 300));
            break;
        case LineFault::none:
            break;
    }
    put(bytes, byte_time_);
    return all;
}

}  // namespace ampdesk::bench
