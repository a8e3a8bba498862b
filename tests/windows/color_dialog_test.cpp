// frmColor behind its menu item: colours and font size change on the copy only, and on the head with OK.
#include <QColorDialog>
#include <QFontDialog>
#include <QListView>

#include "controlhead/font_rule.h"
#include "controlhead/ui/frmColor.h"
#include "tests/windows/desk.h"
#include "tests/windows/spoken.h"

namespace ampdesk {
namespace {

TEST(FontRule, TakesAnotherSizeFrom13To15AndNothingElse) {
    const FontChoice preset{"Courier New", true, 14};
    for (const double size : {13.0, 14.5, 15.0})
        EXPECT_TRUE(accepted_font(preset, {"Courier New", true, size})) << size;
    const FontChoice refused[] = {{"Courier New", true, 12.9},
                                  {"Courier New", true, 16},
                                  {"Courier New", true, -1},  // a size in pixels has no points
                                  {"Courier New", false, 14},
                                  {"Courier", true, 14}};
    for (const FontChoice& choice : refused)
        EXPECT_FALSE(accepted_font(preset, choice)) << choice.family << choice.bold << choice.size;
}

class ColorDialog : public Desk {
  protected:
    ColorDialog() {
        head->apply_screen_settings(first);
        settle();
    }

    // Opens the dialog for the active one of two heads, and closes it if the steps have not.
    void in_dialog(const std::function<void()>& steps) {
        when_dialog_opens("frmColor", [&](QDialog& opened) {
            dialog = &opened;
            steps();
            opened.reject();
        });
        pick("mnuToolsScreen(0)");
    }

    // Presses the button and, once its dialog is open, lets `act` choose there.
    template <class Dialog, class Act>
    void choose(const char* button, Act act) {
        bool opened = false;
        QTimer::singleShot(0, dialog, [&] {
            auto* opened_dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
            opened = opened_dialog != nullptr;
            ASSERT_TRUE(opened);
            act(*opened_dialog);
        });
        click(*dialog, button);
        EXPECT_TRUE(opened) << button;
    }
    void choose_colour(const char* button, QRgb rgb) {
        choose<QColorDialog>(button, [rgb](QColorDialog& colours) {
            colours.setCurrentColor(QColor(rgb));
            colours.accept();
        });
    }
    template <class Change>
    void choose_font(Change change) {
        choose<QFontDialog>("cmdFont", [change](QFontDialog& fonts) {
            QFont font = fonts.currentFont();
            change(font);
            fonts.setCurrentFont(font);
            fonts.accept();
        });
    }

    // What the copy paints: the colours of its parts, red in the low byte, and the font size.
    ScreenSettings copy() const {
        const auto bgr = [](const QWidget& part, QPalette::ColorRole role) {
            const QColor c = part.palette().color(role);
            return c.red() | c.green() << 8 | c.blue() << 16;
        };
        const auto* line = child(*dialog, "lblDisplayA(3)");
        return {.fore_colour = bgr(*line, QPalette::WindowText),
                .back_colour = bgr(*line, QPalette::Window),
                .font_size = line->font().pointSizeF(),
                .machine_colour = bgr(*child(*dialog, "Label1(0)"), QPalette::Window)};
    }

    static QListView* size_list(const QFontDialog& fonts) {
        for (auto* list : fonts.findChildren<QListView*>())
            if (list->accessibleName() == QStringLiteral("Size"))
                return list;
        return nullptr;
    }
    static QStringList rows(const QListView& list) {
        QStringList all;
        for (int row = 0; row < list.model()->rowCount(); ++row)
            all << list.model()->index(row, 0).data().toString();
        return all;
    }

    const ScreenSettings first{.fore_colour = 0x112233, .back_colour = 0x445566, .machine_colour = 0x778899};
    const std::shared_ptr<ControlHead> other = head_of(open(1));
    const std::shared_ptr<ControlHead> head = head_of(open(2));
    QDialog* dialog = nullptr;
};

// A button that changes another's colour, blue where red was picked; a choice that reaches the head before
// its OK, in spite of a Cancel, or reaches another head.
TEST_F(ColorDialog, ColoursAndSizeReachTheHeadWithOkOnly) {
    ScreenSettings expected = first;
    for (const char* end : {"Command1(1)", "Command1(0)"}) {
        expected = first;
        in_dialog([&] {
            EXPECT_EQ(copy(), first);
            expect_spoken(*dialog, QStringLiteral("Setup Color For Control Head"));
            choose_colour("cmdColor(0)", 0xFF0000);
            expected.fore_colour = 0x0000FF;
            EXPECT_EQ(copy(), expected);
            choose_colour("cmdColor(1)", 0x0000FE);
            expected.back_colour = 0xFE0000;
            choose<QColorDialog>("cmdColor(2)", [&](QColorDialog& colours) {
                EXPECT_EQ(colours.currentColor(), QColor(0x99, 0x88, 0x77));
                colours.reject();
            });
            EXPECT_EQ(copy(), expected);
            for (const bool bold : {true, false}) {
                told.clear();
                when_box_opens();
                choose_font([bold](QFont& font) {
                    font.setStyleName({});
                    font.setBold(bold);
                    font.setPointSize(bold ? 16 : 14);
                });
                EXPECT_EQ(told, "You can only select Bold 13~15 Courier New Fonts");
                EXPECT_EQ(copy(), expected);
            }
            choose_font([](QFont& font) {
                EXPECT_EQ(font.family(), QFontInfo(display_font(14)).family());
                font.setPointSize(15);
            });
            expected.font_size = 15;
            EXPECT_EQ(copy(), expected);
            for (const int size : {13, 15}) {
                choose<QFontDialog>("cmdFont", [size](QFontDialog& fonts) {
                    const QFont bold = fonts.currentFont();
                    QFont plain = bold;
                    plain.setStyleName({});
                    plain.setBold(false);
                    for (const QFont& font : {plain, bold}) fonts.setCurrentFont(font);
                    QListView* sizes = size_list(fonts);
                    ASSERT_NE(sizes, nullptr);
                    const QStringList allowed{QStringLiteral("13"), QStringLiteral("14"),
                                              QStringLiteral("15")};
                    const bool offered = QTest::qWaitFor([&] { return rows(*sizes) == allowed; });
                    EXPECT_TRUE(offered);
                    if (!offered)
                        return fonts.reject();
                    EXPECT_EQ(sizes->currentIndex().data().toInt(), fonts.currentFont().pointSize());
                    sizes->setCurrentIndex(sizes->model()->index(size - 13, 0));
                    fonts.accept();
                });
                expected.font_size = size;
                EXPECT_EQ(copy(), expected);
            }
            EXPECT_EQ(head->panel().look(), first);
            click(*dialog, end);
        });
        EXPECT_EQ(head->panel().look(), QLatin1String(end) == u"Command1(0)" ? expected : first);
    }
    EXPECT_EQ(other->panel().look(), ScreenSettings{});
}

}  // namespace
}  // namespace ampdesk
