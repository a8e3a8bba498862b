#include "shell/ui/main_menu.h"

#include <QApplication>
#include <QMenu>
#include <algorithm>
#include <map>
#include <string_view>

namespace ampdesk {

namespace {

enum class Live {
    always,
    with_amplifier,
    with_simulated,    // as with_amplifier, but real ones have no such function
    without_transfer,  // while no nvRam transfer is open
    not_yet,           // the function behind it is not part of this version
};

struct Item {
    const char* caption;  // "-" is a separator
    Live live = Live::always;
    const char* sub_array = nullptr;  // the menu array of a submenu
    bool checkable = false;
};

struct Array {
    const char* name;     // object names are name(0), name(1) …
    const char* menu;     // object name of a menu in the bar, nothing for a submenu
    const char* caption;  // of the menu
    std::function<void(int)> MenuHandlers::*click;
    std::vector<Item> items;
};

const std::vector<Array>& menu_tree() {
    using enum Live;
    static const std::vector<Array> tree = {
        {"mnuMachineItem",
         "mnuMachine",
         "&Amplifier",
         &MenuHandlers::mnuMachineItem_Click,
         {{"&New"},
          {"&Open"},
          {"&Close", with_amplifier},
          {"-"},
          {"&Save", with_amplifier},
          {"Save &As", with_amplifier},
          {"Sa&ve All", with_amplifier},
          {"-"},
          {"E&xit"}}},
        {"mnuModemItem",
         "mnuModem",
         "Mo&dem",
         &MenuHandlers::mnuModemItem_Click,
         {{"&Auto Answer"},
          {"-"},
          {"&Settings"},
          {"&Options", always, "mnuModemOpt"},
          {"-"},
          {"Sen&d File"},
          {"&Receive File"},
          {"-"},
          {"&Hang Up Phone"}}},
        {"mnuToolsItem",
         "mnuTools",
         "&Tools",
         &MenuHandlers::mnuToolsItem_Click,
         {{"&Amplifier Setup", with_amplifier, "mnuToolsScreen"},
          {"-"},
          {"&Setup_422"},
          {"&Interactive_422"},
          {"nv&Ram Transfer", always, "mnuToolsSram"}}},
        {"mnuWinItem",
         "mnuWin",
         "&Window",
         &MenuHandlers::mnuWinItem_Click,
         {{"Tile &Horizontally", with_amplifier},
          {"&Tile Vertically", with_amplifier},
          {"&Cascade", with_amplifier},
          {"Arrange &Icons", with_amplifier},
          {"-"},
          {"&Close All", with_amplifier}}},
        {"mnuHelpItem",
         "mnuHelp",
         "&Help",
         &MenuHandlers::mnuHelpItem_Click,
         {{"&Contents"}, {"&Index"}, {"&Search For Help On"}, {"-"}, {"&About"}}},
        {"mnuModemOpt",
         nullptr,
         nullptr,
         &MenuHandlers::mnuModemOpt_Click,
         {{"&Volume"},
          {"&Open_log"},
          {"&Close_Log"},
          {"&Show Debug", always, nullptr, true},
          {"-"},
          {"&Null Modem Test"}}},
        {"mnuToolsScreen",
         nullptr,
         nullptr,
         &MenuHandlers::mnuToolsScreen_Click,
         {{"&Screen Settings", with_amplifier}, {"Make A &Fault", with_simulated}}},
        {"mnuToolsSram",
         nullptr,
         nullptr,
         &MenuHandlers::mnuToolsSram_Click,
         {{"&Read nvRam", without_transfer}, {"&Set nvRam", without_transfer}}},
    };
    return tree;
}

const Array& array_named(std::string_view name) {
    const auto& tree = menu_tree();
    return *std::find_if(tree.begin(), tree.end(), [&](const Array& array) { return array.name == name; });
}

// `changing` gets the items that do not always live or always sleep.
using Changing = std::map<Live, std::vector<QAction*>>;

// A dialog or box that waits for an answer keeps mouse and keyboard off the menu, but assistive technology
// reaches past it: what it stands for could be closed under it, or opened a second time.
void trigger(QAction& action, const std::function<void(int)>& click, int index) {
    if (QApplication::activeModalWidget() == nullptr)
        click(index);
    else if (action.isCheckable())
        action.toggle();  // back to what it was
}

void fill(QMenu& menu, const Array& array, const MenuHandlers& handlers, Changing& changing) {
    // An open menu would take the keys that the box waits for. At once is too soon to hide it.
    QObject::connect(
        &menu, &QMenu::aboutToShow, &menu,
        [&menu] {
            if (QApplication::activeModalWidget() != nullptr)
                menu.hide();
        },
        Qt::QueuedConnection);
    for (int i = 0; i < static_cast<int>(array.items.size()); ++i) {
        const Item& item = array.items[static_cast<std::size_t>(i)];
        QAction* action = nullptr;
        if (std::string_view(item.caption) == "-") {
            action = menu.addSeparator();
        } else if (item.sub_array != nullptr) {
            QMenu* sub_menu = menu.addMenu(QLatin1String(item.caption));
            fill(*sub_menu, array_named(item.sub_array), handlers, changing);
            action = sub_menu->menuAction();
        } else {
            action = menu.addAction(QLatin1String(item.caption));
            if (const auto& click = handlers.*array.click)
                QObject::connect(action, &QAction::triggered, &menu,
                                 [action, click, i] { trigger(*action, click, i); });
        }
        action->setObjectName(QStringLiteral("%1(%2)").arg(QLatin1String(array.name)).arg(i));
        action->setMenuRole(QAction::NoRole);
        action->setCheckable(item.checkable);
        action->setEnabled(item.live == Live::always || item.live == Live::without_transfer);
        if (item.live == Live::with_simulated && !handlers.can_make_faults) {
            menu.setToolTipsVisible(true);
            action->setToolTip(QStringLiteral("Faults can be made on simulated amplifiers only"));
            action->setWhatsThis(action->toolTip());  // what a screen reader takes for the help
        } else {
            changing[item.live == Live::with_simulated ? Live::with_amplifier : item.live].push_back(action);
        }
    }
}

}  // namespace

MainMenu::MainMenu(QMenuBar& bar, const MenuHandlers& handlers) {
    Changing changing;
    for (const Array& array : menu_tree()) {
        if (array.menu == nullptr)
            continue;
        QMenu* menu = bar.addMenu(QLatin1String(array.caption));
        menu->setObjectName(QLatin1String(array.menu));
        fill(*menu, array, handlers, changing);
    }
    needing_amplifier_ = changing[Live::with_amplifier];
    nvram_items_ = changing[Live::without_transfer];
}

void MainMenu::set_amplifier_open(bool open) {
    for (QAction* action : needing_amplifier_) action->setEnabled(open);
}

void MainMenu::enable_nvram_items(bool enabled) {
    for (QAction* action : nvram_items_) action->setEnabled(enabled);
}

}  // namespace ampdesk
