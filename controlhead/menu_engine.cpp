#include "controlhead/menu_engine.h"

#include "controlhead/band.h"
#include "controlhead/comm_faults.h"
#include "controlhead/lamps.h"
#include "controlhead/screens.h"
#include "controlhead/status_screens.h"

namespace ampdesk {

void let_go_of_old_values(Head& head) {
    const Instant now = head.services.clock.now();
    const auto old = [&](Instant at) { return now - at > k_oldest_drawn; };
    if (old(head.analog_at))
        head.analog.reset();
    if (old(head.alarm_at))
        head.alarm.reset();
    if (old(head.limits_at))
        head.limits.reset();
}

void set_menu(Head& head) {
    if (head.first_draw) {
        head.first_draw = false;
        head.band.band_count = band_capability(head.services.options, head.identity.model);
    }
    head.redraw_request = false;
    head.comm_error_shown = false;
    let_go_of_old_values(head);
    lite_service(head, 88, 0);
    draw_outline(head);
    if (head.menu_ptr == 1 && head.band.band_count > 0)
        find_band(head);
    attempted([&] { update_menu(head); });
}

void update_menu(Head& head) {
    if (const auto draw = screen_of(head).draw)
        draw(head);
}

void rest_markers(Head& head) {
    head.left_marker = '[';
    head.right_marker = head.menu_ptr == 2 ? '<' : ']';
}

void enter_sub_menu(Head& head, SubMenu sub_menu) {
    head.sub_menu = sub_menu;
    head.menu_saved = head.menu_ptr;
    head.menu_ptr = 0;
    head.redraw_request = false;  // the page covers it, and leaving the page draws from scratch
    let_go_of_old_values(head);
    attach_sub_menu(head, k_key_enter);
}

void leave_sub_menu(Head& head) {
    head.menu_ptr = head.menu_saved >= 1 ? head.menu_saved : std::int16_t{1};
    head.sub_menu = k_no_sub_menu;
    give_up_page_requests(head);
    head.panel.hide_scroll();
    rest_markers(head);
    set_menu(head);
}

void give_up_page_requests(Head& head) {
    std::erase_if(head.requests, [](const Request& request) {
        return request.kind == Request::Kind::identity || request.kind == Request::Kind::event;
    });
}

void attach_sub_menu(Head& head, std::int16_t key) {
    if (head.sub_menu == k_no_sub_menu)
        return;
    if (const auto attach = screen_of(head).attach)
        return attach(head, key);
    head.sub_menu = k_no_sub_menu;
    if (head.menu_ptr == 0)
        head.menu_ptr = 1;
    set_menu(head);
}

void redraw_display(Head& head) {
    let_go_of_old_values(head);
    head.comm_error_shown = false;
    if (head.menu_ptr == 0)
        return attach_sub_menu(head, k_key_refresh);
    set_menu(head);
    if (head.gain_mode)
        set_gain(head, k_key_enter);  // shows the scroll bar where the amplifier stands now
}

}  // namespace ampdesk
