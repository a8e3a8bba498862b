// Makes the pictures of the manual: runs the station on simulated amplifiers without noise, on a clock
// that stands still between two steps, and takes what its windows show. So the pictures stay true.
//
//   manual_pictures FOLDER
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeWidget>
#include <iostream>

#include "controlhead/ui/frmBand.h"
#include "demo/demonstration.h"
#include "demo/faults.h"
#include "demo/sim_port.h"
#include "demo/ui/frmFault.h"
#include "shell/demo_simulator.h"
#include "shell/ui/MDIForm1.h"
#include "shell/ui/program_icon.h"
#include "station/station_host.h"
#include "terminal/ui/ConfigScrn.h"
#include "tests/support/manual_clock.h"

using namespace ampdesk;

namespace {

using std::chrono::milliseconds;

constexpr int k_exit = 4;
constexpr int k_more = 3;

void choose(MDIForm1& form, const char* item) {
    form.findChild<QAction*>(QLatin1String(item))->trigger();
}

// Chooses the file that the studio has named.
class Person : public QtOperator {
  public:
    std::optional<std::string> choose_file_to_save(std::string_view, std::string_view, std::string_view,
                                                   bool) override {
        return file;
    }
    std::string file;
};

class Studio {
  public:
    explicit Studio(const QDir& folder) : folder_(folder) {
        for (int number = 1; number <= 3; ++number) {
            demo::SimModel model = demo::demonstration_model(number);
            model.noise = 0;
            model.warm_up = {};
            bus_.add(model);
        }
        demo::write_demonstration_files(".", 3);
        form_.resize(1300, 860);
        form_.show();
        form_.load();
        steps(20);
        if (host_.station().open_heads().size() != 3)
            throw std::runtime_error("the heads did not open");
    }

    // Half seconds.
    void steps(int count) {
        for (int i = 0; i < count; ++i) {
            QApplication::processEvents();
            const Instant end = clock_.now() + milliseconds(500);
            while (clock_.now() < end) turn(end);
        }
        QApplication::processEvents();
    }

    // Presses keys of that amplifier's head, 0..3 and EXIT, each followed by a second.
    void keys(int amplifier, std::initializer_list<int> pressed) {
        for (const int key : pressed) {
            head(amplifier).press_key(static_cast<std::int16_t>(key));
            steps(2);
        }
    }

    void fault(const char* line) {
        demo::make_fault(bus_, line);
        steps(12);
    }

    void take_panel(int amplifier, const char* name) { save(machine(amplifier).panel_view(), name); }

    void take_main_window(const char* name) {
        steps(2);
        save(form_, name);
    }

    // The fault dialog, with that fault chosen.
    void take_fault_dialog(int amplifier, const char* fault, const char* name) {
        demo::frmFault dialog({.watch = [](auto) {}, .make = [](auto...) {}}, &form_);
        const DemoSimulator simulator(bus_);
        demo::FaultView view{.unit_address = amplifier, .who = simulator.who(amplifier).value_or("")};
        for (const SimulatedFault& active : simulator.faults(amplifier))
            view.faults.push_back({active.title, active.clear});
        dialog.show_for(amplifier);
        dialog.show_faults(view);
        auto* faults = dialog.findChild<QTreeWidget*>();
        faults->setCurrentItem(
            faults->findItems(QLatin1String(fault), Qt::MatchExactly | Qt::MatchRecursive).at(0));
        save(dialog, name);
    }

    // The dialog that the action opens; it is closed again.
    template <class Action>
    void take_dialog(const char* name, Action action) {
        QTimer::singleShot(0, [&] {
            auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            if (dialog == nullptr)
                throw std::runtime_error(name);
            save(*dialog, name);
            dialog->reject();
        });
        action(form_);
    }

