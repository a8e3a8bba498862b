// Windows that come back where they stood, and the manual behind the Help menu.
#include <QAbstractItemModel>
#include <QTextBrowser>
#include <QTreeView>

#include "tests/windows/desk.h"

namespace ampdesk {
namespace {

using Layout = Desk;

// A place that is lost at the end, the icon's place kept in the window's stead, a head closed early
// that is forgotten, a main window that opens off the screens.
TEST_F(Layout, ComesBackAtTheNextStart) {
    form.setGeometry(40, 50, 700, 600);
    for (const int address : {1, 2}) open(address).parentWidget()->setGeometry(11 * address, 12, 560, 280);
    form.active_machine()->parentWidget()->close();
    form.active_machine()->parentWidget()->showMinimized();
    form.close();
    settle();

    EXPECT_EQ(file_bytes("layout.dat"),
              "ampdesk layout\r\nmain 40 50 700 600 0\r\nhead 1001 11 12 560 280 1\r\n"
              "head 1002 22 12 560 280 0\r\n");

    folder.put("layout.dat",
               "ampdesk layout\nmain -9000 100 700 600 0\nhead 1001 5000 12 560 280 0\n"
               "head 1002 33 44 570 290 1\n");
    Talk next_talk;
    StationHost next_host{next_talk, {port}, clock, {}};
    MDIForm1 next{next_talk, clock, person, {}};
    next.show();
    EXPECT_EQ(next.geometry().x(), 0);
    next_host.station().new_amplifier_window(1, "1001", "KU", false);
    next_host.station().new_amplifier_window(2, "1002", "KU", false);
    next.take_notices();
    const auto windows = next.findChildren<QMdiSubWindow*>();
    ASSERT_EQ(windows.size(), 2);
    EXPECT_TRUE(windows[0]->parentWidget()->rect().contains(windows[0]->geometry()));
    EXPECT_EQ(windows[0]->size(), QSize(560, 280));
    EXPECT_TRUE(windows[1]->isMinimized());
    windows[1]->showNormal();
    EXPECT_EQ(windows[1]->geometry(), QRect(33, 44, 570, 290));
}

struct Help : Desk {
    Help()
        : Desk(nullptr, {},
               {.version = "1", .gauge = {30, 60}, .shipped_folder = "shipped", .amplifier_files = {}}) {
        std::filesystem::create_directory("shipped");
    }
};

// A viewer without pages, a menu item that shows the wrong part, a failure that is not told.
TEST_F(Help, ShowsTheManualOrTellsWhy) {
    person.keeps = true;
    pick("mnuHelpItem(0)");
    ASSERT_EQ(kept_boxes.size(), 1U);
    EXPECT_TRUE(kept_boxes[0].starts_with("The manual cannot be opened|")) << kept_boxes[0];
    EXPECT_NE(kept_boxes[0].find("ampdesk.hlp"), std::string::npos);
    // Alone in the program's folder, it is another program's or has lost its pages.
    folder.put("ampdesk.hlp", "");
    std::filesystem::copy(MANUAL_FOLDER "/ampdesk.hlp", "shipped");
    std::filesystem::copy(MANUAL_FOLDER "/ampdesk.qch", "shipped");
    pick("mnuHelpItem(1)");
    QWidget* viewer = nullptr;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->windowTitle() == u"JEX Remote Control - Help")
            viewer = window;
    ASSERT_NE(viewer, nullptr);
    EXPECT_EQ(viewer->findChild<QTabWidget*>()->currentIndex(), 1);
    auto* contents = viewer->findChild<QTreeView*>();
    ASSERT_TRUE(soon([&] { return contents->model()->rowCount() > 10; }));
    EXPECT_FALSE(viewer->findChild<QTextBrowser*>()->toPlainText().isEmpty());
    EXPECT_EQ(kept_boxes.size(), 1U);
    form.close();

    std::filesystem::rename("shipped/ampdesk.hlp", "shipped/ampdesk.HLP");
    EXPECT_EQ(HelpViewer({QStringLiteral("shipped")}).failure(), QString());
}

}  // namespace
}  // namespace ampdesk
