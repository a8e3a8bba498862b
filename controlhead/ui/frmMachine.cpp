#include "controlhead/ui/frmMachine.h"

#include <QCloseEvent>
#include <QTimer>
#include <algorithm>
#include <utility>

#include "platform/qt/text.h"

namespace ampdesk {

namespace {

constexpr int k_surround = 10;  // pixels around the panel in a window of its natural size
constexpr int k_more_or_ok = 3;

// Time enough for the event loop to come to what was pressed while it did not turn.
constexpr std::chrono::milliseconds k_old_presses{10};

}  // namespace

frmMachine::frmMachine(HeadIdentity identity, const HeadView& view, GaugeRange gauge)
    : identity_(std::move(identity)), view_of_panel_(new PanelView(gauge, this)) {
    setObjectName(QStringLiteral("frmMachine"));
    setWindowTitle(from_utf8(caption(identity_)));
    setAutoFillBackground(true);
    QPalette colours = palette();
    colours.setColor(QPalette::Window, QColor(0x5B, 0x61, 0x66));
    setPalette(colours);
    setFocusProxy(view_of_panel_->findChild<PanelKey*>(QStringLiteral("cmdKey(0)")));

    connect(view_of_panel_, &PanelView::key_clicked, this, &frmMachine::cmdKey_Click);
    connect(view_of_panel_, &PanelView::hard_key_clicked, this, &frmMachine::cmdHardkey_Click);
    connect(view_of_panel_, &PanelView::lamp_clicked, this, &frmMachine::picLight_Click);
    connect(view_of_panel_, &PanelView::scroll_moved, this, &frmMachine::VScroll1_Change);
    show_view(view, 0);
}

// What the key did when it was pressed is what the panel shows.
std::string frmMachine::did(int key) const {
    return key >= 0 && key < 4 ? view_.panel.key_name(key) : std::string();
}

void frmMachine::cmdKey_Click(int index) {
    if (!closing_ && ok_is_seen(index) && hooks.key)
        hooks.key(index, did(index));
}

void frmMachine::cmdHardkey_Click(int index) {
    if (!closing_ && hooks.hard_key)
        hooks.hard_key(index);
}

void frmMachine::picLight_Click(int index) {
    if (!closing_ && ok_is_seen(index) && hooks.lamp)
        hooks.lamp(index, did(index));
}

void frmMachine::VScroll1_Change(int value) {
    if (closing_ || !hooks.scroll)
        return;
    ++moves_;
    hooks.scroll(value, view_.panel.scroll());
}

void frmMachine::note_changes(const Panel& panel) {
    const auto now = std::chrono::steady_clock::now();
    for (int key = 0; key < 4; ++key)
        if (panel.key_name(key) != view_.panel.key_name(key))
            changed_[key] = now;
    const ScrollBar& bar = panel.scroll();
    const ScrollBar& before = view_.panel.scroll();
    if (bar.visible != before.visible || bar.minimum != before.minimum || bar.maximum != before.maximum)
        changed_[k_scroll_bar] = now;
}

bool frmMachine::was_another(int key, Duration ago) const {
    const auto changed = changed_.find(key);
    return ago > Duration{} && changed != changed_.end() &&
           std::chrono::steady_clock::now() - changed->second < ago;
}

void frmMachine::show_view(const HeadView& view, int moves) {
    note_changes(view.panel);
    view_ = view;
    view_of_panel_->show_panel(view_.panel, moves == moves_);
    follow_shutdown();
}

// The key that turns pages is also the OK of a shutdown. Pressed while the reason was still being read,
// it would acknowledge what nobody has seen.
bool frmMachine::ok_is_seen(int key) const {
    return key != k_more_or_ok || !view_.shutdown_shown || ok_seen_;
}

void frmMachine::follow_shutdown() {
    if (std::exchange(shutdown_painted_, view_.shutdown_shown) == view_.shutdown_shown)
        return;
    ok_seen_ = false;
    if (view_.shutdown_shown)
        QTimer::singleShot(k_old_presses, this, [this] { ok_seen_ = shutdown_painted_; });
}

QSize frmMachine::sizeHint() const {
    return view_of_panel_->size() + QSize(2 * k_surround, 2 * k_surround);
}

void frmMachine::resizeEvent(QResizeEvent*) {
    Form_Resize();
}

void frmMachine::Form_Resize() {
    if (isMinimized())
        return;
    view_of_panel_->move(std::max(0, (width() - view_of_panel_->width()) / 2),
                         std::max(0, (height() - view_of_panel_->height()) / 2));
}

void frmMachine::closeEvent(QCloseEvent* event) {
    if (!std::exchange(closing_, true) && hooks.close)
        hooks.close();
    event->accept();
}

}  // namespace ampdesk
