#include "shell/ui/arrange.h"

#include <QStyle>
#include <algorithm>

namespace ampdesk {

namespace {

// Sets the icons in a row along the bottom, further rows above it; returns the height they take.
int place_icons(const QRect& room, const QList<QMdiSubWindow*>& icons) {
    int x = room.left();
    int bottom = room.bottom() + 1;
    int used = 0;
    for (QMdiSubWindow* icon : icons) {
        if (x > room.left() && x + icon->width() > room.right() + 1) {
            x = room.left();
            bottom -= icon->height();
        }
        icon->move(x, bottom - icon->height());
        used = std::max(used, room.bottom() + 1 - icon->y());
        x += icon->width();
    }
    return used;
}

void cascade(const QRect& room, const QList<QMdiSubWindow*>& windows) {
    QPoint place = room.topLeft();
    for (QMdiSubWindow* window : windows) {
        const int step = window->style()->pixelMetric(QStyle::PM_TitleBarHeight) + 4;
        const QSize size = window->sizeHint().boundedTo(room.size());
        if (place.y() + size.height() > room.bottom() + 1)
            place.setY(room.top());
        if (place.x() + size.width() > room.right() + 1)
            place.setX(room.left());
        window->setGeometry(QRect(place, size));
        window->raise();
        place += QPoint(step, step);
    }
}

}  // namespace

void arrange(const QMdiArea& area, const QList<QMdiSubWindow*>& windows, Arrangement how) {
    QList<QMdiSubWindow*> icons;
    QList<QMdiSubWindow*> open;
    for (QMdiSubWindow* window : windows) {
        if (window->isMinimized()) {
            icons << window;
        } else if (how != Arrangement::icons) {
            if (window->isMaximized())
                window->showNormal();
            open << window;
        }
    }
    QRect room = area.viewport()->rect();
    room.setHeight(room.height() - place_icons(room, icons));
    if (how == Arrangement::cascade) {
        cascade(room, open);
        return;
    }
    // Every window gets its share, the rounding spread over them.
    const auto count = static_cast<int>(open.size());
    for (int i = 0; i < count; ++i) {
        QRect share = room;
        if (how == Arrangement::tile_horizontally) {
            share.setTop(room.top() + room.height() * i / count);
            share.setBottom(room.top() + room.height() * (i + 1) / count - 1);
        } else {
            share.setLeft(room.left() + room.width() * i / count);
            share.setRight(room.left() + room.width() * (i + 1) / count - 1);
        }
        open[i]->setGeometry(share);
    }
}

}  // namespace ampdesk
