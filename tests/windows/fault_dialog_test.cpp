// frmFault and its menu item: faults reach the active amplifier, are listed and end one by one.
#include <QListWidget>
#include <QTreeWidget>

#include "demo/ui/frmFault.h"
#include "tests/windows/desk.h"
#include "tests/windows/spoken.h"

namespace ampdesk {
namespace {

class FaultDialog : public Desk {
  protected:
    FaultDialog()
        : Desk(nullptr, {}, {.version = {}, .demonstration = true, .gauge = {}, .amplifier_files = {}}) {
        for (const int address : {1, 2}) open(address);
        pick("mnuToolsScreen(1)");
        dialog = form.findChild<demo::frmFault*>();
    }

    void choose(const char* title) {
        auto* faults = child<QTreeWidget>(*dialog, "treFaults");
        faults->setCurrentItem(
            faults->findItems(QLatin1String(title), Qt::MatchExactly | Qt::MatchRecursive).value(0));
    }
    QString active() const {
        QStringList texts;
        const auto* list = child<QListWidget>(*dialog, "lstActive");
        for (int i = 0; i < list->count(); ++i) texts << list->item(i)->text();
        return texts.join(u'|');
    }
    QString text_of(const char* label) const { return child<QLabel>(*dialog, label)->text(); }

    demo::frmFault* dialog = nullptr;
};

// A fault that is made twice, on another amplifier, with another argument, or that stays in the list; a
// dialog that goes on making faults on the amplifier it was opened for, or is blind when it opens again.
TEST_F(FaultDialog, MakesAndEndsFaultsOneByOneOnTheActiveAmplifier) {
    EXPECT_EQ(text_of("lblAmplifier"), u"Amplifier 1002, address 2, C/KU/X");
    choose("#12 Helix Over-Current");
    EXPECT_FALSE(child(*dialog, "cboArgument")->isEnabled());
    click(*dialog, "cmdMake");
    EXPECT_EQ(bus.find(2)->shutdown_state(), "12, Helix Over-Current");
    EXPECT_EQ(bus.find(1)->shutdown_state(), "0, No Shutdown");

    choose("Settings refused");
    expect_spoken(*dialog, QStringLiteral("Select A Fault To Make"));
    type(*dialog, "cboArgument", "x", Qt::Key_Return);
    EXPECT_EQ(text_of("lblAnswer"), u"error: refuse wants a number from 0 to 255");
    type(*dialog, "cboArgument", "26", Qt::Key_Return);
    EXPECT_EQ(text_of("lblAnswer"), u"");
    EXPECT_EQ(active(), u"#12 Helix Over-Current|Settings refused: 26");
    child<QListWidget>(*dialog, "lstActive")->setCurrentRow(1);
    choose("No answer");
    click(*dialog, "cmdMake");  // the list keeps its choice
    click(*dialog, "cmdClear");
    EXPECT_EQ(active(), u"#12 Helix Over-Current|No answer");

    child<QMdiArea>(form, "MdiArea")->activatePreviousSubWindow();
    settle();
    EXPECT_EQ(active(), u"");
    click(*dialog, "cmdMake");
    EXPECT_TRUE(bus.find(1)->line.silent);
    click(*dialog, "cmdClearAll");
    EXPECT_FALSE(bus.find(1)->line.silent);
    EXPECT_TRUE(bus.find(2)->line.silent);
    station.close_all();
    settle();
    EXPECT_EQ(text_of("lblAmplifier"), u"No simulated amplifier is open");
    EXPECT_FALSE(child(*dialog, "cmdMake")->isEnabled());
    QTest::keyClick(dialog, Qt::Key_Escape);

    open(3);
    bus.find(3)->line.silent = true;
    pick("mnuToolsScreen(1)");
    EXPECT_EQ(text_of("lblAmplifier"), u"Amplifier 1003, address 3, C/KU/X");
    EXPECT_EQ(active(), u"No answer");
    bus.find(3)->line.silent = false;
    EXPECT_TRUE(comes([&] { return active().isEmpty(); }));
}

}  // namespace
}  // namespace ampdesk
