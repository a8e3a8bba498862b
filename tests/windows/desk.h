// A whole station without hardware: main window, simulated amplifiers, a clock that stands still
// until it is told to move, and a record of the settings that went over the bus.
#pragma once

#include <gtest/gtest.h>

#include <QAccessible>
#include <QComboBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>
#include <functional>

#include "demo/sim_port.h"
#include "shell/demo_simulator.h"
#include "shell/ui/MDIForm1.h"
#include "station/station_host.h"
#include "tests/support/manual_clock.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/sent_frame.h"

namespace ampdesk {

// The operator behind real windows. Told to keep boxes, he opens none: text and detail of each are kept, and
// OK or Yes is pressed.
class DeskOperator : public QtOperator {
  public:
    void tell(const Message& message) override {
        if (!keep(message))
            QtOperator::tell(message);
    }
    void put_question(int number, const Question& question) override {
        if (keep(question.message))
            on_reply(number, {Answer::yes});
        else
            QtOperator::put_question(number, question);
    }
    Answer ask(const Message& message) override {
        return keep(message) ? Answer::ok : QtOperator::ask(message);
    }
    bool keeps = false;
    std::vector<std::string> kept;

  private:
    bool keep(const Message& message) {
        if (keeps)
            kept.push_back(message.text + (message.detail.empty() ? "" : "|") + message.detail);
        return keeps;
    }
};

// Looks for a dialog of that kind and name in front of everything, and acts on it once.
class DialogWatch : public QTimer {
  public:
    template <class Dialog>
    void begin(const char* name, std::function<void(Dialog&)> act) {
        disconnect();
        callOnTimeout([this, name, act = std::move(act)] {
            auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
            if (dialog == nullptr || dialog->objectName() != QLatin1String(name))
                return;
            stop();
            act(*dialog);
        });
        start(1);
    }
};

class Desk : public ::testing::Test {
  protected:
    // Without a port the terminal stays closed, as in the demonstration.
    explicit Desk(SerialPort* terminal_port = nullptr, BusOptions options = {},
                  MDIForm1Options form_options = {.version = "1.2.3",
                                                  .gauge = {30, 60},
                                                  .amplifier_files = {}})
        : host(talk, {port, terminal_port, &simulator}, clock, {.bus = std::move(options)}),
          form(talk, clock, person, std::move(form_options)) {
        std::filesystem::current_path(folder.path());
        person.sound = [this] { ++sounds; };
        link.on_traffic = [this](const BusTraffic& traffic) {
            if (const SentFrame order = traffic.sent ? sent_frame(traffic.bytes) : SentFrame{};
                order.setting())
                settings.push_back(order.command);
        };
        link.open_bus_port("COM1:", 9600, 0, 8, 1);
        // The windows' own thread serves the station, too; whoever waits for a dialog waits for it.
        QObject::connect(&turns, &QTimer::timeout, &form, [this] {
            if (QApplication::activeModalWidget() != nullptr)
                clock.advance(std::chrono::milliseconds(5));
            step();
        });
        turns.start(1);
        form.show();
        activate();
    }
    ~Desk() override {
        EXPECT_FALSE(box_watch.isActive()) << "no box opened";
        EXPECT_FALSE(dialog_watch.isActive()) << "no dialog opened";
        QDir::setCurrent(QDir::rootPath());
    }

