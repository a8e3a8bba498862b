// The program: settles folder, lock and configuration, and wires the serial port or the simulated
// bus, the station and the main window together. Nothing else knows which port it is.
#include <QApplication>
#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>
#include <iostream>

#include "demo/demonstration.h"
#include "demo/sim_port.h"
#include "platform/clock.h"
#include "platform/line_wait.h"
#include "platform/qt/list_names.h"
#include "platform/qt/qt_operator.h"
#include "platform/qt/text.h"
#include "platform/run_time_error.h"
#include "platform/serial_port.h"
#include "shell/demo_simulator.h"
#include "shell/program_options.h"
#include "shell/ui/MDIForm1.h"
#include "shell/ui/program_icon.h"
#include "shell/ui/start_up.h"
#include "station/station_thread.h"

using namespace ampdesk;

namespace {

constexpr int k_failed = 1;
constexpr int k_bad_arguments = 2;

// The bus port of this run: the real line, or the simulated bus with its amplifiers.
class BusPort {
  public:
    BusPort(Clock& clock, std::optional<int> demo_amplifiers) : bus_(clock) {
        if (demo_amplifiers) {
            add_demonstration(bus_, *demo_amplifiers);
            port_ = std::make_unique<demo::SimPort>(bus_, clock);
            simulator_ = std::make_unique<DemoSimulator>(bus_);
        } else {
            port_ = make_serial_port(clock);
        }
    }
    SerialPort& port() { return *port_; }
    Simulator* simulator() const { return simulator_.get(); }  // null with the real line

  private:
    demo::SimBus bus_;
    std::unique_ptr<SerialPort> port_;
    std::unique_ptr<DemoSimulator> simulator_;
};

// Runs in the program's folder, which is the current one and is this process's alone.
int run_station(const CommandLine& line, QtOperator& person, bool locked) {
    const std::unique_ptr<Clock> system_clock = make_system_clock();
    Clock& clock = *system_clock;
    const QString beside = QCoreApplication::applicationDirPath();
    ProgramOptions options = program_options(
        line, read_site_configuration("ampdesk.ini"),
        shipped_folder({beside + QStringLiteral("/../share/ampdesk"), QStringLiteral(AMPDESK_DATA_DIR)}),
        locked);
    options.window.version = AMPDESK_VERSION;
    BusPort bus_port(clock, line.demo);
    Talk talk;
    const std::unique_ptr<SerialPort> MSComm1 = line.demo ? nullptr : make_serial_port(clock);
    StationHost station(talk, {bus_port.port(), MSComm1.get(), bus_port.simulator()}, clock, options.station);
    const std::unique_ptr<LineWait> wait = make_line_wait(clock);
    MDIForm1 form(talk, clock, person, options.window);
    person.set_parent_window(&form);
    StationThread thread(talk, station, *wait);
    form.show();

    // Boxes belong inside the event loop, where a signal to quit closes them.
    QTimer::singleShot(0, &form, &MDIForm1::load);
    const int result = QApplication::exec();
    person.retire();
    form.shut_down();
    thread.end();
    return result;
}

int run_in(const QString& folder, const CommandLine& line, QtOperator& person) {
    if (!enter_folder(folder)) {
        person.ask({.text = "The program's folder cannot be used", .detail = folder.toStdString()});
        return k_failed;
    }
    InstanceLock lock(folder);
    const InstanceLock::Result taken = lock.take();
    if (taken == InstanceLock::Result::other_instance) {
        person.ask({.text = "This program is already running"});
        return k_failed;
    }
    return run_station(line, person, taken == InstanceLock::Result::taken);
}

int run_demonstration(CommandLine line, QtOperator& person) {
    const QTemporaryDir folder;
    if (!folder.isValid()) {
        person.ask(
            {.text = "The program's folder cannot be used", .detail = folder.errorString().toStdString()});
        return k_failed;
    }
    try {
        line.amplifier_files = demo::write_demonstration_files(folder.path().toStdString(), *line.demo);
    } catch (const RunTimeError& error) {
        person.ask({.text = error.what(), .detail = folder.path().toStdString()});
        return k_failed;
    }
    const int result = run_in(folder.path(), line, person);
    QDir::setCurrent(QDir::rootPath());
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    CommandLine line = parse_command_line(std::vector<std::string>(argv + 1, argv + argc));
    if (!line.error.empty()) {
        std::cerr << "ampdesk: " << line.error << "\n";
        return k_bad_arguments;
    }
    if (line.help || line.version) {
        std::cout << (line.help ? usage_text() : "ampdesk " AMPDESK_VERSION "\n");
        return 0;
    }

    QuitSignals signals;
    int own_arguments = 1;  // the rest has been read above
    const QApplication application(own_arguments, argv);
    QApplication::setApplicationName(QStringLiteral("ampdesk"));
    QApplication::setWindowIcon(program_icon());
    name_lists_by_their_labels();
    QApplication::setApplicationVersion(QStringLiteral(AMPDESK_VERSION));

    signals.listen();  // also to end the boxes below

    QtOperator person;
    if (line.demo)
        return run_demonstration(line, person);
    return run_in(program_folder(line.folder, QCoreApplication::applicationDirPath(),
                                 QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)),
                  line, person);
}
