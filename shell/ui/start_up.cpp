#include "shell/ui/start_up.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QSysInfo>

#include "platform/process.h"
#include "platform/qt/text.h"

namespace ampdesk {

QString program_folder(const std::string& asked_for, const QString& executable_folder,
                       const QString& user_data_folder) {
    if (!asked_for.empty())
        return QDir(from_utf8(asked_for)).absolutePath();
    const QDir own(executable_folder);
    const bool in_use = own.exists(QStringLiteral("rs485.dat")) || own.exists(QStringLiteral("ampdesk.dat"));
    return in_use && QFileInfo(executable_folder).isWritable() ? own.absolutePath() : user_data_folder;
}

bool enter_folder(const QString& folder) {
    return QDir().mkpath(folder) && QDir::setCurrent(folder);
}

std::string shipped_folder(const QStringList& candidates) {
    for (const QString& candidate : candidates)
        if (QFileInfo::exists(candidate + QStringLiteral("/mhelp.txt")))
            return QDir(candidate).absolutePath().toStdString();
    return ".";
}

InstanceLock::InstanceLock(const QString& folder) : file_(folder + QStringLiteral("/ampdesk.lock")) {
    file_.setStaleLockTime(0);  // age alone frees nothing: the program is left open for months
}

InstanceLock::Result InstanceLock::take() {
    if (file_.tryLock(0))
        return Result::taken;
    const bool held = file_.error() == QLockFile::LockFailedError && !holder_is_gone();
    return held ? Result::other_instance : Result::impossible;
}

// The hold of a process that has died is taken over by way of a second file, for which there may be no
// room.
bool InstanceLock::holder_is_gone() const {
    qint64 process = 0;
    QString machine;
    QString program;
    return file_.getLockInfo(&process, &machine, &program) &&
           (machine.isEmpty() || machine == QSysInfo::machineHostName()) && process_is_gone(process);
}

QuitSignals::QuitSignals() = default;
QuitSignals::~QuitSignals() = default;

void QuitSignals::listen() {
    if (!signals_)
        return;
    notifier_ = std::make_unique<QSocketNotifier>(signals_.watch_handle(), QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, [this] {
        signals_.take();
        QCoreApplication::exit(0);
    });
}

}  // namespace ampdesk
