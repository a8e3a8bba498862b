// frmColor behind its menu item: colours and font size change on the copy only, and on the head with OK.
#include <QColorDialog>
#include <QFontDialog>
#include <QListView>

#include "tests/windows/desk.h"
#include "tests/windows/spoken.h"

namespace ampdesk {
namespace {

class ColorDialog : public Desk {
  protected:
    // Presses the button and chooses in the dialog that it opens.
    template <class Dialog>
    void choose(const char* button, std::function<void(Dialog&)> act) {
        when_dialog_opens<Dialog>("CmdLog", std::move(act));
        click(*dialog, button);
    }
    void choose_colour(const char* button, QRgb rgb) {
        choose<QColorDialog>(button, [rgb](QColorDialog& colours) {
            colours.setCurrentColor(QColor(rgb));
            colours.accept();
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

    // Out of the list of sizes.
    static void choose_13_points(QFontDialog& fonts) {
        for (auto* list : fonts.findChildren<QListView*>()) {
            if (list->accessibleName() != u"Size")
                continue;
            const auto row = [list](int at) { return list->model()->index(at, 0).data().toString(); };
            EXPECT_EQ(row(0) + row(1) + row(2) + row(3), u"131415");
            list->setCurrentIndex(list->model()->index(0, 0));
        }
        fonts.accept();
    }

    const ScreenSettings first{.fore_colour = 0x112233, .back_colour = 0x445566, .machine_colour = 0x778899};
    const std::shared_ptr<ControlHead> other = head_of(open(1));
    const std::shared_ptr<ControlHead> head = head_of(open(2));
    QDialog* dialog = nullptr;
};

// A button that changes another's colour, blue where red was picked; a choice that reaches the head before
// its OK, in spite of a Cancel, or reaches another head.
TEST_F(ColorDialog, ColoursAndSizeReachTheHeadWithOkOnly) {
    head->apply_screen_settings(first);
    settle();
    const ScreenSettings changed{.fore_colour = 0x0000FF,
                                 .back_colour = 0xFE0000,
                                 .font_size = 13,
                                 .machine_colour = first.machine_colour};
    for (const char* end : {"Command1(1)", "Command1(0)"}) {
        when_dialog_opens("frmColor", [&](QDialog& opened) {
            dialog = &opened;
            EXPECT_EQ(copy(), first);
            expect_spoken(opened, QStringLiteral("Setup Color For Control Head"));
            choose_colour("cmdColor(0)", 0xFF0000);
            choose_colour("cmdColor(1)", 0x0000FE);
            choose<QColorDialog>("cmdColor(2)", [](QColorDialog& colours) {
                EXPECT_EQ(colours.currentColor(), QColor(0x99, 0x88, 0x77));
                colours.reject();
            });
            choose<QFontDialog>("cmdFont", choose_13_points);
            when_box_opens();
            choose<QFontDialog>("cmdFont", [](QFontDialog& fonts) {
                QFont large = fonts.currentFont();
                large.setPointSize(16);
                fonts.setCurrentFont(large);
                fonts.accept();
            });
            EXPECT_EQ(told, "You can only select Bold 13~15 Courier New Fonts");
            EXPECT_EQ(copy(), changed);
            EXPECT_EQ(head->panel().look(), first);
            click(opened, end);
        });
        pick("mnuToolsScreen(0)");
    }
    EXPECT_EQ(head->panel().look(), changed);
    EXPECT_EQ(other->panel().look(), ScreenSettings{});
}

}  // namespace
}  // namespace ampdesk
