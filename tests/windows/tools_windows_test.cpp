// The service tools behind their menu items: frmBlock and frmIntact, with simulated amplifiers.
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>

#include "platform/text_file.h"
#include "tests/support/sent_frame.h"
#include "tests/windows/desk.h"
#include "tests/windows/spoken.h"
#include "tools/ui/frmBlock.h"
#include "tools/ui/frmIntact.h"

namespace ampdesk {
namespace {

class ToolWindows : public Desk {
  protected:
    static QString text(const QWidget& window, const char* label) {
        return child<QLabel>(window, label)->text();
    }

    // Answers the line dialog that comes first, then the file dialog.
    frmBlock* begin(int index, const std::string& file) {
        const auto name_it = [this, file] {
            when_dialog_opens("QFileDialog", [this, file](QDialog& dialog) {
                auto* name = child<QLineEdit>(dialog, "fileNameEdit");
                name->setText(QString::fromStdString(folder / file));
                QTest::keyClick(name, Qt::Key_Return);
            });
        };
        if (std::exchange(set_up, true))
            name_it();
        else
            when_dialog_opens("frmSerial", [this, name_it](QDialog& dialog) {
                name_it();
                click(dialog, "cmdOk");
            });
        pick(index == 0 ? "mnuToolsSram(0)" : "mnuToolsSram(1)");
        return block();
    }

    frmBlock* block() { return form.findChild<frmBlock*>(); }

    bool items_live() {
        const bool read = child<QAction>(form, "mnuToolsSram(0)")->isEnabled();
        EXPECT_EQ(read, child<QAction>(form, "mnuToolsSram(1)")->isEnabled());
        return read;
    }

    // Escape and the close box.
    void slip(frmBlock& window, bool by_key) {
        if (by_key)
            QTest::keyClick(&window, Qt::Key_Escape);
        else
            window.close();
    }

    QMessageBox* question() { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()); }

    // Both windows are gone: one that has closed deletes itself.
    bool gone() {
        settle();
        return QTest::qWaitFor([&] { return block() == nullptr && form.findChild<frmIntact*>() == nullptr; });
    }

    // As the event loop runs it, turn after turn: qWaitFor sleeps between turns.
    static bool comes_to_show(const frmBlock& window, const char* status) {
        QElapsedTimer patience;
        for (patience.start(); patience.elapsed() < 5000; QApplication::processEvents())
            if (text(window, "lblStatus") == QLatin1String(status))
                return true;
        return false;
    }

