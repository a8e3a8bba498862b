#include "shell/ui/head_keys.h"

namespace ampdesk {

HeadKeys::HeadKeys(QWidget* window, std::function<frmMachine*()> active_head)
    : QObject(window), window_(window), active_head_(std::move(active_head)) {
    for (int i = 0; i < 4; ++i) {
        add(QKeySequence(Qt::Key_F1 + i), [i](frmMachine& head) { head.cmdKey_Click(i); });
        add(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + i)),
            [i](frmMachine& head) { head.cmdHardkey_Click(i); });
    }
    add(QKeySequence(Qt::Key_Escape), [](frmMachine& head) { head.cmdKey_Click(4); });
    add_scroll(Qt::Key_Up, QAbstractSlider::SliderSingleStepSub);
    add_scroll(Qt::Key_Left, QAbstractSlider::SliderSingleStepSub);
    add_scroll(Qt::Key_Down, QAbstractSlider::SliderSingleStepAdd);
    add_scroll(Qt::Key_Right, QAbstractSlider::SliderSingleStepAdd);
    add_scroll(Qt::Key_PageUp, QAbstractSlider::SliderPageStepSub);
    add_scroll(Qt::Key_PageDown, QAbstractSlider::SliderPageStepAdd);
    follow();
}

void HeadKeys::add(const QKeySequence& key, std::function<void(frmMachine&)> action) {
    auto* shortcut = new QShortcut(key, window_);
    shortcut->setAutoRepeat(false);
    connect(shortcut, &QShortcut::activated, this, [this, action = std::move(action)] {
        if (frmMachine* head = active_head_())
            action(*head);
    });
    keys_.push_back(shortcut);
}

void HeadKeys::add_scroll(Qt::Key key, QAbstractSlider::SliderAction action) {
    auto* shortcut = new QShortcut(QKeySequence(key), window_);
    connect(shortcut, &QShortcut::activated, this, [this, action] {
        if (frmMachine* head = active_head_())
            head->panel_view().scroll_bar().triggerAction(action);
    });
    scroll_keys_.push_back(shortcut);
}

void HeadKeys::follow() {
    frmMachine* head = active_head_();
    const bool scrolling = head != nullptr && !head->panel_view().scroll_bar().isHidden();
    for (QShortcut* key : keys_) key->setEnabled(head != nullptr);
    for (QShortcut* key : scroll_keys_) key->setEnabled(scrolling);
}

}  // namespace ampdesk
