// The layout file is read back as written, survives damage, and never puts a window off the screens.
#include "shell/window_layout.h"

#include <gtest/gtest.h>

#include "platform/text_file.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk {
namespace {

class LayoutFile : public testing::Test {
  protected:
    const ScratchFolder folder_;
    const std::string path_ = folder_ / "layout.dat";
};

TEST_F(LayoutFile, ReadsBackWhatWasWritten) {
    const WindowLayout layout{.main = {-20, 30, 1200, 800},
                              .maximised = true,
                              .heads = {{"1001", {5, 6, 400, 300}, false}, {"7", {0, 0, 410, 300}, true}}};
    write_titled_lines(path_, layout_lines(layout));
    EXPECT_EQ(read_window_layout(path_), layout);
}

TEST_F(LayoutFile, PassesOverDamagedLines) {
    write_text_lines(path_, {"ampdesk layout", "main 1 2 0 400 0", "head 5 1 2 3", "head 6 99999 0 10 10 0",
                             "head 9 -2147483648 0 10 10 0", "head 8 1 2 30 40 1", std::string("\0\xFF", 2)});
    const auto layout = read_window_layout(path_);
    ASSERT_TRUE(layout);
    EXPECT_EQ(layout->main, Place{});
    ASSERT_EQ(layout->heads.size(), 1U);
    EXPECT_EQ(layout->heads[0], (HeadPlace{"8", {1, 2, 30, 40}, true}));
    write_text_lines(path_, {"another file", "main 1 2 3 4 0"});
    EXPECT_EQ(read_window_layout(path_), std::nullopt);
}

TEST(WindowLayout, IsBroughtBackOntoTheScreensThereAre) {
    const std::vector<Place> screens = {{0, 0, 1000, 800}, {1000, 0, 2000, 1200}};
    const struct {
        Place from;
        Place to;
    } table[] = {
        {{10, 10, 300, 200}, {10, 10, 300, 200}},        // inside: stays
        {{-50, 700, 300, 200}, {0, 600, 300, 200}},      // over the edge
        {{5000, 5000, 300, 200}, {700, 600, 300, 200}},  // on a screen that is gone
        {{1100, 0, 3000, 2000}, {1000, 0, 2000, 1200}},  // larger than its screen
        {{900, 0, 800, 100}, {1000, 0, 800, 100}},       // mostly on the second
    };
    for (const auto& row : table)
        EXPECT_EQ(clamped(row.from, screens), row.to) << row.from.x << ' ' << row.from.y;
    EXPECT_EQ(clamped({-9, -9, 5, 5}, {}), (Place{-9, -9, 5, 5}));
}

}  // namespace
}  // namespace ampdesk
