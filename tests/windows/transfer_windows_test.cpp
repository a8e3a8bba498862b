// The windows of file transfers and of the traffic view, on a scripted line.
#include <gtest/gtest.h>

#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTest>

#include "shell/ui/present.h"
#include "shell/ui/transfer_menu.h"
#include "station/station_host.h"
#include "terminal/xmodem_block.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/scripted_port.h"
#include "tests/windows/spoken.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;

// The menu in front of a station, without a main window.
class TransferWindows : public ::testing::Test {
  protected:
    TransferWindows() {
        use({.port = 2});
        window.show();
    }

    StationHostOptions options() const {
        StationHostOptions all;
        all.heads.folder = folder.path();
        return all;
    }
    void send(const TerminalAct& act) { talk.acts.put(act); }
    void use(const TerminalSettings& settings) {
        send(act::UseTerminalSettings{settings});
        settle();
    }
    // Until windows and station have nothing more to say to each other. The clock stands still.
    void settle() {
        for (int i = 0; i < 3; ++i) {
            host.step();
            for (const Notice& notice : talk.notices.take_all()) {
                if (const auto* told = std::get_if<PersonNotice>(&notice))
                    present(*told, person);
                if (const auto* seen = std::get_if<TerminalNotice>(&notice)) {
                    if (const auto* state = std::get_if<notice::TerminalState>(seen))
                        terminal = state->terminal;
                    menu.take(*seen);
                }
            }
            QApplication::processEvents();
        }
    }
    TransferDialog& open(TransferDirection direction) {
        menu.open_dialog(direction);
        auto* dialog = window.findChild<TransferDialog*>();
        EXPECT_NE(dialog, nullptr);
        return *dialog;
    }
    static QString text(const QWidget& parent, const char* label) {
        return parent.findChild<QLabel*>(QLatin1String(label))->text();
    }
    void click(const QWidget& parent, const char* button) {
        parent.findChild<QAbstractButton*>(QLatin1String(button))->click();
        settle();
    }
    // Lets the clock, the station and the windows' timers run until it is so.
    bool comes(const std::function<bool()>& condition) {
        return QTest::qWaitFor([&] {
            clock.advance(milliseconds(20));
            settle();
            return condition();
        });
    }

    ManualClock clock;
    ScriptedPort port{clock};
    ScriptedPort bus_port{clock};
    RecordingOperator person;
    ScratchFolder folder;
    Talk talk;
    StationHost host{talk, {bus_port, &port}, clock, options()};
    QMainWindow window;
    TerminalView terminal;
    TransferMenu menu{window, terminal, clock, person, [this](const TerminalAct& act) { send(act); }};
};

// Fault: a file is sent but its end not told, the dialog cannot be used twice, or a second one fights
// for the line.
TEST_F(TransferWindows, SendsAFile) {
    person.choices = {folder.put("file", "hello"), folder.put("lines", "one\ntwo\n")};
    TransferDialog& dialog = open(TransferDirection::send);
    port.responder = [](const std::string& sent) {
        return sent == "\x04" || sent.size() == 133 ? ScriptedPort::Answer{{milliseconds(10), "\x06"}}
                                                    : ScriptedPort::Answer{};
    };
    expect_spoken(dialog, QStringLiteral("Send File"));
    click(dialog, "cmdStart");
    EXPECT_TRUE(dialog.running());
    EXPECT_EQ(text(dialog, "lblState"), QStringLiteral("0 bytes of 5, waiting for the other side"));
    EXPECT_EQ(&open(TransferDirection::receive), &dialog);
    port.arrive("C");
    EXPECT_TRUE(comes([&] { return !dialog.running(); }));
    EXPECT_EQ(text(dialog, "lblState"), QStringLiteral("5 bytes sent."));
    click(dialog, "optKind(1)");
    click(dialog, "cmdStart");
    EXPECT_TRUE(comes([&] { return !dialog.running(); }));
    EXPECT_EQ(port.written.back(), "one\r\ntwo\r\n");
    EXPECT_FALSE(terminal.taken);
    EXPECT_EQ(person.take_texts(), std::vector<std::string>{});
}

// Fault: cancelling closes the window before it has said what became of the file; Escape throws an hour's
// transfer away.
TEST_F(TransferWindows, CancelsAndCloses) {
    person.choices = {folder / "file"};
    QPointer<TransferDialog> dialog = &open(TransferDirection::receive);
    click(*dialog, "cmdStart");
    port.arrive(xmodem_block(1, "a", XmodemCheck::crc));
    EXPECT_TRUE(comes([&] { return text(*dialog, "lblState").startsWith(QStringLiteral("128 bytes")); }));
    QTest::keyClick(dialog, Qt::Key_Escape);
    EXPECT_TRUE(dialog->running());
    click(*dialog, "cmdCancel");
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_TRUE(comes([&] { return !dialog->running(); }));
    EXPECT_EQ(text(*dialog, "lblState"), QStringLiteral("Cancelled."));
    EXPECT_FALSE(std::filesystem::exists(folder / "file"));
    click(*dialog, "cmdCancel");
    EXPECT_TRUE(QTest::qWaitFor([&] { return dialog.isNull(); }));
}