    void activate() {
        form.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&form));
    }

    // Hangs an amplifier on the bus and opens its head, number 1000 + address.
    frmMachine& open(int address) {
        bus.add({.address = address, .serial = 1000 + address, .noise = 0});
        station.new_amplifier_window(static_cast<std::int16_t>(address), std::to_string(1000 + address),
                                     "C/KU/X", false);
        let_start();
        return *form.active_machine();
    }

    // The head behind a window.
    std::shared_ptr<ControlHead> head_of(const frmMachine& machine) const {
        for (const auto& head : station.open_heads())
            if (head->identity().id == machine.identity().id)
                return head;
        return nullptr;
    }

    // Not from within another one: what is tried in the middle of an exchange may let events run.
    void step() {
        if (std::exchange(stepping, true))
            return;
        host.step();
        stepping = false;
    }

    // Until windows and station have nothing more to say to each other. The clock stands still.
    void settle() {
        for (int i = 0; i < 4; ++i) {
            step();
            QApplication::processEvents();
        }
    }

    // Until the files are open and every head shows its first screen.
    void let_start() {
        EXPECT_TRUE(comes([this] {
            step();
            return !station.opening_files() &&
                   std::ranges::all_of(station.open_heads(),
                                       [](const auto& head) { return head->started(); });
        }));
        settle();
    }

    template <class T = QWidget>
    static T* child(const QWidget& parent, const char* name) {
        auto* found = parent.findChild<T*>(QLatin1String(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

    void click(const QWidget& parent, const char* name) {
        QTest::mouseClick(child(parent, name), Qt::LeftButton);
        settle();
    }

    // Picks an item of the menus by its object name.
    void pick(const char* item) {
        child<QAction>(form, item)->trigger();
        settle();
    }

    // Types the text in place of what stands in the list's field, then the key.
    void type(const QWidget& parent, const char* list, const char* text, Qt::Key end) {
        auto* field = child<QComboBox>(parent, list);
        field->setFocus();
        field->lineEdit()->selectAll();
        QTest::keyClicks(field, QLatin1String(text));
        QTest::keyClick(field, end);
        settle();
    }

    void key(Qt::Key code, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(QApplication::focusWidget(), code, modifiers);
        settle();
    }

    // Keeps the text of the next message box in `told`, runs the action, then closes the box with
    // Escape. A test whose box never came fails.
    void when_box_opens(const std::function<void(QMessageBox&)>& action = [](QMessageBox&) {}) {
        box_watch.begin<QMessageBox>("", [this, action](QMessageBox& box) {
            told = box.text().toStdString();
            action(box);
            QTest::keyClick(&box, Qt::Key_Escape);
        });
    }

    // Until that box has come and gone.
    void let_box_close() {
        EXPECT_TRUE(soon([this] { return !box_watch.isActive(); }));
        QApplication::processEvents();
    }

    // Types the path into the file dialog that opens next.
    void when_asked_for_a_file(const std::string& path) {
        when_dialog_opens("QFileDialog", [path](QDialog& dialog) {
            EXPECT_TRUE(QTest::qWaitForWindowActive(&dialog));
            auto* name = child<QLineEdit>(dialog, "fileNameEdit");
            name->setFocus();  // else the file that is suggested is chosen
            name->setText(QString::fromStdString(path));
            QTest::keyClick(name, Qt::Key_Return);
        });
    }

    // Runs the action as soon as the dialog of that name is open.
    template <class Dialog = QDialog, class Act>
    void when_dialog_opens(const char* name, Act act) {
        dialog_watch.begin<Dialog>(name, std::move(act));
    }

    // Until it is so; the clock stands still. A slow machine is no fault.
    static bool soon(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 60'000); }
    // Lets the station live until it is so.
    bool comes(const std::function<bool()>& condition) {
        return soon([&] {
            clock.advance(std::chrono::milliseconds(100));
            return condition();
        });
    }

    std::vector<std::string> take_settings() { return std::exchange(settings, {}); }

    ScratchFolder folder;  // the current one
    ManualClock clock;
    demo::SimBus bus{clock};
    demo::SimPort port{bus, clock};
    DemoSimulator simulator{bus};
    DeskOperator person;
    Talk talk;
    StationHost host;
    Station& station = host.station();
    BusLink& link = host.bus();
    MDIForm1 form;

    std::vector<std::string> settings;  // commands of class 16, without their frames
    bool stepping = false;
    int sounds = 0;
    std::string told;
    std::vector<std::string>& kept_boxes = person.kept;
    QTimer turns;
    DialogWatch box_watch;
    DialogWatch dialog_watch;
};

}  // namespace ampdesk
