#include "terminal/ui/transfer_driver.h"

namespace ampdesk {

TransferDriver::TransferDriver(TerminalLine& line, std::unique_ptr<Transfer> transfer, QObject* parent)
    : QObject(parent), transfer_(std::move(transfer)), run_(line, *transfer_) {
    connect(&timer_, &QTimer::timeout, this, &TransferDriver::tick);
}

bool TransferDriver::start() {
    if (!run_.start())
        return false;
    timer_.start(TransferRun::k_tick);
    return true;
}

void TransferDriver::tick() {
    run_.tick();
    Q_EMIT ticked();
    if (!run_.over())
        return;
    timer_.stop();
    QMetaObject::invokeMethod(this, &TransferDriver::over, Qt::QueuedConnection);
}

}  // namespace ampdesk
