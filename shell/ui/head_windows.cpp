#include "shell/ui/head_windows.h"

#include <QApplication>
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

// What was pressed while the loop stood still was meant for the panel as it was then.
frmMachine::Hooks HeadWindows::hooks_of(frmMachine* machine) {
    const int id = machine->identity().id;
    const auto pressed_at = [this] { return clock_.now() - stand_still_.age(); };
    const auto was_another = [this, machine](int key) {
        const bool another = machine->was_another(key, stand_still_.age());
        if (another)
            QApplication::beep();
        return another;
    };
    frmMachine::Hooks hooks;
    hooks.key = [=, this](int key, const std::string& did) {
        if (!was_another(key))
            send_(act::PressKey{id, static_cast<std::int16_t>(key), did});
    };
    hooks.hard_key = [=, this](int key) {
        send_(act::PressHardKey{id, static_cast<std::int16_t>(key), pressed_at()});
    };
    hooks.lamp = [=, this](int lamp, const std::string& did) {
        if (!was_another(lamp))
            send_(act::ClickLamp{id, static_cast<std::int16_t>(lamp), did, pressed_at()});
    };
    hooks.scroll = [=, this](int value, const ScrollBar& bar) {
        send_(act::MoveScrollBar{id, value, was_another(frmMachine::k_scroll_bar) ? ScrollBar{} : bar});
    };
    hooks.close = [=, this] {
        send_(act::CloseHead{id});
        forget(machine);
    };
    return hooks;
}

void HeadWindows::on(const notice::HeadOpened& opened) {
    auto* machine = new frmMachine(opened.identity, opened.view, gauge_);
    machine->hooks = hooks_of(machine);
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
