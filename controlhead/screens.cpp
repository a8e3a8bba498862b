#include "controlhead/screens.h"

#include <algorithm>
#include <iterator>

namespace ampdesk {

namespace {

constexpr SubMenuRow k_sub_menus[] = {
    {k_help_pages, 0, 2, attach_help, scroll_help},
    {k_setup_menus, 2, 0, attach_setup},
    {k_warning_levels, 3, 0, attach_warnings, scroll_warnings, tick_warnings},
    {k_information, 2, 1, attach_info},
    {k_event_list, 4, 1, attach_event, scroll_events, tick_events},
};

template <class Condition>
const SubMenuRow* first_row(Condition condition) {
    const auto* row = std::find_if(std::begin(k_sub_menus), std::end(k_sub_menus), condition);
    return row != std::end(k_sub_menus) ? row : nullptr;
}

}  // namespace

const SubMenuRow* sub_menu_row(std::int16_t number) {
    return first_row([&](const SubMenuRow& row) { return row.number == number; });
}

const SubMenuRow* sub_menu_behind(std::int16_t screen, std::int16_t key) {
    return first_row(
        [&](const SubMenuRow& row) { return row.key == key && (row.screen == 0 || row.screen == screen); });
}

}  // namespace ampdesk
