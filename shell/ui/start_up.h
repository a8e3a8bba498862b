// What start-up settles with the operating system before there is a window: the program's folder,
// one instance a folder, the shipped data, and signals that end the program.
#pragma once

#include <QLockFile>
#include <QObject>
#include <QString>
#include <QStringList>
#include <memory>
#include <string>

#include "platform/stop_signals.h"

class QSocketNotifier;

namespace ampdesk {

// The folder to work in: the one asked for, else that of the executable when it can be written and
// holds "rs485.dat" or "ampdesk.dat", else the user's data folder.
QString program_folder(const std::string& asked_for, const QString& executable_folder,
                       const QString& user_data_folder);

// Makes the folder when it is missing and makes it the current directory; false when it cannot be.
bool enter_folder(const QString& folder);

// The first of the folders that holds "mhelp.txt"; the current one when none does.
std::string shipped_folder(const QStringList& candidates);

// Holds the current folder for this process. The hold of a process that has died counts as free.
class InstanceLock {
  public:
    enum class Result {
        taken,
        other_instance,
        impossible,  // the folder takes no lock file: read-only or a full disk
    };
    explicit InstanceLock(const QString& folder);
    Result take();

  private:
    bool holder_is_gone() const;

    QLockFile file_;
};

// Turns the signals that ask a program to end into an ordinary end of the event loop, also of the nested ones
// of open boxes. To be made before anything starts a thread.
class QuitSignals : public QObject {
    Q_OBJECT

  public:
    QuitSignals();
    ~QuitSignals() override;

    // Begins to listen; there is an application object by now.
    void listen();

  private:
    StopSignals signals_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace ampdesk