// Fault: a received file is lost because the disk was full, is cut or changed, or an old file is
// spoilt by a transfer that failed.
TEST_F(TransferWindows, KeepsAReceivedFile) {
    const std::string old = folder.put("old", "old");
    person.choices = {old, folder / "none/file", folder / "file", folder / "text"};
    TransferDialog& dialog = open(TransferDirection::receive);
    click(dialog, "cmdStart");
    port.arrive("\x18\x18");
    EXPECT_TRUE(comes([&] { return !dialog.running(); }));
    EXPECT_EQ(text(dialog, "lblState"), QStringLiteral("The other side has cancelled."));
    EXPECT_EQ(file_bytes(old), "old");

    click(dialog, "cmdStart");
    port.arrive(xmodem_block(1, "a", XmodemCheck::crc));
    int acknowledged = 0;
    port.responder = [&](const std::string& sent) {  // the end after the block, and again when asked to
        const bool end = sent == "\x15" || (sent == "\x06" && ++acknowledged == 1);
        return ScriptedPort::Answer{{milliseconds(10), end ? "\x04" : ""}};
    };
    EXPECT_TRUE(comes([&] { return !dialog.running() && !person.messages.empty(); }));
    EXPECT_EQ(person.take_texts(), std::vector<std::string>{"Path not found"});
    EXPECT_EQ(file_bytes(folder / "file"), "a" + std::string(127, '\x1A'));
    EXPECT_TRUE(
        text(dialog, "lblState").startsWith(QStringLiteral("128 bytes received. It ends in filling")));

    click(dialog, "optKind(1)");
    click(dialog, "cmdStart");
    port.arrive("line\r\n");
    EXPECT_TRUE(comes([&] { return text(dialog, "lblState").startsWith(QStringLiteral("6 bytes")); }));
    click(dialog, "cmdEnd");
    EXPECT_TRUE(comes([&] { return !dialog.running(); }));
    EXPECT_EQ(file_bytes(folder / "text"), "line\r\n");
}

// Fault: a transfer begins on a line where it cannot work, without a file, or on a line that is not
// free; or nobody says why it does not begin.
TEST_F(TransferWindows, SaysWhyItDoesNotBegin) {
    TransferDialog& dialog = open(TransferDirection::send);
    const std::string huge = folder.put("huge", "");
    std::filesystem::resize_file(huge, Transfer::k_longest_file + 1);
    person.choices = {std::nullopt, folder / "none", huge, folder.put("file", "x")};
    for (int i = 0; i < 3; ++i) click(dialog, "cmdStart");
    EXPECT_EQ(person.take_texts(), (std::vector<std::string>{"File not found", "The file is too long"}));
    use({.port = {}});
    click(dialog, "cmdStart");
    use({.port = 2, .data_bits = 7});
    click(dialog, "cmdStart");
    use({.port = 2, .handshake = Handshake::xon_xoff});
    click(dialog, "cmdStart");
    EXPECT_EQ(person.take_texts(),
              (std::vector<std::string>{"The terminal's port is not open", "XMODEM needs 8 data bits",
                                        "XMODEM does not work with the XON/XOFF handshake"}));
    EXPECT_EQ(person.prompts.size(), 3U);
    // The line goes between the question and the beginning.
    use({.port = 2});
    send(act::UseTerminalSettings{});
    click(dialog, "cmdStart");
    EXPECT_EQ(person.take_texts(), std::vector<std::string>{"The terminal's port is not open"});
    EXPECT_EQ(person.prompts.size(), 4U);
    EXPECT_FALSE(dialog.running());
}

// Fault: a transfer whose dialog was closed before it was known to have begun goes on unseen.
TEST_F(TransferWindows, ATransferHasItsDialog) {
    person.choices = {folder / "file"};
    QPointer<TransferDialog> first = &open(TransferDirection::receive);
    first->findChild<QAbstractButton*>(QStringLiteral("optKind(1)"))->click();
    first->cmdStart_Click();
    first->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(first.isNull());
    settle();
    TransferDialog& second = open(TransferDirection::send);
    EXPECT_TRUE(second.running());
    EXPECT_EQ(second.windowTitle(), QStringLiteral("Receive File"));
    EXPECT_TRUE(second.findChild<QAbstractButton*>(QStringLiteral("cmdEnd"))->isEnabled());
}

