// The menu tree of the main window: its captions and names as one table, and which items live.
#pragma once

#include <QAction>
#include <QMenuBar>
#include <functional>
#include <vector>

namespace ampdesk {

// Called with the index of the clicked item within its menu array. The items of an array without a
// handler sleep.
struct MenuHandlers {
    std::function<void(int)> mnuMachineItem_Click;
    std::function<void(int)> mnuModemItem_Click;
    std::function<void(int)> mnuModemOpt_Click;
    std::function<void(int)> mnuToolsItem_Click;
    std::function<void(int)> mnuToolsScreen_Click;
    std::function<void(int)> mnuToolsSram_Click;
    std::function<void(int)> mnuWinItem_Click;
    std::function<void(int)> mnuHelpItem_Click;
    bool can_make_faults = false;  // the amplifiers are simulated
};

class MainMenu {
  public:
    MainMenu(QMenuBar& bar, const MenuHandlers& handlers);

    // The items that need an open amplifier live or sleep.
    void set_amplifier_open(bool open);

    // Both items of mnuToolsSram.
    void enable_nvram_items(bool enabled);

  private:
    std::vector<QAction*> needing_amplifier_;
    std::vector<QAction*> nvram_items_;
};

}  // namespace ampdesk
