// How soon the windows answer, in real time: the whole program with 16 amplifiers, on lines that work, fail
// and are flooded. Windows are painted, but on no screen.
//
//   bench_window [--seconds N]
#include <QAction>
#include <QApplication>
#include <QEventLoop>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>

#include "bench/ui/event_loop_probe.h"
#include "bench/ui/far_ends.h"
#include "platform/qt/text.h"
#include "shell/ui/MDIForm1.h"
#include "station/station_thread.h"
#include "terminal/terminal_settings.h"

using namespace ampdesk;
using namespace ampdesk::bench;

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr int k_amplifiers = 16;
constexpr std::size_t k_noise = 1 << 20;

// Messages go to standard error and are not waited for.
class Person : public QtOperator {
  public:
    void tell(const Message& message) override { ask(message); }
    Answer ask(const Message& message) override {
        std::fprintf(stderr, "box: %s %s\n", message.text.c_str(), message.detail.c_str());
        return Answer::ok;
    }
};

// The program as its main() puts it together, in the current folder. What changes there changes here, and
// nowhere else in this file.
class Program {
  public:
    Program(const std::string& bus_device, const std::string& terminal_device)
        : station_(talk_, {*bus_port_, terminal_port_.get()}, clock_,
                   station_options(bus_device, terminal_device)),
          form_(talk_, clock_, person_, form_options()),
          thread_(talk_, station_, *wait_) {
        write_terminal_settings(k_terminal_settings_file, {.port = 2});
        person_.set_parent_window(&form_);
        form_.resize(1300, 860);
        form_.show();
        QTimer::singleShot(0, &form_, &MDIForm1::load);
    }
    ~Program() {
        person_.retire();
        form_.shut_down();
        thread_.end();
    }

    bool all_open() const { return form_.findChildren<frmMachine*>().size() == k_amplifiers; }
    MDIForm1& window() { return form_; }

  private:
    static StationHostOptions station_options(const std::string& bus_device,
                                              const std::string& terminal_device) {
        StationHostOptions options;
        options.bus.ports.set(1, bus_device);
        options.bus.ports.set(2, terminal_device);
        options.heads.negative_words = NegativeWords::two_complement;
        return options;
    }
    static MDIForm1Options form_options() {
        return {.version = "0.0.0",
                .gauge = {30, 60},
                .amplifier_files = demo::write_demonstration_files(".", k_amplifiers)};
    }

    SystemClock clock_;
    Person person_;
    const std::unique_ptr<SerialPort> bus_port_ = make_serial_port(clock_);
    const std::unique_ptr<SerialPort> terminal_port_ = make_serial_port(clock_);
    Talk talk_;
    StationHost station_;
    const std::unique_ptr<LineWait> wait_ = make_line_wait(clock_);
    MDIForm1 form_;
    StationThread thread_;
};

// Gives up after the limit.
bool run_until(const std::function<bool()>& condition, Duration limit) {
    const Instant end = std::chrono::steady_clock::now() + limit;
    QEventLoop loop;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &loop, [&] {
        if (condition() || std::chrono::steady_clock::now() >= end)
            loop.quit();
    });
    look.start(milliseconds(20));
    loop.exec();
    return condition();
}

void run_for(Duration time) {
    run_until([] { return false; }, time);
}

template <class T>
T& part(QObject& whole, const char* name) {
    if (auto* found = whole.findChild<T*>(QLatin1String(name)))
        return *found;
    throw std::runtime_error(std::string("there is no ") + name);
}

// Answers the dialogs between the menu item and the progress window: the line as it is, a new file.
void begin_transfer(MDIForm1& window) {
    QTimer hand;
    QObject::connect(&hand, &QTimer::timeout, &hand, [] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr)
            return;
        if (auto* files = qobject_cast<QFileDialog*>(dialog)) {
            part<QLineEdit>(*files, "fileNameEdit").setText(QStringLiteral("nvram.txt"));
            dialog->accept();
        } else {
            part<QPushButton>(*dialog, "cmdOk").click();
        }
    });
    hand.start(milliseconds(20));
    part<QAction>(window, "mnuToolsSram(0)").trigger();
    run_until([&] { return window.findChild<QDialog*>(QStringLiteral("frmBlock")) != nullptr; }, seconds(10));
    part<QPushButton>(part<QDialog>(window, "frmBlock"), "cmdOk").click();
}

