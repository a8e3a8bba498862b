// What OK of the two bus setup dialogs does.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "buslink/bus_setup.h"
#include "station/opening.h"

namespace ampdesk {

class Station;

// OK of frmSetup: opens the line, looks for the amplifier and asks who it is. One object a dialog.
class AmplifierSetup : public BusSetup {
  public:
    AmplifierSetup(Station& station, BusLink& bus, Operator& person)
        : station_(station), bus_(bus), operator_(person) {}
    ~AmplifierSetup() override;

    void begin(const BusChoices& choices) override;

  private:
    void opened();
    void end(const SetupResult& result);

    Station& station_;
    BusLink& bus_;
    Operator& operator_;
    std::unique_ptr<Opening> opening_;
};

// OK of frmSerial: opens the line anew, keeps its settings in "rs422.dat" and looks whether the
// amplifier answers.
class LineSetup : public BusSetup, private BusGuest {
  public:
    LineSetup(Station& station, BusLink& bus, Operator& person, std::string rs422_path);
    ~LineSetup() override;

    void begin(const BusChoices& choices) override;

    // The RS-422 mode flag: the line was set up here.
    bool rs422_mode() const { return rs422_mode_; }

  private:
    std::optional<Instant> due() const override;
    std::optional<BusCommand> next() override;
    void ended(const BusReply& reply) override;

    Station& station_;
    BusLink& bus_;
    Operator& operator_;
    std::string rs422_path_;
    bool rs422_mode_ = false;
    std::optional<int> probe_;  // that address, when the turn comes
};

}  // namespace ampdesk
