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

frmMachine::frmMachine(std::shared_ptr<ControlHead> head, GaugeRange gauge)
    : head_(std::move(head)), view_(new PanelView(gauge, this)) {
    setObjectName(QStringLiteral("frmMachine"));
    setWindowTitle(from_utf8(head_->caption()));
    setAutoFillBackground(true);
    QPalette colours = palette();
    colours.setColor(QPalette::Window, QColor(0x5B, 0x61, 0x66));
    setPalette(colours);
    setFocusProxy(view_->findChild<PanelKey*>(QStringLiteral("cmdKey(0)")));

    connect(view_, &PanelView::key_clicked, this, &frmMachine::cmdKey_Click);
    connect(view_, &PanelView::hard_key_clicked, this, &frmMachine::cmdHardkey_Click);
    connect(view_, &PanelView::lamp_clicked, this, &frmMachine::picLight_Click);
    connect(view_, &PanelView::scroll_moved, this, &frmMachine::VScroll1_Change);
    head_->panel().on_change = [this] { refresh_soon(); };
    refresh();
}

frmMachine::~frmMachine() {
    if (head_)
        head_->panel().on_change = nullptr;
}

void frmMachine::let_go() {
    if (!head_)
        return;
    head_->panel().on_change = nullptr;
    head_.reset();
}

// What the key did when it was pressed is what the panel shows.
std::string frmMachine::did(int key) const {
    return key >= 0 && key < 4 ? painted_.key_name(key) : std::string();
}

void frmMachine::acted() {
    if (on_act)
        on_act();
}

void frmMachine::cmdKey_Click(int index) {
    if (!head_ || !ok_is_seen(index))
        return;
    head_->press_key(static_cast<std::int16_t>(index), did(index));
    acted();
}

void frmMachine::cmdHardkey_Click(int index) {
    if (!head_)
        return;
    head_->press_hard_key(static_cast<std::int16_t>(index));
    acted();
}

void frmMachine::picLight_Click(int index) {
    if (!head_ || !ok_is_seen(index))
        return;
    head_->click_lamp(static_cast<std::int16_t>(index), did(index));
    acted();
}

void frmMachine::VScroll1_Change(int value) {
    if (!head_)
        return;
    head_->move_scroll_bar(value, painted_.scroll());
    acted();
    refresh_soon();  // the bar goes back when the head did not take the move
}

void frmMachine::refresh_soon() {
    if (refresh_pending_)
        return;
    refresh_pending_ = true;
    QMetaObject::invokeMethod(this, &frmMachine::refresh, Qt::QueuedConnection);
}

void frmMachine::refresh() {
    refresh_pending_ = false;
    if (!head_)
        return;
    painted_ = head_->panel();
    painted_.on_change = nullptr;
    view_->show_panel(painted_);
    follow_shutdown();
}

// The key that turns pages is also the OK of a shutdown. Pressed while the reason was still being read,
// it would acknowledge what nobody has seen.
bool frmMachine::ok_is_seen(int key) {
    if (key != k_more_or_ok || !head_->state().shutdown_shown || ok_seen_)
        return true;
    refresh_soon();
    return false;
}

void frmMachine::follow_shutdown() {
    const bool shown = head_->state().shutdown_shown;
    if (std::exchange(shutdown_painted_, shown) == shown)
        return;
    ok_seen_ = false;
    if (shown)
        QTimer::singleShot(k_old_presses, this, [this] { ok_seen_ = shutdown_painted_; });
}

QSize frmMachine::sizeHint() const {
    return view_->size() + QSize(2 * k_surround, 2 * k_surround);
}

void frmMachine::resizeEvent(QResizeEvent*) {
    Form_Resize();
}

void frmMachine::Form_Resize() {
    if (isMinimized())
        return;
    view_->move(std::max(0, (width() - view_->width()) / 2), std::max(0, (height() - view_->height()) / 2));
}

void frmMachine::closeEvent(QCloseEvent* event) {
    closing_ = true;
    if (const auto head = head_; head && on_close)
        on_close(*head);
    event->accept();
}

}  // namespace ampdesk