struct Scenario {
    const char* name;
    std::function<void()> begin = [] {};
    std::function<void()> end = [] {};
};

void measure(const Scenario& scenario, Duration time) {
    EventLoopProbe probe;
    scenario.begin();
    probe.start();
    run_for(time);
    probe.stop();
    std::printf("| %s | %.1f | %.1f | %.1f |\n", scenario.name, probe.wait_ms(0.5), probe.wait_ms(0.99),
                probe.wait_ms(1.0));
    std::fflush(stdout);
    scenario.end();
}

int run(Duration time) {
    AmplifierLine amplifiers(k_amplifiers, "bus");
    NoisyLine noise;
    Program program("bus", noise.device());
    MDIForm1& window = program.window();
    if (!run_until([&] { return program.all_open(); }, seconds(120)))
        throw std::runtime_error("not all amplifiers could be opened");
    part<QAction>(window, "mnuWinItem(0)").trigger();  // side by side, so that all are seen

    const Scenario scenarios[] = {
        {.name = "all answer"},
        {.name = "one falls silent",
         .begin = [&] { amplifiers.fault("@5 silent on"); },
         .end = [&] { amplifiers.fault("silent off"); }},
        {.name = "all fall silent",
         .begin = [&] { amplifiers.fault("silent on"); },
         .end = [&] { amplifiers.fault("silent off"); }},
        {.name = "the line is unplugged",
         .begin = [&] { amplifiers.unplug(); },
         .end = [&] { amplifiers.plug_in(); }},
        {.name = "an nvRam transfer",
         .begin = [&] { begin_transfer(window); },
         .end =
             [&] {
                 auto& progress = part<QDialog>(window, "frmBlock");
                 std::fprintf(stderr, "nvRam transfer: %s, %zu bytes\n",
                              part<QLabel>(progress, "lblStatus").text().toStdString().c_str(),
                              static_cast<std::size_t>(std::filesystem::file_size("nvram.txt")));
                 part<QPushButton>(progress, "cmdExit").click();
             }},
        {.name = "1 MB of noise on the terminal's port",
         .begin = [&] { noise.send(k_noise); },
         .end =
             [&] {
                 noise.stop();
                 std::fprintf(stderr, "noise: %zu bytes left after %.1f s\n", noise.left.load(),
                              std::chrono::duration<double>(noise.taken_in).count());
             }},
    };
    std::printf("| ms | median | 99 %% | worst |\n|---|---|---|---|\n");
    for (const Scenario& scenario : scenarios) {
        const auto& trouble = part<QLabel>(window, "TroubleLabel");
        if (!run_until([&] { return trouble.text().isEmpty(); }, seconds(120)))
            throw std::runtime_error("not all amplifiers answer again");
        run_for(seconds(5));
        measure(scenario, time);
    }
    // A remote desktop that stands still, a dialog of the system's.
    amplifiers.take_longest_gap();
    QThread::sleep(static_cast<unsigned long>(std::chrono::ceil<seconds>(time).count()));
    std::printf("\nThe window held up for %.0f s: status of an amplifier asked %.2f s apart at most\n",
                std::chrono::duration<double>(time).count(),
                std::chrono::duration<double>(amplifiers.take_longest_gap()).count());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    double time = 8;
    if (argc == 3 && std::string(argv[1]) == "--seconds")
        time = std::atof(argv[2]);
    if (time <= 0 || (argc != 1 && argc != 3)) {
        std::fprintf(stderr, "Usage: bench_window [--seconds N]\n");
        return 2;
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const QTemporaryDir folder;
    std::filesystem::current_path(folder.path().toStdString());
    int result = 1;
    try {
        result = run(std::chrono::duration_cast<Duration>(std::chrono::duration<double>(time)));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_window: %s\n", error.what());
    }
    std::filesystem::current_path("/");
    return result;
}
