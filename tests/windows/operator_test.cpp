// Boxes, sound and pointer as the operator meets them, and what start-up settles with the system.
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QListView>

#include "shell/ui/start_up.h"
#include "tests/windows/desk.h"

namespace ampdesk {
namespace {

struct OperatorWindows : Desk {
    const QString own = QString::fromStdString(folder.path());
};

// Texts are shown as they are, not as mark-up, and closing a box means the harmless answer.
TEST_F(OperatorWindows, MessageBoxes) {
    const std::string text = "Is <b>5 °C</b> right?";
    const std::pair<Buttons, Answer> cases[] = {{Buttons::ok, Answer::ok},
                                                {Buttons::ok_cancel, Answer::cancel},
                                                {Buttons::yes_no, Answer::no},
                                                {Buttons::yes_no_cancel, Answer::cancel}};
    for (const auto& [buttons, closed] : cases) {
        when_box_opens([&](QMessageBox& box) {
            EXPECT_EQ(box.windowTitle(), u"JEX Remote Control");
            EXPECT_EQ(box.accessibleDescription(), box.text());
            for (const QLabel* label : box.findChildren<QLabel*>())
                EXPECT_TRUE(label->text().isEmpty() || label->textFormat() == Qt::PlainText);
        });
        EXPECT_EQ(person.ask({.text = text, .detail = "<i>cause</i>", .buttons = buttons}), closed);
        EXPECT_EQ(told, text);
    }
    person.retire();
    EXPECT_EQ(person.ask({}), Answer::ok);
}

// A question that is never seen, and never answered, as its box has gone with the dialog behind it; one that
// stays when it has been withdrawn; a box that comes again and again.
TEST_F(OperatorWindows, ABoxOutlivesItsDialog) {
    std::map<int, Answer> answered;
    person.on_reply = [&](int number, const Reply& reply) { answered[number] = reply.answer; };
    auto dialog = std::make_unique<QDialog>(&form);
    dialog->open();
    const auto box = [&](const char* text) {
        QMessageBox* shown = nullptr;
        EXPECT_TRUE(soon([&] {
            shown = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            return shown != nullptr && shown->text() == QLatin1String(text);
        }));
        return shown;
    };
    person.put_question(7, {.message = {.text = "Which?", .buttons = Buttons::yes_no}});
    EXPECT_EQ(box("Which?")->parentWidget(), dialog.get());
    dialog.reset();
    box("Which?")->reject();
    person.put_question(8, {.message = {.text = "Really?", .buttons = Buttons::yes_no}});
    QTest::mouseClick(box("Really?")->button(QMessageBox::Yes), Qt::LeftButton);
    person.put_question(9, {.message = {.text = "Gone?"}});
    box("Gone?");
    person.withdraw(9);
    for (int i = 0; i < 2; ++i) person.tell({.text = "Once"});
    box("Once")->accept();
    settle();
    EXPECT_TRUE(person.quiet());
    EXPECT_EQ(answered, (std::map<int, Answer>{{7, Answer::no}, {8, Answer::yes}}));
}

TEST_F(OperatorWindows, SoundAndPointer) {
    person.start_beep(std::chrono::milliseconds(10));
    person.start_beep(std::chrono::hours(1));
    EXPECT_EQ(sounds, 1);  // prolonged, not doubled
    EXPECT_TRUE(soon([&] { return sounds > 1; }));

    for (const bool busy : {false, true, true, false}) person.set_busy_pointer(busy);
    EXPECT_NE(QApplication::overrideCursor(), nullptr);
    person.set_busy_pointer(false);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

// Filters shown otherwise than they are told; a file that is not seen for its capitals, or for a name
// without a point.
TEST_F(OperatorWindows, FileFilters) {
    for (const char* name : {"a.TXT", "b.dat", "c.jpg", "d"}) folder.put(name, "");
    when_dialog_opens("QFileDialog", [&](QDialog& dialog) {
        auto* types = child<QComboBox>(dialog, "fileTypeCombo");
        auto* files = child<QListView>(dialog, "listView");
        EXPECT_EQ(QAccessible::queryAccessibleInterface(types)->text(QAccessible::Name), u"Files of type:");
        const std::pair<QString, QString> cases[] = {
            {QStringLiteral("Two (*.TXT)"), QStringLiteral("a.TXT b.dat")},
            {QStringLiteral("All Files (*.*)"), QStringLiteral("a.TXT b.dat c.jpg d")}};
        for (const auto& c : cases) {
            types->setCurrentText(c.first);
            EXPECT_EQ(types->currentText(), c.first);
            Q_EMIT types->activated(types->currentIndex());
            EXPECT_TRUE(soon([&] {
                QStringList names;
                for (int row = 0; row < files->model()->rowCount(files->rootIndex()); ++row)
                    names << files->model()->index(row, 0, files->rootIndex()).data().toString();
                names.sort();
                return names.join(u' ') == c.second;
            }));
        }
        dialog.reject();
    });
    EXPECT_EQ(person.choose_file_to_open("Open", "Two (*.TXT)|*.dat;*.txt|All Files (*.*)|*.*"),
              std::nullopt);
}

// A crashed station that locks the next one out, or a folder that cannot be locked that is taken for one in
// use.
TEST_F(OperatorWindows, TheFoldersLock) {
    folder.put("ampdesk.lock", "2147483646\nampdesk\n\n\n\n");  // no process has this number
    // Stands for a full disk: no room for the file by which the hold is taken over.
    const QString way = QStringLiteral("ampdesk.lock.rmlock");
    ASSERT_TRUE(QDir(own).mkdir(way));
    EXPECT_EQ(InstanceLock(own).take(), InstanceLock::Result::impossible);
    ASSERT_TRUE(QDir(own).rmdir(way));
    EXPECT_EQ(InstanceLock(own).take(), InstanceLock::Result::taken);
    EXPECT_EQ(InstanceLock(own + QStringLiteral("/missing")).take(), InstanceLock::Result::impossible);
}

// Settings of another folder would be taken, or the program's own never found.
TEST_F(OperatorWindows, ProgramFolder) {
    EXPECT_EQ(program_folder("", own, QStringLiteral("/data")), QStringLiteral("/data"));
    const std::string file = folder.put("rs485.dat", "");
    EXPECT_EQ(program_folder("", own, QStringLiteral("/data")), own);
    const QString deeper = own + QStringLiteral("/deep/er");
    EXPECT_EQ(program_folder("deep/er", own, {}), deeper);
    EXPECT_TRUE(enter_folder(deeper) && QDir::currentPath() == deeper);
    EXPECT_FALSE(enter_folder(QString::fromStdString(file)));
}

}  // namespace
}  // namespace ampdesk
