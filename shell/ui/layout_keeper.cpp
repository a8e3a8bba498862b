#include "shell/ui/layout_keeper.h"

#include <QApplication>
#include <QEvent>
#include <QScreen>

namespace ampdesk {

namespace {

Place place_of(const QRect& r) {
    return {r.x(), r.y(), r.width(), r.height()};
}

QRect rectangle_of(const Place& p) {
    return {p.x, p.y, p.width, p.height};
}

// Where the inner part of the main window may stand, its title bar above it.
std::vector<Place> screens() {
    constexpr int k_title_bar = 30;
    std::vector<Place> places;
    for (const QScreen* screen : QApplication::screens())
        places.push_back(place_of(screen->availableGeometry().adjusted(0, k_title_bar, 0, 0)));
    return places;
}

}  // namespace

LayoutKeeper::LayoutKeeper(QMainWindow& main, const std::string& path) : main_(main) {
    const auto layout = read_window_layout(path);
    known_ = layout.has_value();
    if (!known_)
        return;
    read_ = *layout;
    for (const HeadPlace& head : read_.heads) heads_[head.number] = head;
}

void LayoutKeeper::restore_main() {
    if (!known_ || read_.main.width == 0)
        return;
    main_.setGeometry(rectangle_of(clamped(read_.main, screens())));
    if (read_.maximised)
        main_.setWindowState(Qt::WindowMaximized);
}

void LayoutKeeper::follow(QMdiSubWindow& window, const std::string& number) {
    if (const auto kept = heads_.find(number); kept != heads_.end())
        restore(window, kept->second);
    else
        heads_[number] = {number, place_of(window.geometry()), false};
    followed_[&window] = number;
    window.installEventFilter(this);
    connect(&window, &QObject::destroyed, this, [this](QObject* gone) { followed_.erase(gone); });
}

void LayoutKeeper::restore(QMdiSubWindow& window, const HeadPlace& kept) {
    const QWidget* area = window.parentWidget();
    window.setGeometry(rectangle_of(clamped(kept.place, {place_of(area->rect())})));
    if (kept.minimised)
        window.showMinimized();
}

bool LayoutKeeper::eventFilter(QObject* watched, QEvent* event) {
    const auto found = followed_.find(watched);
    if (found == followed_.end())
        return false;
    const QEvent::Type type = event->type();
    if (type == QEvent::Move || type == QEvent::Resize || type == QEvent::WindowStateChange) {
        const auto& window = *static_cast<QMdiSubWindow*>(watched);
        HeadPlace& head = heads_[found->second];
        head.minimised = window.isMinimized();
        // The place of an icon or of a maximised window is none to come back to.
        if (!window.isMinimized() && !window.isMaximized() && !window.isShaded())
            head.place = place_of(window.geometry());
    }
    return false;
}

WindowLayout LayoutKeeper::layout() const {
    WindowLayout layout;
    const bool large = main_.isMaximized() || main_.isFullScreen();
    layout.main =
        place_of(large && main_.normalGeometry().isValid() ? main_.normalGeometry() : main_.geometry());
    layout.maximised = large;
    for (const auto& [number, head] : heads_) layout.heads.push_back(head);
    return layout;
}

}  // namespace ampdesk
