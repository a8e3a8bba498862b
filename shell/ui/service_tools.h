// The service tools behind the Tools menu: one nvRam transfer at a time, and the command console.
#pragma once

#include <QPointer>
#include <functional>

#include "platform/qt/qt_operator.h"
#include "station/station.h"
#include "tools/console.h"
#include "tools/ui/frmBlock.h"
#include "tools/ui/frmIntact.h"

namespace ampdesk {

class ServiceTools {
  public:
    struct Hooks {
        std::function<std::int16_t()> unit_address;    // of the current amplifier
        std::function<bool()> rs422_mode;              // the bus line was set up by Setup_422
        std::function<void()> set_up_line;             // shows that dialog
        std::function<void(bool)> enable_nvram_items;  // both items of mnuToolsSram
        std::function<void()> line_wanted;             // the station has something to do
    };

    // `window` is the main window, in front of which the tools stand.
    ServiceTools(QWidget& window, Station& station, BusLink& bus, QtOperator& person, Hooks hooks);
    ~ServiceTools();
    ServiceTools(const ServiceTools&) = delete;
    ServiceTools& operator=(const ServiceTools&) = delete;

    // Tools > nvRam Transfer.
    void transfer_nvram(NvramTransfer::Mode mode);

    // Tools > Interactive_422; a console that is open comes to the front.
    void interactive();

    // Ends a transfer that is going on and closes both windows.
    void close();

  private:
    QWidget& window_;
    Station& station_;
    BusLink& bus_;
    QtOperator& operator_;
    Hooks hooks_;
    Console console_;
    CommandHistory history_;  // from one opening of its window to the next
    QPointer<frmBlock> block_;
    QPointer<frmIntact> intact_;
};

}  // namespace ampdesk
