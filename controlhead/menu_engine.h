// Drawing and refreshing of whatever the head shows. set_menu draws a status screen from scratch,
// update_menu rewrites its live values; a sub-menu is entered and left here.
#pragma once

#include <cstdint>

#include "controlhead/head.h"

namespace ampdesk {

// Draws the status screen menu_ptr 1..4 from scratch; any other value draws nothing. Throws
// error 100 or Overflow.
void set_menu(Head& head);

// Rewrites the value lines of the status screen in hand. Throws as set_menu.
void update_menu(Head& head);

// Edit markers as they stand when nothing is edited; the right one blinks on screen 2.
void rest_markers(Head& head);

// Hands the display to a sub-menu and draws its first page.
void enter_sub_menu(Head& head, SubMenu sub_menu);

// Back to the status screen that the sub-menu was entered from, screen 1 when there is none: scroll
// bar hidden, markers still, set_menu.
void leave_sub_menu(Head& head);

// Passes a key argument to the sub-menu that owns the display.
void attach_sub_menu(Head& head, std::int16_t key);

// Draws again what was on the display before the communication error screen covered it. When a read
// fails on the way that screen stays up; a page that misses three times is left for its status screen.
void redraw_display(Head& head);

}  // namespace ampdesk
