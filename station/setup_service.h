// The bus setup dialogs on the station's side: what OK does, which line is open afterwards, and the file that
// keeps the fields.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "station/setup_talk.h"
#include "station/setups.h"

namespace ampdesk {

struct HeadServices;

class SetupService {
  public:
    // A notice with a key is a state of which only the newest counts; one without is told in its turn.
    using Tell = std::function<void(std::string key, SetupNotice notice)>;

    SetupService(Station& station, HeadServices& services, Tell tell);

    void take(const SetupAct& act);

    // The bus line was set up by Setup_422.
    bool rs422_mode() const { return line_.rs422_mode(); }

  private:
    void on(const act::OpenSetup& open);
    void on(const act::BeginSetup& begin);
    void on(const act::CloseSetup& close);

    Station& station_;
    HeadServices& services_;
    Tell tell_;
    LineSetup line_;
    std::unique_ptr<AmplifierSetup> amplifier_;
    BusSetup* open_ = nullptr;  // one of these two
    bool trying_ = false;       // OK of it has been pressed
    SetupResult result_;        // what that has come to
};

}  // namespace ampdesk
