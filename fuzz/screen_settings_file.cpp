// "set…dat", a control head's colours and font size.
#include <limits>

#include "controlhead/screen_settings.h"
#include "fuzz/memory_file.h"
#include "platform/numbers.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ampdesk;
    using fuzz::check;
    static fuzz::MemoryFile file;
    const auto read = read_screen_settings(file.put(fuzz::text_of(data, size)));
    if (!read)
        return 0;
    for (const std::int32_t colour : {read->fore_colour, read->back_colour, read->machine_colour}) {
        check(shown_colour(colour) <= 0xFFFFFF, "a colour");
        check(colour >= 0 || colour <= std::numeric_limits<std::int32_t>::min() + 24, "of the palette");
    }
    check(read->font_size >= 13 && read->font_size <= 15, "13 to 15 points");
    for (const int flag : read->option_flags) check(flag == -1, "the flags are not read");

    const std::string again = "Color Settings\r\n " + plain_number(read->fore_colour) + "\r\n " +
                              plain_number(read->back_colour) + "\r\n " + plain_number(read->font_size) +
                              "\r\n " + plain_number(read->machine_colour) + "\r\n";
    const auto second = read_screen_settings(file.put(again));
    check(second.has_value() && second->fore_colour == read->fore_colour &&
              second->back_colour == read->back_colour && second->machine_colour == read->machine_colour &&
              std::abs(second->font_size - read->font_size) < 1e-9,
          "what is written reads the same");
    return 0;
}
