// "layout.dat", where the windows stood.
#include "shell/window_layout.h"
#include "fuzz/memory_file.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ampdesk;
    using fuzz::check;
    static fuzz::MemoryFile file;
    const auto layout = read_window_layout(file.put(fuzz::text_of(data, size)));
    if (!layout)
        return 0;
    check(layout->heads.size() <= 100, "as many heads as there are addresses");
    const auto inside = [](const Place& place) {
        const Place screen{.x = -1920, .y = 30, .width = 1280, .height = 700};
        const Place p = clamped(place, {screen, {.x = 0, .y = 0, .width = 800, .height = 600}});
        check(p.x >= -1920 && p.y >= 0 && p.x + p.width <= 800 && p.y + p.height <= 730, "on a screen");
    };
    std::string again = "ampdesk layout\r\n";
    const auto add = [&](const std::string& what, const Place& p, bool flag) {
        for (const std::string& part :
             {what, std::to_string(p.x), std::to_string(p.y), std::to_string(p.width),
              std::to_string(p.height), std::string(flag ? "1" : "0")})
            again += part + " ";
        again += "\r\n";
        inside(p);
    };
    add("main", layout->main, layout->maximised);
    for (const HeadPlace& head : layout->heads) add("head " + head.number, head.place, head.minimised);
    check(read_window_layout(file.put(again)) == layout, "what is written reads the same");
    return 0;
}