    // With the answer to a request for the status.
    void take_console(const char* name) {
        choose(form_, "mnuToolsItem(3)");
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->windowTitle() != u"INTERACTIVE CONTROL")
                continue;
            auto* input = window->findChild<QLineEdit*>(QStringLiteral("TxtInput"));
            input->setText(QStringLiteral("11"));
            window->findChild<QPushButton*>(QStringLiteral("CmdOk"))->click();
            steps(2);
            save(*window, name);
            window->close();
        }
    }

    // After the first blocks of a read.
    void take_transfer(int amplifier, const char* name) {
        const QTemporaryDir folder;
        auto* in_front = qobject_cast<QMdiSubWindow*>(machine(amplifier).parentWidget());
        form_.findChild<QMdiArea*>()->setActiveSubWindow(in_front);
        person_.file = folder.filePath(QStringLiteral("1001.txt")).toStdString();
        QTimer hand;  // keeps the line as it is; the dialog waits for the exchange in hand
        QObject::connect(&hand, &QTimer::timeout, &hand, [this] {
            turn(clock_.now() + milliseconds(5));
            if (const QWidget* dialog = QApplication::activeModalWidget())
                dialog->findChild<QPushButton*>(QStringLiteral("cmdOk"))->click();
        });
        hand.start(20);
        choose(form_, "mnuToolsSram(0)");
        hand.stop();
        QDialog* window = nullptr;
        while ((window = form_.findChild<QDialog*>(QStringLiteral("frmBlock"))) == nullptr) {
            turn(clock_.now() + milliseconds(1));
            QApplication::processEvents();
        }
        window->findChild<QPushButton*>(QStringLiteral("cmdOk"))->click();
        while (!window->findChild<QLabel*>(QStringLiteral("lblStatus"))->text().contains(u"#12")) {
            QApplication::processEvents();
            turn(clock_.now() + milliseconds(1));
        }
        save(*window, name);
    }

  private:
    void save(QWidget& widget, const char* name) {
        QApplication::processEvents();
        const QString path = folder_.filePath(QLatin1String(name) + QStringLiteral(".png"));
        if (!widget.grab().save(path))
            throw std::runtime_error("cannot write " + path.toStdString());
    }

    // One step of the station, and the wait for what comes next.
    void turn(Instant latest) {
        const Instant due = host_.step();
        const Instant next = std::min({due, latest, bus_.next_due().value_or(latest)});
        clock_.sleep_until(std::max(next, clock_.now() + std::chrono::microseconds(100)));
    }

    frmMachine& machine(int amplifier) {
        for (frmMachine* machine : form_.findChildren<frmMachine*>())
            if (machine->identity().unit_address == amplifier)
                return *machine;
        throw std::runtime_error("there is no such window");
    }

    ControlHead& head(int amplifier) {
        return *host_.station().open_heads().at(static_cast<std::size_t>(amplifier - 1));
    }

    static StationHostOptions station_options() {
        StationHostOptions options;
        options.heads.negative_words = NegativeWords::two_complement;
        options.heads.shipped_folder = MANUAL_FOLDER;
        return options;
    }

    QDir folder_;
    ManualClock clock_;
    demo::SimBus bus_{clock_};
    demo::SimPort port_{bus_, clock_};
    Person person_;
    Talk talk_;
    StationHost host_{talk_, {port_}, clock_, station_options()};
    MDIForm1 form_{talk_,
                   clock_,
                   person_,
                   {.version = "1.0.0",
                    .demonstration = true,
                    .gauge = {30, 60},
                    .amplifier_files = {"com1001.dat", "com1002.dat", "com1003.dat"}}};
};

void take_all(const QDir& folder) {
    Studio studio(folder);
    studio.take_main_window("main-window");

    studio.take_panel(3, "front-panel");
    studio.take_panel(3, "status-1");
    studio.keys(3, {k_more});
    studio.take_panel(3, "status-2");
    studio.keys(3, {k_more});
    studio.take_panel(3, "status-3");
    studio.keys(3, {k_more});
    studio.take_panel(3, "status-4");

    studio.keys(3, {1});
    studio.take_panel(3, "events");
    studio.keys(3, {k_exit, 0});
    studio.take_panel(3, "attenuation");
    studio.keys(3, {k_exit, k_exit, k_more, 1});
    studio.take_panel(3, "information");
    studio.keys(3, {0, 2});
    studio.take_panel(3, "help");
    studio.keys(3, {k_exit, k_more, 0});
    studio.steps(1);
    studio.take_panel(3, "warning-levels");

    studio.keys(1, {k_more, 0});
    studio.take_panel(1, "setup-power-save");
    studio.keys(1, {k_more});
    studio.take_panel(1, "setup-switch");
    studio.keys(1, {k_more, k_more});
    studio.take_panel(1, "setup-units");

    studio.fault("@2 helix");
    studio.take_panel(2, "shutdown");
    studio.fault("@2 refuse 4");
    studio.take_fault_dialog(2, "Settings refused", "frm-fault");
    studio.fault("@1 silent on");
    studio.take_panel(1, "communication-error");
    studio.fault("@1 silent off");

    studio.take_dialog("frm-setup", [](MDIForm1& form) { choose(form, "mnuMachineItem(0)"); });
    studio.take_dialog("frm-serial", [](MDIForm1& form) { choose(form, "mnuToolsItem(2)"); });
    studio.take_dialog("frm-color", [](MDIForm1& form) { choose(form, "mnuToolsScreen(0)"); });
    studio.take_dialog("frm-band", [](MDIForm1& form) { frmBand({}, &form).exec(); });
    studio.take_dialog("config-scrn", [](MDIForm1& form) {
        QtOperator person;
        ConfigScrn({}, PortMap(), {1}, person, &form).exec();
    });
    studio.take_console("frm-intact");
    studio.take_transfer(1, "frm-block");
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QApplication::setWindowIcon(program_icon());
    if (argc != 2 || !QDir().mkpath(QString::fromLocal8Bit(argv[1]))) {
        std::cerr << "usage: manual_pictures FOLDER\n";
        return 2;
    }
    const QDir folder(QDir(QString::fromLocal8Bit(argv[1])).absolutePath());
    const QTemporaryDir work;
    QDir::setCurrent(work.path());
    try {
        take_all(folder);
    } catch (const std::exception& error) {
        std::cerr << "manual_pictures: " << error.what() << "\n";
        return 1;
    }
    QDir::setCurrent(QDir::rootPath());
    return 0;
}
