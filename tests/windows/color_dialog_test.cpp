// frmColor: colours and font size change on the copy only, and on the head with OK.
#include <gtest/gtest.h>

#include <QApplication>
#include <QColorDialog>
#include <QFontDialog>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "controlhead/font_rule.h"
#include "controlhead/ui/frmColor.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scripted_port.h"
#include "tests/windows/spoken.h"

namespace ampdesk {
namespace {

TEST(font_rule, takes_another_size_from_13_to_15_and_nothing_else) {
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

class ColorDialogTest : public testing::Test {
  protected:
    void press(const char* name) {
        auto* button = dialog.findChild<QPushButton*>(QString::fromLatin1(name));
        ASSERT_NE(button, nullptr) << name;
        button->click();
    }

    // Presses the button and, once its dialog is open, lets `act` choose there.
    template <class Dialog, class Act>
    void choose(const char* button, Act act) {
        bool opened = false;
        QTimer::singleShot(0, &dialog, [&] {
            auto* opened_dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
            opened = opened_dialog != nullptr;
            ASSERT_TRUE(opened);
            act(*opened_dialog);
        });
        press(button);
        EXPECT_TRUE(opened) << button;
    }

    // What the copy paints: the colours of its parts, red in the low byte, and the font size.
    ScreenSettings copy() const {
        const auto bgr = [](const QWidget& part, QPalette::ColorRole role) {
            const QColor c = part.palette().color(role);
            return static_cast<std::uint32_t>(c.red() | c.green() << 8 | c.blue() << 16);
        };
        const auto* line = dialog.findChild<DisplayLine*>(QStringLiteral("lblDisplayA(3)"));
        const auto* label = dialog.findChild<QLabel*>(QStringLiteral("Label1(0)"));
        return {.fore_colour = bgr(*line, QPalette::WindowText),
                .back_colour = bgr(*line, QPalette::Window),
                .font_size = line->font().pointSizeF(),
                .machine_colour = bgr(*label, QPalette::Window)};
    }

    ManualClock clock;
    ScriptedPort port{clock};
    RecordingOperator person;
    BusLink bus{port, clock, person};
    HeadServices services{bus, clock, person, {}};
    ScreenSettings first{.fore_colour = 0x112233, .back_colour = 0x445566, .machine_colour = 0x778899};
    std::shared_ptr<ControlHead> head = [this] {
        auto made = std::make_shared<ControlHead>(services, HeadIdentity{1, 1, "7", "X"});
        made->panel().set_look(first);
        return made;
    }();
    frmColor dialog{head, {}, person};
};

TEST_F(ColorDialogTest, colours_and_size_reach_the_head_with_ok_only) {
    int head_changes = 0;
    head->panel().on_change = [&] { ++head_changes; };
    EXPECT_EQ(copy(), first);
    expect_spoken(dialog, QStringLiteral("Setup Color For Control Head"));

    ScreenSettings expected = first;
    const auto pick = [](QRgb rgb) {
        return [rgb](QColorDialog& colours) {
            colours.setCurrentColor(QColor(rgb));
            colours.accept();
        };
    };
    // Each button changes its own colour, red where red was picked.
    choose<QColorDialog>("cmdColor(0)", pick(0xFF0000));
    expected.fore_colour = 0x0000FF;
    EXPECT_EQ(copy(), expected);
    choose<QColorDialog>("cmdColor(1)", pick(0x0000FE));
    expected.back_colour = 0xFE0000;
    EXPECT_EQ(copy(), expected);
    choose<QColorDialog>("cmdColor(2)", [&](QColorDialog& colours) {
        EXPECT_EQ(colours.currentColor(), QColor(0x99, 0x88, 0x77));
        colours.reject();
    });
    EXPECT_EQ(copy(), expected);
    choose<QFontDialog>("cmdFont", [](QFontDialog& fonts) {
        QFont font = fonts.currentFont();
        font.setPointSize(15);
        fonts.setCurrentFont(font);
        fonts.accept();
    });
    expected.font_size = 15;
    EXPECT_EQ(copy(), expected);

    press("Command1(1)");
    EXPECT_EQ(head->panel().look(), first);
    EXPECT_EQ(head_changes, 0);
    press("Command1(0)");
    EXPECT_EQ(head->panel().look(), expected);
    EXPECT_EQ(head_changes, 1);
    EXPECT_TRUE(person.messages.empty());
}

// The font dialog itself has no limits; a choice beyond them is told and changes nothing.
TEST_F(ColorDialogTest, a_font_beyond_the_limits_is_refused) {
    const auto accept_with = [](auto change) {
        return [change](QFontDialog& fonts) {
            QFont font = fonts.currentFont();
            change(font);
            fonts.setCurrentFont(font);
            fonts.accept();
        };
    };
    choose<QFontDialog>("cmdFont", accept_with([](QFont& font) {
                            EXPECT_EQ(font.family(), QFontInfo(display_font(14)).family());
                        }));
    EXPECT_TRUE(person.messages.empty()) << "the preset itself was refused";
    choose<QFontDialog>("cmdFont", accept_with([](QFont& font) { font.setPointSize(16); }));
    EXPECT_EQ(person.take_texts(),
              std::vector<std::string>{"You can only select Bold 13~15 Courier New Fonts"});
    choose<QFontDialog>("cmdFont", accept_with([](QFont& font) {
                            font.setStyleName({});
                            font.setBold(false);
                        }));
    EXPECT_EQ(person.take_texts().size(), 1U);
    EXPECT_EQ(copy(), first);
}

}  // namespace
}  // namespace ampdesk
