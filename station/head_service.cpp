#include "station/head_service.h"

#include <utility>

namespace ampdesk {

HeadService::HeadService(Station& station, Tell tell) : station_(station), tell_(std::move(tell)) {
    station_.on_window_created = [this](const std::shared_ptr<ControlHead>& head) { opened(head); };
    station_.on_window_closed = [this](const ControlHead& head) { closed(head); };
}

HeadService::~HeadService() {
    station_.on_window_created = nullptr;
    station_.on_window_closed = nullptr;
}

void HeadService::opened(const std::shared_ptr<ControlHead>& head) {
    const int id = head->identity().id;
    tell_({}, notice::HeadOpened{head->identity(), head->view()});
    heads_[id] = {head, head->views.subscribe([this, id](const HeadView&) { tell_view(id); })};
}

void HeadService::tell_view(int head) {
    const Followed& followed = heads_.at(head);
    tell_("head " + std::to_string(head), notice::HeadChanged{head, followed.head->view(), followed.moves});
}

void HeadService::closed(const ControlHead& head) {
    const int id = head.identity().id;
    heads_.erase(id);
    tell_({}, notice::HeadClosed{id});
}

void HeadService::take(const HeadAct& act) {
    std::visit([this](const auto& one) { on(one); }, act);
}

// The head outlives what it is asked to do, its own closing too.
template <class Action>
void HeadService::with(int head, Action action) {
    if (const auto found = heads_.find(head); found != heads_.end()) {
        const std::shared_ptr<ControlHead> kept = found->second.head;
        action(*kept);
    }
}

void HeadService::on(const act::PressKey& press) {
    with(press.head, [&](ControlHead& head) { head.press_key(press.index, press.did); });
}

void HeadService::on(const act::PressHardKey& press) {
    with(press.head, [&](ControlHead& head) { head.press_hard_key(press.index, press.at); });
}

void HeadService::on(const act::ClickLamp& click) {
    with(click.head, [&](ControlHead& head) { head.click_lamp(click.index, click.did, click.at); });
}

// Where the bar stands now is told in any case: the window's goes back when the head did not take the move.
void HeadService::on(const act::MoveScrollBar& move) {
    with(move.head, [&](ControlHead& head) {
        ++heads_.at(move.head).moves;
        head.move_scroll_bar(move.value, move.bar);
        tell_view(move.head);
    });
}

void HeadService::on(const act::SetLook& set) {
    with(set.head, [&](ControlHead& head) { head.apply_screen_settings(set.look); });
}

void HeadService::on(const act::SetActive& active) {
    int slot = 0;
    with(active.head, [&](const ControlHead& head) { slot = head.identity().slot; });
    station_.set_active(slot);
}

void HeadService::on(const act::CloseHead& close) {
    with(close.head, [&](const ControlHead& head) { station_.close_window(head.identity().slot); });
}

void HeadService::on(const act::SaveHead& save) {
    with(save.head, [&](const ControlHead& head) { station_.save(head); });
}

}  // namespace ampdesk
