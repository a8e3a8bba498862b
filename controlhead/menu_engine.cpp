#include "controlhead/menu_engine.h"

#include "controlhead/band.h"
#include "controlhead/comm_faults.h"
#include "controlhead/lamps.h"
#include "controlhead/screens.h"
#include "controlhead/status_screens.h"

namespace ampdesk {

void set_menu(Head& head) {
    head.redraw_request = true;  // until header and legend stand
    if (head.first_draw) {
        head.first_draw = false;
        head.band.band_count = band_capability(head.services.options, head.identity.model);
    }
    lite_service(head, 88, 0);
    read_analog(head);
    const bool band_unknown = head.menu_ptr == 1 && head.band.band_count > 0 && find_band(head) == 0;
    if (band_unknown) {
        draw_outline(head);  // the next refresh brings the values, under the label that stands
    } else {
        draw_fixed_rows(head);
        head.redraw_request = false;  // a value that cannot be shown comes with a later refresh
        draw_value_rows(head);
    }
    head.redraw_request = false;
    head.comm_error_shown = false;
}

void update_menu(Head& head) {
    read_analog(head);
    draw_value_rows(head);
}

void rest_markers(Head& head) {
    head.left_marker = '[';
    head.right_marker = head.menu_ptr == 2 ? '<' : ']';
}

void enter_sub_menu(Head& head, SubMenu sub_menu) {
    head.sub_menu = sub_menu;
    head.menu_saved = head.menu_ptr;
    head.menu_ptr = 0;
    head.events.event_refresh = false;
    head.redraw_request = false;  // the page covers it, and leaving the page draws from scratch
    attach_sub_menu(head, k_key_enter);
}

void leave_sub_menu(Head& head) {
    head.menu_ptr = head.menu_saved >= 1 ? head.menu_saved : std::int16_t{1};
    head.sub_menu = k_no_sub_menu;
    head.panel.hide_scroll();
    rest_markers(head);
    set_menu(head);
}

void attach_sub_menu(Head& head, std::int16_t key) {
    if (head.sub_menu == k_no_sub_menu)
        return;
    if (const SubMenuRow* row = sub_menu_row(head.sub_menu))
        return row->attach(head, key);
    head.sub_menu = k_no_sub_menu;
    if (head.menu_ptr == 0)
        head.menu_ptr = 1;
    set_menu(head);
}

void redraw_display(Head& head) {
    if (head.menu_ptr != 0) {
        set_menu(head);
        if (head.gain_mode)
            set_gain(head, k_key_enter);  // shows the scroll bar where the amplifier stands now
        return;
    }
    try {
        attach_sub_menu(head, k_key_refresh);
    } catch (const RunTimeError& error) {
        if (error.number() != RunTimeError::k_no_answer)
            throw;
    }
    // An amplifier that answers all of a visit but the page may not have what the page shows. The page
    // is left then, as the keys are dead while the error screen is up.
    constexpr std::int16_t k_most_misses = 3;
    const bool drawn = head.amplifier.comm_error == 0;
    if (!drawn && ++head.page_misses < k_most_misses)
        return DispCommError(head, 0);
    head.page_misses = 0;
    if (drawn)
        head.comm_error_shown = false;
    else
        leave_sub_menu(head);
}

}  // namespace ampdesk