class DebugDockTest : public TransferWindows {
  protected:
    void SetUp() override {
        item.setCheckable(true);
        host.bus().open_bus_port("COM1:", 9600, 0, 8, 1);
        toggle();
        dock = window.findChild<DebugDock*>();
        ASSERT_NE(dock, nullptr);
        view = dock->findChild<QPlainTextEdit*>();
    }
    // One exchange with that amplifier.
    void exchange(int unit) {
        bus_port.answer({{milliseconds(40), hex_bytes("06 01 04 11 61 62 63 AB BA")}});
        std::string reply;
        host.bus().bus_command(static_cast<std::int16_t>(unit), "\x11", reply);
        clock.advance(milliseconds(40));
        settle();
    }
    void toggle() {
        menu.toggle_debug(&item);
        settle();
    }
    // The view's lines from the direction on.
    bool shows(const QStringList& lines) {
        const auto shown = [&] {
            QStringList all = view->toPlainText().split(u'\n');
            for (QString& line_text : all) line_text = line_text.mid(14, 18).simplified();
            return all;
        };
        const bool right = QTest::qWaitFor([&] { return shown() == lines; }, 1000);
        EXPECT_TRUE(right) << shown().join(u'|').toStdString();
        return right;
    }

    QAction item;
    DebugDock* dock = nullptr;
    QPlainTextEdit* view = nullptr;
};

// Fault: the view misses or doubles entries when its filter or the pause changes, and saves something
// else than it was asked to show.
TEST_F(DebugDockTest, FiltersPausesAndSaves) {
    exchange(1);
    exchange(2);
    send(act::TypeText{"ATZ\r"});
    settle();
    clock.advance(milliseconds(40));
    const QString one = QStringLiteral("unit 01 sent|unit 01 received");
    const QString two = QStringLiteral("unit 02 sent|unit 02 received");
    const QString typed = QStringLiteral("terminal sent");
    const auto lines = [](const QString& text) { return text.split(u'|'); };
    ASSERT_TRUE(shows(lines(one + u'|' + two + u'|' + typed)));
    for (const auto& [field, label] :
         {std::pair{"cboLine", "Line:"}, {"cboDirection", "Direction:"}, {"spnUnit", "Unit:"}})
        EXPECT_EQ(QAccessible::queryAccessibleInterface(dock->findChild<QWidget*>(QLatin1String(field)))
                      ->text(QAccessible::Name),
                  QLatin1String(label));
    dock->findChild<QSpinBox*>()->setValue(2);
    EXPECT_TRUE(shows(lines(two)));
    click(*dock, "cmdPause");
    exchange(2);
    dock->findChild<QComboBox*>(QStringLiteral("cboDirection"))->setCurrentIndex(1);
    EXPECT_TRUE(shows({QStringLiteral("unit 02 received")}));
    click(*dock, "cmdPause");
    EXPECT_TRUE(shows({QStringLiteral("unit 02 received"), QStringLiteral("unit 02 received")}));
    dock->findChild<QComboBox*>(QStringLiteral("cboDirection"))->setCurrentIndex(0);
    dock->findChild<QSpinBox*>()->setValue(-1);
    dock->findChild<QLineEdit*>(QStringLiteral("txtFilter"))->setText(QStringLiteral("atz"));
    EXPECT_TRUE(shows({typed}));
    click(*dock, "cmdCopy");
    EXPECT_TRUE(QApplication::clipboard()->text().endsWith(QStringLiteral(" ATZ.")));
    person.choices = {folder / "traffic.txt"};
    click(*dock, "cmdSave");
    const std::string saved = file_bytes(folder / "traffic.txt");
    EXPECT_TRUE(saved.ends_with(view->toPlainText().toStdString() + "\r\n")) << saved;
    EXPECT_EQ(std::count(saved.begin(), saved.end(), '\n'), 2);
    click(*dock, "cmdClear");
    EXPECT_TRUE(shows({QString()}));
}

// Fault: the lines are watched while nobody looks, or not any more after the view was closed once.
TEST_F(DebugDockTest, WatchesOnlyWhileItIsShown) {
    EXPECT_TRUE(item.isChecked());
    dock->close();
    EXPECT_FALSE(item.isChecked());
    settle();
    EXPECT_EQ(host.bus().on_traffic, nullptr);
    exchange(1);
    send(act::TypeText{"x"});
    settle();
    toggle();
    EXPECT_TRUE(item.isChecked());
    exchange(3);
    EXPECT_TRUE(shows({QStringLiteral("unit 03 sent"), QStringLiteral("unit 03 received")}));
    delete dock;
    send(act::TypeText{"y"});
    settle();
    EXPECT_EQ(host.bus().on_traffic, nullptr);
}

}  // namespace
}  // namespace ampdesk
