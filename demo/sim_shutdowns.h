// The shutdowns of a simulated amplifier: which are on, which one it tells, and whether they may be
// acknowledged yet.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace ampdesk::demo {

enum class ShutdownCause : std::size_t {
    interlock,
    air_flow,
    over_temperature,
    cabinet_temperature,
    arc,
    helix,
    told,  // number and text are given with it
};

struct CauseText {
    int number;
    std::string_view text;  // 20 characters at most, as the display has them
    bool lasting;           // the cause stays until it is told to be gone
};

// By cause, but for `told`. The numbers are the simulator's own.
inline constexpr std::array<CauseText, 6> k_causes = {{
    {1, "External Interlock", true},
    {2, "Low Air Flow", true},
    {3, "Over-Temperature", false},
    {4, "Cabinet Temperature", false},
    {7, "HV Arc", false},
    {12, "Helix Over-Current", false},
}};

constexpr const CauseText& text_of(ShutdownCause cause) {
    return k_causes.at(static_cast<std::size_t>(cause));
}

class SimShutdowns {
  public:
    struct Entry {
        ShutdownCause cause;
        int number;
        std::string text;
        bool held;  // the cause is still there: no acknowledgement
    };

    // Puts a shutdown on top; one of the same cause is replaced.
    void add(const Entry& entry);

    // The cause has come back or gone; nothing without such a shutdown.
    void hold(ShutdownCause cause, bool held);

    // As if it had never been.
    void end(ShutdownCause cause);

    // Ends them all, or none and returns false when a cause is still there.
    bool acknowledge();

    // The one that is told, which is the latest; null when the amplifier is not shut down.
    const Entry* latest() const { return entries_.empty() ? nullptr : &entries_.back(); }
    const Entry* find(ShutdownCause cause) const;

  private:
    std::vector<Entry> entries_;
};

}  // namespace ampdesk::demo
