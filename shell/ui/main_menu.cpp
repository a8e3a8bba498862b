#include "shell/ui/main_menu.h"

#include <QApplication>
#include <QMenu>
#include <string_view>

namespace ampdesk {

namespace {

// A dialog or box that waits for an answer keeps mouse and keyboard off the menu, but assistive technology
// reaches past it: what it stands for could be closed under it, or opened a second time.
void trigger(const QMenuBar& bar, QAction& item, const std::function<void()>& click) {
    if (QApplication::activeModalWidget() != nullptr || !bar.isEnabled()) {
        if (item.isCheckable())
            item.toggle();  // back to what it was
        return;
    }
    click();
}

}  // namespace

void MainMenu::add(const Menu& menu) {
    QMenu* made = bar_.addMenu(QLatin1String(menu.caption));
    made->setObjectName(QLatin1String(menu.name));
    fill(*made, menu.array, menu.rows);
}

void MainMenu::fill(QMenu& menu, const char* array, const std::vector<MenuRow>& rows) {
    // An open menu would take the keys that the box waits for. At once is too soon to hide it.
    QObject::connect(
        &menu, &QMenu::aboutToShow, &menu,
        [&menu] {
            if (QApplication::activeModalWidget() != nullptr)
                menu.hide();
        },
        Qt::QueuedConnection);
    int index = 0;
    for (const MenuRow& row : rows) {
        QAction* item = make_item(menu, row);
        item->setObjectName(QStringLiteral("%1(%2)").arg(QLatin1String(array)).arg(index++));
        item->setMenuRole(QAction::NoRole);
        item->setCheckable(row.checkable);
        set_live(menu, *item, row.live);
        if (row.item != nullptr)
            *row.item = item;
    }
}

QAction* MainMenu::make_item(QMenu& menu, const MenuRow& row) {
    if (std::string_view(row.caption) == "-")
        return menu.addSeparator();
    if (row.array != nullptr) {
        QMenu* sub_menu = menu.addMenu(QLatin1String(row.caption));
        fill(*sub_menu, row.array, row.rows);
        return sub_menu->menuAction();
    }
    QAction* item = menu.addAction(QLatin1String(row.caption));
    QObject::connect(item, &QAction::triggered, &menu,
                     [this, item, click = row.click] { trigger(bar_, *item, click); });
    return item;
}

void MainMenu::set_live(QMenu& menu, QAction& item, Live live) {
    switch (live) {
        case Live::always:
            break;
        case Live::with_simulated:
            if (!can_make_faults_) {
                menu.setToolTipsVisible(true);
                item.setToolTip(QStringLiteral("Faults can be made on simulated amplifiers only"));
                item.setWhatsThis(item.toolTip());  // what a screen reader takes for the help
                item.setEnabled(false);
                break;
            }
            [[fallthrough]];
        case Live::with_amplifier:
            needing_amplifier_.push_back(&item);
            item.setEnabled(false);
            break;
        case Live::without_transfer:
            nvram_items_.push_back(&item);
            break;
    }
}

void MainMenu::set_amplifier_open(bool open) {
    for (QAction* item : needing_amplifier_) item->setEnabled(open);
}

void MainMenu::enable_nvram_items(bool enabled) {
    for (QAction* item : nvram_items_) item->setEnabled(enabled);
}

}  // namespace ampdesk
