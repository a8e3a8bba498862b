// What the soak's witnesses have found wrong, in words: what was expected, what was seen, when and where.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/clock.h"

namespace ampdesk::bench {

class Findings {
  public:
    Findings(const Clock& clock, const long& exchanges) : clock_(clock), exchanges_(exchanges) {}

    // Of an amplifier, or of none, which is 0. Of each kind the first ones are kept.
    void tell(const std::string& kind, int address, const std::string& expected, const std::string& seen);

    // Something that takes its time: keeps the longest, and tells when it was beyond its limit.
    void judge(const std::string& kind, int address, Duration value, Duration limit, Duration& longest,
               const std::string& expected, const std::string& seen);

    const std::vector<std::string>& texts() const { return texts_; }

  private:
    const Clock& clock_;
    const long& exchanges_;
    std::map<std::string, int> told_;
    std::vector<std::string> texts_;
};

// "1.25 s"
std::string in_seconds(Duration duration);

}  // namespace ampdesk::bench