    bool set_up = false;
};

// Fault: another amplifier than the active one is read, a button lives at the wrong time, or the menu
// items stay dead.
TEST_F(ToolWindows, ReadAndSet) {
    open(2);
    open(1);
    frmBlock* window = begin(0, "nv.txt");
    ASSERT_NE(window, nullptr);
    EXPECT_FALSE(items_live());
    EXPECT_FALSE(window->isModal());
    expect_spoken(*window, QStringLiteral("Reading nvRam Parameters"));
    auto* ok = child<QPushButton>(*window, "cmdOk");
    auto* pause = child<QPushButton>(*window, "cmdCancel");
    EXPECT_TRUE(ok->isEnabled() && !pause->isEnabled() && ok->text() == QStringLiteral("Start"));

    ok->setFocus();
    QTest::keyClick(ok, Qt::Key_Space);
    settle();
    EXPECT_TRUE(!ok->isEnabled() && pause->isEnabled() && ok->text() == QStringLiteral("Continue"));
    EXPECT_EQ(window->focusWidget(), pause);  // and not Exit: the next blank must not end it
    QTest::keyClick(pause, Qt::Key_Space);
    settle();
    EXPECT_TRUE(ok->isEnabled() && !pause->isEnabled());
    QTest::keyClick(window->focusWidget(), Qt::Key_Space);
    EXPECT_TRUE(comes_to_show(*window, "nvRam Transfer was Successful"));
    EXPECT_EQ(text(*window, "lblOutput").left(14), QStringLiteral("15 1 5 20 20 4"));
    EXPECT_TRUE(!ok->isEnabled() && !pause->isEnabled());
    EXPECT_EQ(read_text_lines("nv.txt").size(), 1 + demo::SimNvram::k_blocks);
    click(*window, "cmdExit");
    EXPECT_TRUE(items_live() && gone());

    station.close_window(2);  // slot 2: what was read from amplifier 1 goes to amplifier 2
    window = begin(1, "nv.txt");
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Setting nvRam Parameters"));
    click(*window, "cmdOk");
    EXPECT_TRUE(comes_to_show(*window, "end of nvRam file"));
    EXPECT_EQ(bus.find(2)->nvram.read(63), bus.find(1)->nvram.read(63));
}

// Fault: a way out leaves the window, the timer or the dead items behind.
TEST_F(ToolWindows, EveryWayOut) {
    open(1);
    const std::function<void(frmBlock&)> ways[] = {
        [&](frmBlock& window) { click(window, "cmdExit"); },
        [&](frmBlock& window) {
            host.step();
            window.CmdExit_Click();
            form.take_notices();  // of what it has come to before
            EXPECT_EQ(form.findChildren<frmBlock*>().size(), 1);
        },
        [&](frmBlock& window) {
            slip(window, true);
            question()->button(QMessageBox::Yes)->click();
        },
        [&](frmBlock& window) {
            bus.find(1)->line.silent = true;
            slip(window, false);
            ASSERT_NE(question(), nullptr);
            person.on_ask = [&](const Message& message) {
                EXPECT_EQ(question(), nullptr);
                told = message.text;
                return Answer::ok;
            };
            EXPECT_TRUE(comes([&] { return !told.empty(); }));
            EXPECT_EQ(told, "Cmd Receiving Error, Check Connection");
            person.on_ask = nullptr;
            bus.find(1)->line.silent = false;
        },
        [&](frmBlock& window) {
            slip(window, false);
            form.shut_down();
        },
    };
    for (const auto& leave : ways) {
        frmBlock* window = begin(0, "out" + std::to_string(&leave - ways));
        ASSERT_NE(window, nullptr);
        window->cmdOk_Click();
        leave(*window);
        EXPECT_TRUE(gone());
        EXPECT_TRUE(items_live());
    }
}

// Fault: a slip ends a transfer, or a question is asked that nothing hangs on; a question that holds the
// transfer up, or that outlives it.
TEST_F(ToolWindows, ASlipEndsNoTransfer) {
    open(1);
    for (const bool by_key : {true, false}) {
        const std::string file = by_key ? "key" : "box";
        slip(*begin(0, file + "0"), by_key);  // not begun
        EXPECT_TRUE(gone());
        frmBlock* window = begin(0, file);
        window->cmdOk_Click();  // no event runs: it has just begun
        window->cmdCancel_Click();
        for (int times = 0; times < 2; ++times) {
            slip(*window, by_key);
            ASSERT_NE(question(), nullptr);
            EXPECT_EQ(question()->text(), QStringLiteral("The nvRam transfer is not finished. End it?"));
            QTest::keyClick(question(), times == 0 ? Qt::Key_Return : Qt::Key_Escape);
            EXPECT_TRUE(question() == nullptr && window->isVisible());
        }
        slip(*window, by_key);
        ASSERT_NE(question(), nullptr);
        window->cmdOk_Click();
        EXPECT_TRUE(comes_to_show(*window, "nvRam Transfer was Successful"));
        EXPECT_TRUE(question() == nullptr && window->isVisible());
        slip(*window, by_key);
        EXPECT_TRUE(gone() && items_live());
    }
}

// Fault: the file dialog asks on its own as well, or cancelling it leaves the items dead.
TEST_F(ToolWindows, ReplaceQuestion) {
    open(1);
    const std::string file = folder.put("old.txt", "");
    bool again = false;
    when_box_opens([&](QMessageBox&) {
        when_dialog_opens("QFileDialog", [&](QDialog& dialog) {
            again = true;
            dialog.reject();
        });
    });
    EXPECT_EQ(begin(0, "old.txt"), nullptr);
    EXPECT_EQ(told, "Replace existing file - " + file + "?");
    EXPECT_TRUE(again);
    EXPECT_TRUE(items_live());
}

TEST_F(ToolWindows, StaysInFrontOfTheMainWindow) {
    open(1);
    frmBlock* window = begin(0, "nv.txt");
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    window->showMinimized();
    form.activateWindow();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !window->isMinimized(); }));
}

// Fault: Enter sends twice or not at all, the arrows move nothing, the reply is another one's.
TEST_F(ToolWindows, Console) {
    open(2);
    open(1);
    pick("mnuToolsItem(3)");
    auto* window = form.findChild<frmIntact*>();
    ASSERT_TRUE(window != nullptr && QTest::qWaitForWindowActive(window));
    pick("mnuToolsItem(3)");
    EXPECT_EQ(form.findChildren<frmIntact*>().size(), 1);
    expect_spoken(*window, QStringLiteral("INTERACTIVE CONTROL"));
    EXPECT_FALSE(child<QWidget>(*window, "cmdRepeat")->isVisible());

    std::vector<int> asked;
    link.on_traffic = [&](const BusTraffic& traffic) {
        if (traffic.sent && sent_frame(traffic.bytes).command.starts_with("\xA0\x17"))
            asked.push_back(traffic.address);
    };
    auto* entry = child<QLineEdit>(*window, "TxtInput");
    const auto send = [&](const char* typed) {
        entry->selectAll();
        QTest::keyClicks(entry, QLatin1String(typed));
        QTest::keyClick(entry, Qt::Key_Return);
        settle();
    };
    send("A0 17 0");
    EXPECT_EQ(asked, std::vector<int>{1});
    EXPECT_TRUE(text(*window, "LblOutput").contains(u"\nAsc Answer: 0,Standby"));
    when_box_opens();
    send("123");
    for (const auto& [code, shown] : {std::pair{Qt::Key_Up, "A0 17 0"}, {Qt::Key_Down, "123"}}) {
        QTest::keyClick(entry, code);
        EXPECT_EQ(entry->text(), QLatin1String(shown));
    }

    bus.find(2)->line.silent = true;
    station.close_window(2);
    settle();  // amplifier 2 is the current one now
    asked.clear();
    send("A0 17 0");
    EXPECT_TRUE(
        comes([&] { return text(*window, "lblReply") == u"Unit address: 2   There is no response"; }));
    EXPECT_EQ(asked, std::vector<int>{2});
    click(*window, "CmdExit");
    EXPECT_TRUE(gone());
}

}  // namespace
}  // namespace ampdesk
