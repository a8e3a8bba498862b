// Lists to choose from, as a screen reader hears them.
#pragma once

namespace ampdesk {

// Qt itself gives what is chosen in a list as the list's name on this platform. After this call every
// list that has not been looked at yet has its label as its name, those of Qt's own dialogs too: its
// accessible name, else that of the label that it is the buddy of. What is chosen is its value and its
// description. A second call does nothing.
void name_lists_by_their_labels();

}  // namespace ampdesk
