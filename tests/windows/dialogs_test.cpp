// The setup dialogs and frmBand, driven by keyboard and mouse on the offscreen platform.
#include <gtest/gtest.h>

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <filesystem>

#include "buslink/settings_files.h"
#include "buslink/ui/frmSerial.h"
#include "controlhead/ui/frmBand.h"
#include "platform/text_file.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/scripted_port.h"
#include "tests/windows/spoken.h"

namespace ampdesk {
namespace {

using Texts = std::vector<std::string>;

template <class W>
W* part(const QWidget& window, const char* name) {
    auto* found = window.findChild<W*>(QString::fromLatin1(name));
    EXPECT_NE(found, nullptr) << name;
    return found;
}

void type(QComboBox* list, const char* text, Qt::Key end) {
    list->setFocus();
    list->lineEdit()->selectAll();
    QTest::keyClicks(list, QString::fromLatin1(text));
    QTest::keyClick(list, end);
    QCoreApplication::processEvents();
}

void show(QDialog& dialog) {
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    QCoreApplication::processEvents();
}

// What OK would do.
struct NoSetup : BusSetup {
    void begin(const BusChoices&) override { ++begun; }
    int begun = 0;
};

class SetupDialogTest : public testing::Test {
  protected:
    ScratchFolder folder;
    ManualClock clock;
    ScriptedPort port{clock};
    RecordingOperator person;
    BusLink bus{port, clock};
    NoSetup line;
    std::string path = folder / "rs485.dat";
};

TEST_F(SetupDialogTest, a_typed_text_is_held_to_its_rule_once_and_never_sent_as_something_else) {
    const struct {
        const char* list;
        const char* typed;
        Qt::Key end;
        Texts told;
        const char* text;
    } cases[] = {
        {"cboAddress", "100", Qt::Key_Tab, {"Invalid Unit Address"}, "1"},
        {"cboAddress", "100", Qt::Key_Return, {"Invalid Unit Address"}, "1"},
        {"cboAddress", " ", Qt::Key_Tab, {"Invalid Unit Address"}, "1"},
        {"cboAddress", " ", Qt::Key_Return, {"Invalid Unit Address"}, "1"},
        {"cboAddress", "0", Qt::Key_Tab, {}, "0"},
        {"cboPort", "COM5:", Qt::Key_Tab, {"Invalid Com Port"}, "COM2:"},
        {"cboPort", "com1:", Qt::Key_Return, {"Invalid Com Port"}, "COM2:"},
        {"cboPort", "COM3:", Qt::Key_Tab, {}, "COM3:"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.typed);
        frmSerial dialog(line, path, bus.ports(), person);
        show(dialog);
        auto* list = part<QComboBox>(dialog, c.list);
        type(list, c.typed, c.end);
        EXPECT_EQ(person.take_texts(), c.told);
        EXPECT_EQ(list->currentText().toStdString(), c.text);
        EXPECT_TRUE(dialog.isVisible());
        EXPECT_TRUE(port.opened.empty());
    }
}

// A text from a damaged file is told when the dialog shows, before anything is sent.
TEST_F(SetupDialogTest, shows_what_rs485_dat_holds) {
    const struct {
        Texts lines;
        Texts told;
        BusChoices expected;
    } cases[] = {
        {{"RS-422", "COM3:", "4", "12"}, {}, {}},
        {{"RS-485", "COM7:", "4", "12"}, {"Invalid Com Port"}, {.address = "12", .baud = 4}},
        {{"RS-485", "COM1:", "0", "123"}, {"Invalid Unit Address"}, {.port = "COM1:", .baud = 0}},
        {{"RS-485", "COM1:", "0", ""}, {"Invalid Unit Address"}, {.port = "COM1:", .baud = 0}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.lines[0] + c.lines[1]);
        write_text_lines(path, c.lines);
        frmSerial dialog(line, path, bus.ports(), person);
        show(dialog);
        expect_spoken(dialog, QStringLiteral("Serial RS422 Setup"));
        EXPECT_EQ(dialog.choices(), c.expected);
        EXPECT_EQ(person.take_texts(), c.told);
    }
}

TEST_F(SetupDialogTest, tells_the_device_behind_the_port) {
    PortMap ports;
    ports.set(3, "/dev/ttyUSB7");
    frmSerial dialog(line, path, ports, person);
    show(dialog);
    auto* list = part<QComboBox>(dialog, "cboPort");
    auto* device = part<QLabel>(dialog, "lblDevice");
    EXPECT_EQ(device->text(), u"/dev/ttyS1");
    list->setCurrentIndex(2);
    EXPECT_EQ(device->text(), u"/dev/ttyUSB7");
    EXPECT_EQ(list->currentText(), u"COM3:");
    list->setEditText(QStringLiteral("COM31:"));
    EXPECT_EQ(device->text(), QString());
}

TEST_F(SetupDialogTest, cancel_and_escape_keep_the_fields_and_send_nothing) {
    for (const bool escape : {false, true}) {
        SCOPED_TRACE(escape);
        frmSerial dialog(line, path, bus.ports(), person);
        show(dialog);
        QTest::mouseClick(part<QRadioButton>(dialog, "optBaud(7)"), Qt::LeftButton);
        type(part<QComboBox>(dialog, "cboAddress"), "33", Qt::Key_Tab);
        // Left unfinished: the rules refuse it, and it must not reach the file.
        part<QComboBox>(dialog, "cboPort")->setEditText(QStringLiteral("COM"));
        if (escape)
            QTest::keyClick(&dialog, Qt::Key_Escape);
        else
            QTest::mouseClick(part<QPushButton>(dialog, "cmdCancel"), Qt::LeftButton);
        QCoreApplication::processEvents();
        EXPECT_FALSE(dialog.isVisible());
        save_bus_choices(path, dialog.choices(), person);
        EXPECT_EQ(read_text_lines(path), (Texts{"RS-485", "COM2:", "7", "33"}));
        EXPECT_EQ(person.take_texts(), Texts{});
        EXPECT_TRUE(port.opened.empty());
        std::filesystem::remove(path);
    }
}

TEST(frm_band, gives_what_was_picked_or_typed_and_nothing_after_cancel) {
    Texts models;
    for (char c = 'a'; c <= 'i'; ++c) models.push_back(std::string("M") + c);
    const auto run = [&](auto&& act) {
        frmBand dialog(models);
        show(dialog);
        expect_spoken(dialog, QStringLiteral("Select or input the band name"));
        act(dialog, part<QComboBox>(dialog, "cboBand"));
        EXPECT_FALSE(dialog.isVisible());
        return dialog.model();
    };
    EXPECT_EQ(run([](frmBand& dialog, QComboBox* list) {
                  QStringList items;
                  for (int i = 0; i < list->count(); ++i) items << list->itemText(i);
                  EXPECT_EQ(items.join(u' '), u"C/KU/X C/KU KU/K KU/DBS Ma Mb Mc Md Me Mf Mg Mh KU");
                  QTest::mouseClick(part<QPushButton>(dialog, "cmdOk(1)"), Qt::LeftButton);
              }),
              "C/KU/X");
    // Typed in small letters it stays so, although the list has the same in capitals.
    EXPECT_EQ(run([](frmBand&, QComboBox* list) { type(list, "ku", Qt::Key_Return); }), "ku");
    EXPECT_EQ(run([](frmBand& dialog, QComboBox*) {
                  QTest::mouseClick(part<QPushButton>(dialog, "cmdOk(0)"), Qt::LeftButton);
              }),
              "");
    EXPECT_EQ(run([](frmBand& dialog, QComboBox*) { QTest::keyClick(&dialog, Qt::Key_Escape); }), "");
}

}  // namespace
}  // namespace ampdesk
