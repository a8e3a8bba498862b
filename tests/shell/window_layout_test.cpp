// The layout file is read back as written, survives damage, and never puts a window off the screens.
#include "shell/window_layout.h"

#include <gtest/gtest.h>

#include "platform/text_file.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk {
namespace {

// A place that is kept or read as another one, or a damaged line that takes the others with it.
TEST(WindowLayout, IsReadBackAndPassesOverDamagedLines) {
    const ScratchFolder folder;
    const std::string path = folder / "layout.dat";
    const std::vector<std::string> lines = {"ampdesk layout", "main -20 30 1200 800 1",
                                            "head 1001 5 6 400 300 0", "head 7 0 0 410 300 1"};
    const WindowLayout layout{.main = {-20, 30, 1200, 800},
                              .maximised = true,
                              .heads = {{"1001", {5, 6, 400, 300}, false}, {"7", {0, 0, 410, 300}, true}}};
    EXPECT_EQ(layout_lines(layout), lines);
    std::vector<std::string> damaged = lines;
    for (const char* line : {"main 1 2 0 400 0", "head 5 1 2 3", "head 6 99999 0 10 10 0",
                             "head 9 -2147483648 0 10 10 0", "\xFF"})
        damaged.emplace_back(line);
    write_text_lines(path, damaged);
    EXPECT_EQ(read_window_layout(path), layout);
    write_text_lines(path, {"another file", "main 1 2 3 4 0"});
    EXPECT_EQ(read_window_layout(path), std::nullopt);
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
