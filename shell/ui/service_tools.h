// The service tools behind the Tools menu: the window of the nvRam transfer, and the command console.
#pragma once

#include <QPointer>
#include <functional>

#include "platform/dialogs.h"
#include "station/tool_talk.h"
#include "tools/ui/frmBlock.h"
#include "tools/ui/frmIntact.h"

namespace ampdesk {

class ServiceTools {
  public:
    struct Hooks {
        std::function<std::int16_t()> unit_address;    // of the current amplifier
        std::function<bool()> rs422_mode;              // the bus line was set up by Setup_422
        std::function<void()> set_up_line;             // shows that dialog until it has closed
        std::function<void(bool)> enable_nvram_items;  // both items of mnuToolsSram
        std::function<void(const ToolAct&)> send;
    };

    // `window` is the main window, in front of which the tools stand.
    ServiceTools(QWidget& window, Dialogs& person, Hooks hooks);
    ~ServiceTools();
    ServiceTools(const ServiceTools&) = delete;
    ServiceTools& operator=(const ServiceTools&) = delete;

    // Tools > nvRam Transfer. The items sleep from here on until the station says that there is none.
    void transfer_nvram(NvramTransfer::Mode mode);

    // Tools > Interactive_422; a console that is open comes to the front.
    void interactive();

    void take(const ToolNotice& notice);

    // Ends a transfer that is going on and closes both windows.
    void close();

  private:
    void on(const notice::NvramState& state);
    void on(const notice::ConsoleSending&);
    void on(const notice::ConsoleResult& result);
    void open_block(const NvramPanel& panel);

    QWidget& window_;
    Dialogs& operator_;
    const Hooks hooks_;
    CommandHistory history_;  // from one opening of its window to the next
    bool beginning_ = false;  // a transfer that has no window yet
    QPointer<frmBlock> block_;
    QPointer<frmIntact> intact_;
};

}  // namespace ampdesk
