// The control heads as the windows work them: acts go to the head they name, what is to be seen of it goes
// back.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "station/head_talk.h"
#include "station/station.h"

namespace ampdesk {

class HeadService {
  public:
    // A notice with a key is a state, of which the newest counts; one without is an event. Takes the
    // station's on_window_created and on_window_closed until its end.
    using Tell = std::function<void(const std::string& key, HeadNotice notice)>;
    HeadService(Station& station, Tell tell);
    ~HeadService();
    HeadService(const HeadService&) = delete;
    HeadService& operator=(const HeadService&) = delete;

    // One for a head that has closed does nothing.
    void take(const HeadAct& act);

  private:
    void on(const act::PressKey& press);
    void on(const act::PressHardKey& press);
    void on(const act::ClickLamp& click);
    void on(const act::MoveScrollBar& move);
    void on(const act::SetLook& set);
    void on(const act::SetActive& active);
    void on(const act::CloseHead& close);
    void on(const act::CloseAll&) { station_.close_all(); }
    void on(const act::SaveHead& save);
    void on(const act::SaveAs& save) { station_.save_as(save.unit_address, save.path); }
    void on(const act::SaveAll&) { station_.save_all(); }
    void on(const act::OpenFile& open) { station_.open_amplifier_file(open.path); }

    void opened(const std::shared_ptr<ControlHead>& head);
    void closed(const ControlHead& head);
    void tell_view(int head);
    template <class Action>
    void with(int head, Action action);

    Station& station_;
    Tell tell_;
    struct Followed {
        std::shared_ptr<ControlHead> head;
        Subscription views;
        int moves = 0;  // of its scroll bar
    };
    std::map<int, Followed> heads_;  // by their numbers
};

}  // namespace ampdesk
