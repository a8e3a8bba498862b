// Drives a transfer on the terminal line from the event loop.
#pragma once

#include <QObject>
#include <QTimer>
#include <memory>

#include "terminal/transfer_run.h"

namespace ampdesk {

class TransferDriver : public QObject {
    Q_OBJECT

  public:
    // The line stays valid as long as the driver. A driver that ends early gives the line back.
    TransferDriver(TerminalLine& line, std::unique_ptr<Transfer> transfer, QObject* parent);

    // False when the line is closed, unplugged or held by somebody else.
    bool start();

    Transfer& transfer() { return *transfer_; }

  Q_SIGNALS:
    void ticked();
    // The transfer has ended and the line is free again. A box may be opened, and the driver deleted.
    void over();

  private:
    void tick();

    std::unique_ptr<Transfer> transfer_;
    TransferRun run_;
    QTimer timer_;
};

}  // namespace ampdesk
