// The faults of a line, by name: what comes in instead of one reply, and what an exchange makes of it.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/scripted_port.h"

namespace ampdesk {

struct LineFault {
    enum class Result {
        own,      // the amplifier's reply
        as_sent,  // whatever came, as it came: it is sound, if not what was expected
        nothing,
        anothers,  // the reply of another amplifier, unless addresses are checked; then the own one
    };

    std::string name;
    // What arrives, and when after the request, where this request would have had this reply.
    std::function<ScriptedPort::Answer(const std::string& request, const std::string& reply)> line;
    Result result = Result::nothing;
    int ends = 1000;  // milliseconds that the exchange takes
    // A whole reply comes in while the next request is under way. Where that one is put alike nothing
    // on the line tells whose answer it is.
    bool outlives = false;
};

// Of the binary frames, and of the text frames at 9600 baud: 394 ms a sending, two sendings.
const std::vector<LineFault>& binary_faults();
const std::vector<LineFault>& text_faults();

// For the names of parameterised tests.
template <class Info>
std::string name_of_fault(const Info& info) {
    return info.param.name;
}
inline std::ostream& operator<<(std::ostream& out, const LineFault& fault) {
    return out << fault.name;
}

}  // namespace ampdesk
