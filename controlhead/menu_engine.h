// Drawing and refreshing of whatever the head shows. set_menu draws a status screen from scratch,
// update_menu rewrites its live values; a sub-menu is entered and left here.
#pragma once

#include <cstdint>

#include "controlhead/head.h"

namespace ampdesk {

// Whatever is drawn from scratch is drawn without values older than a second: they would be shown as if they
// were so now.
void let_go_of_old_values(Head& head);

// Draws the status screen menu_ptr 1..4 from scratch, any other value nothing: header and legend, and the
// values that are in hand and at most a second old. The others come when they have been read.
void set_menu(Head& head);

// Rewrites the live rows of the screen in hand, status screen or page. Throws Overflow.
void update_menu(Head& head);

// Edit markers as they stand when nothing is edited; the right one blinks on screen 2.
void rest_markers(Head& head);

// Hands the display to a sub-menu and draws its first page.
void enter_sub_menu(Head& head, SubMenu sub_menu);

// Back to the status screen that the sub-menu was entered from, screen 1 when there is none: scroll
// bar hidden, markers still, set_menu.
void leave_sub_menu(Head& head);

// What a page asks for is of no use once it has gone.
void give_up_page_requests(Head& head);

// Passes a key argument to the sub-menu that owns the display.
void attach_sub_menu(Head& head, std::int16_t key);

// Draws what the head shows again, from scratch: after what covered it, or when it has changed as a whole.
void redraw_display(Head& head);

}  // namespace ampdesk
