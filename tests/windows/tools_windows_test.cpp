// The service tools behind their menu items: frmBlock and frmIntact, with simulated amplifiers.
#include <QPushButton>

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
    frmBlock* block() { return form.findChild<frmBlock*>(); }

    // Answers the line dialog that comes first, then the file dialog.
    frmBlock* begin(const char* item, const std::string& file) {
        if (std::exchange(set_up, true))
            when_asked_for_a_file(folder / file);
        else
            when_dialog_opens("frmSerial", [this, file](QDialog& dialog) {
                when_asked_for_a_file(folder / file);
                click(dialog, "cmdOk");
            });
        pick(item);
        return block();
    }
    frmBlock* begin_read(const std::string& file) { return begin("mnuToolsSram(0)", file); }
    bool items_live() { return child<QAction>(form, "mnuToolsSram(0)")->isEnabled(); }

    // Escape or the close box.
    static void slip(frmBlock& window, bool by_key) {
        if (by_key)
            QTest::keyClick(&window, Qt::Key_Escape);
        else
            window.close();
    }
    QMessageBox* question() { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()); }

    // One that has closed deletes itself.
    bool gone() {
        settle();
        return soon([&] { return block() == nullptr; });
    }
    void expect_end(const frmBlock& window, const char* status) {
        EXPECT_TRUE(comes([&] { return text(window, "lblStatus") == QLatin1String(status); }));
    }

    bool set_up = false;
};

// Fault: another amplifier than the active one is read or set, a button lives at the wrong time, or the menu
// items stay dead.
TEST_F(ToolWindows, ReadAndSet) {
    open(2);
    open(1);
    frmBlock* window = begin_read("nv.txt");
    EXPECT_FALSE(items_live() || window->isModal());
    expect_spoken(*window, QStringLiteral("Reading nvRam Parameters"));
    const auto* ok = child<QPushButton>(*window, "cmdOk");
    // The next blank must not end it: the focus is never at Exit.
    for (const char* next : {"cmdCancel", "cmdOk", "cmdCancel"}) {
        QTest::keyClick(window->focusWidget(), Qt::Key_Space);
        settle();
        EXPECT_EQ(window->focusWidget()->objectName(), QLatin1String(next));
        EXPECT_NE(ok->isEnabled(), child(*window, "cmdCancel")->isEnabled());
    }
    EXPECT_EQ(ok->text(), u"Continue");
    expect_end(*window, "nvRam Transfer was Successful");
    EXPECT_TRUE(text(*window, "lblOutput").startsWith(u"15 1 5 20 20 4"));
    click(*window, "cmdExit");
    EXPECT_TRUE(items_live() && gone());

    station.close_window(2);  // slot 2: what was read from amplifier 1 goes to amplifier 2
    window = begin("mnuToolsSram(1)", "nv.txt");
    click(*window, "cmdOk");
    expect_end(*window, "end of nvRam file");
    EXPECT_EQ(bus.find(2)->nvram.read(63), bus.find(1)->nvram.read(63));
}

// Fault: a way out leaves the window, the timer or the dead items behind.
TEST_F(ToolWindows, EveryWayOut) {
    open(1);
    const std::function<void(frmBlock&)> ways[] = {
        [&](frmBlock& window) { click(window, "cmdExit"); },
        [&](frmBlock& window) {
            slip(window, true);
            question()->button(QMessageBox::Yes)->click();
        },
        [&](frmBlock& window) {
            bus.find(1)->line.silent = true;
            slip(window, false);
            person.keeps = true;
            EXPECT_TRUE(comes([&] { return !kept_boxes.empty(); }));
            EXPECT_EQ(question(), nullptr);
            EXPECT_EQ(kept_boxes[0], "Cmd Receiving Error, Check Connection");
            bus.find(1)->line.silent = false;
        },
        [&](frmBlock& window) {
            slip(window, false);
            form.shut_down();
        },
    };
    for (const auto& leave : ways) {
        frmBlock* window = begin_read("out" + std::to_string(&leave - ways));
        window->cmdOk_Click();
        leave(*window);
        EXPECT_TRUE(gone() && items_live());
    }
}

// Fault: cancelling the file dialog leaves the items dead; a slip ends a transfer, or a question is asked
// that nothing hangs on; a question that holds the transfer up, or that outlives it.
TEST_F(ToolWindows, ASlipEndsNoTransfer) {
    open(1);
    for (const bool by_key : {true, false}) {
        slip(*begin_read("not begun"), by_key);
        EXPECT_TRUE(gone());
        when_dialog_opens("QFileDialog", [](QDialog& dialog) { dialog.reject(); });
        pick("mnuToolsSram(0)");
        EXPECT_TRUE(items_live());
        frmBlock* window = begin_read("begun");
        window->cmdOk_Click();  // no event runs: it has just begun
        window->cmdCancel_Click();
        for (const auto key : {Qt::Key_Return, Qt::Key_Escape}) {
            slip(*window, by_key);
            ASSERT_NE(question(), nullptr);
            EXPECT_EQ(question()->text(), u"The nvRam transfer is not finished. End it?");
            QTest::keyClick(question(), key);
            EXPECT_TRUE(question() == nullptr && window->isVisible());
        }
        slip(*window, by_key);
        window->cmdOk_Click();
        expect_end(*window, "nvRam Transfer was Successful");
        EXPECT_TRUE(question() == nullptr && window->isVisible());
        slip(*window, by_key);
        EXPECT_TRUE(gone() && items_live());
        for (const char* file : {"begun", "not begun"}) std::filesystem::remove(file);
    }
}

// Fault: Enter sends twice or not at all, the arrows move nothing, the reply is another one's.
TEST_F(ToolWindows, Console) {
    open(2);
    open(1);
    for (int i = 0; i < 2; ++i) pick("mnuToolsItem(3)");
    ASSERT_EQ(form.findChildren<frmIntact*>().size(), 1);
    auto* window = form.findChild<frmIntact*>();
    expect_spoken(*window, QStringLiteral("INTERACTIVE CONTROL"));
    std::vector<int> asked;
    link.on_traffic = [&](const BusTraffic& traffic) {
        if (traffic.sent && sent_frame(traffic.bytes).command.starts_with("\xA0\x17"))
            asked.push_back(traffic.address);
    };
    auto* entry = child<QLineEdit>(*window, "TxtInput");
    const auto send = [&](const char* typed) {
        entry->setText(QLatin1String(typed));
        QTest::keyClick(entry, Qt::Key_Return);
        settle();
    };
    send("A0 17 0");
    EXPECT_TRUE(text(*window, "LblOutput").contains(u"\nAsc Answer: 0,Standby"));
    bus.find(2)->line.silent = true;
    station.close_window(2);
    settle();  // amplifier 2 is the current one now
    send("A0 17 1");
    QTest::keyClick(entry, Qt::Key_Up);
    EXPECT_EQ(entry->text(), u"A0 17 0");
    QTest::keyClick(entry, Qt::Key_Down);
    EXPECT_EQ(entry->text(), u"A0 17 1");
    EXPECT_TRUE(
        comes([&] { return text(*window, "lblReply") == u"Unit address: 2   There is no response"; }));
    EXPECT_EQ(asked, std::vector<int>({1, 2}));
    click(*window, "CmdExit");
    EXPECT_TRUE(soon([&] { return form.findChild<frmIntact*>() == nullptr; }));
}

}  // namespace
}  // namespace ampdesk
