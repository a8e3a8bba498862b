// Arranging the amplifier windows inside the main window. Minimised ones stay icons, in a row at the
// bottom; a maximised one becomes a normal window again.
#pragma once

#include <QList>
#include <QMdiArea>
#include <QMdiSubWindow>

namespace ampdesk {

// The codes of the multiple-document arrange operation.
enum class Arrangement { cascade = 0, tile_horizontally = 1, tile_vertically = 2, icons = 3 };

// `windows` in the order in which they are to stand: bands from the top, columns from the left, or
// a pile with the last one on top.
void arrange(const QMdiArea& area, const QList<QMdiSubWindow*>& windows, Arrangement how);

}  // namespace ampdesk
