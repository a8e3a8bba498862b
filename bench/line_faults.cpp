#include "bench/line_faults.h"

#include <algorithm>

namespace ampdesk::bench {

using std::chrono::milliseconds;

void FaultyLine::change(char& byte) {
    byte = static_cast<char>(static_cast<unsigned char>(byte) ^ static_cast<unsigned>(number(1, 255)));
}

std::string FaultyLine::random_bytes(int least, int most) {
    std::string bytes;
    for (int i = number(least, most); i > 0; --i) bytes += static_cast<char>(number(0, 255));
    return bytes;
}

std::string FaultyLine::heard(RequestFault fault, std::string_view request) {
    const int last = static_cast<int>(request.size()) - 1;
    std::string bytes(request);
    if (fault == RequestFault::lost)
        bytes.clear();
    else if (fault == RequestFault::cut_off)
        bytes.resize(
            static_cast<std::size_t>(number(1, last - 1)));  // its last byte might begin the next one
    else if (fault == RequestFault::garbled)
        change(bytes[static_cast<std::size_t>(number(0, last))]);
    return bytes;
}

std::vector<Arrival> FaultyLine::arrivals(LineFault fault, const Frame& frame) {
    constexpr milliseconds k_turnaround{3};
    std::string bytes(frame.bytes);
    std::vector<Arrival> all;
    Duration at = static_cast<Duration::rep>(frame.request_size) * byte_time_ + k_turnaround;
    const auto put = [&](std::string_view some, Duration gap) {
        for (const char byte : some) all.push_back({at += gap, byte});
    };
    const int last = static_cast<int>(bytes.size()) - 1;
    switch (fault) {
        case LineFault::silence:
            return {};
        case LineFault::noise:
            bytes.insert(0, random_bytes(1, 12));
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
