// The menus of the main window, made of tables of rows: a row holds its caption, what it does and when
// it lives.
#pragma once

#include <QAction>
#include <QMenuBar>
#include <functional>
#include <vector>

namespace ampdesk {

enum class Live {
    always,
    with_amplifier,
    with_simulated,    // as with_amplifier, but real ones have no such function
    without_transfer,  // while no nvRam transfer is open
};

struct MenuRow {
    const char* caption;  // "-" is a separator
    std::function<void()> click{};
    Live live = Live::always;
    bool checkable = false;
    QAction** item = nullptr;     // given the item, for whoever changes it later
    const char* array = nullptr;  // of the rows of a submenu, as in Menu
    std::vector<MenuRow> rows{};
};

struct Menu {
    const char* name;  // object name
    const char* caption;
    const char* array;  // object names of the items are array(0), array(1) …, separators counted
    std::vector<MenuRow> rows{};
};

class MainMenu {
  public:
    // `can_make_faults`: the amplifiers are simulated.
    MainMenu(QMenuBar& bar, bool can_make_faults) : bar_(bar), can_make_faults_(can_make_faults) {}

    // Appends the menu to the bar. What its rows call stays valid as long as the bar.
    void add(const Menu& menu);

    // The items that need an open amplifier live or sleep.
    void set_amplifier_open(bool open);

    // Both items of mnuToolsSram.
    void enable_nvram_items(bool enabled);

  private:
    void fill(QMenu& menu, const char* array, const std::vector<MenuRow>& rows);
    QAction* make_item(QMenu& menu, const MenuRow& row);
    void set_live(QMenu& menu, QAction& item, Live live);

    QMenuBar& bar_;
    bool can_make_faults_;
    std::vector<QAction*> needing_amplifier_;
    std::vector<QAction*> nvram_items_;
};

}  // namespace ampdesk
