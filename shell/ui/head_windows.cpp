#include "shell/ui/head_windows.h"

#include <QProxyStyle>
#include <algorithm>
#include <utility>

namespace ampdesk {

namespace {

// An icon has room for the whole caption, as its number is at the end.
class IconStyle : public QProxyStyle {
  public:
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override {
        const int width = QProxyStyle::pixelMetric(metric, option, widget);
        return metric == PM_MdiSubWindowMinimizedWidth ? std::max(width, 250) : width;
    }
};

}  // namespace

HeadWindows::HeadWindows(QMdiArea& area, LayoutKeeper& layout, GaugeRange gauge, const Clock& clock,
                         std::function<void(const HeadAct&)> send)
    : area_(area),
      layout_(layout),
      gauge_(gauge),
      clock_(clock),
      send_(std::move(send)),
      icon_style_(new IconStyle) {
    connect(&area_, &QMdiArea::subWindowActivated, this, &HeadWindows::changed);
    connect(this, &HeadWindows::changed, this, [this] {
        const frmMachine* machine = active();
        const int head = machine != nullptr ? machine->identity().id : 0;
        if (std::exchange(active_, head) != head)
            send_(act::SetActive{head});
    });
}

// The sub-windows go with the area, which may outlive this.
HeadWindows::~HeadWindows() {
    for (frmMachine* machine : machines_) machine->hooks = {};
    area_.disconnect(this);
}

frmMachine* HeadWindows::find(int head) const {
    const auto found = std::find_if(machines_.begin(), machines_.end(),
                                    [&](const frmMachine* m) { return m->identity().id == head; });
    return found != machines_.end() ? *found : nullptr;
}

void HeadWindows::forget(const frmMachine* machine) {
    std::erase(machines_, machine);
    Q_EMIT changed();
}

void HeadWindows::show(const HeadNotice& notice) {
    std::visit([this](const auto& one) { on(one); }, notice);
}

void HeadWindows::on(const notice::HeadOpened& opened) {
    const int id = opened.identity.id;
    auto* machine = new frmMachine(opened.identity, opened.view, gauge_);
    const auto send = [this](const HeadAct& act) { send_(act); };
    machine->hooks = {.key =
                          [=](int key, const std::string& did) {
                              send(act::PressKey{id, static_cast<std::int16_t>(key), did});
                          },
                      .hard_key =
                          [=, this](int key) {
                              send(act::PressHardKey{id, static_cast<std::int16_t>(key), clock_.now()});
                          },
                      .lamp =
                          [=, this](int lamp, const std::string& did) {
                              send(act::ClickLamp{id, static_cast<std::int16_t>(lamp), did, clock_.now()});
                          },
                      .scroll =
                          [=](int value, const ScrollBar& bar) {
                              send(act::MoveScrollBar{id, value, bar});
                          },
                      .close =
                          [=, this] {
                              send(act::CloseHead{id});
                              forget(machine);
                          }};
    connect(&machine->panel_view(), &PanelView::scroll_shown, this, &HeadWindows::changed);
    QMdiSubWindow* window = area_.addSubWindow(machine);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setStyle(icon_style_.get());
    connect(window, &QMdiSubWindow::windowStateChanged, this, &HeadWindows::changed);
    machines_.push_back(machine);
    window->show();
    layout_.follow(*window, opened.identity.number);
    machine->setFocus();
    Q_EMIT changed();
}

void HeadWindows::on(const notice::HeadChanged& changed) {
    if (frmMachine* machine = find(changed.head))
        machine->show_view(changed.view, changed.moves);
}

void HeadWindows::on(const notice::HeadClosed& closed) {
    if (frmMachine* machine = find(closed.head)) {
        machine->hooks = {};
        machine->parentWidget()->close();
        forget(machine);
    }
}

frmMachine* HeadWindows::active() const {
    const QMdiSubWindow* current = area_.currentSubWindow();
    auto* machine = current != nullptr ? qobject_cast<frmMachine*>(current->widget()) : nullptr;
    const bool open = std::find(machines_.begin(), machines_.end(), machine) != machines_.end();
    return open ? machine : nullptr;
}

void HeadWindows::arrange(Arrangement how) const {
    QList<QMdiSubWindow*> windows;
    for (const frmMachine* machine : machines_)
        windows << qobject_cast<QMdiSubWindow*>(machine->parentWidget());
    ampdesk::arrange(area_, windows, how);
}

}  // namespace ampdesk
