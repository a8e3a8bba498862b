#include "tools/nvram_choice.h"

#include "platform/text_file.h"

namespace ampdesk {

namespace {

constexpr std::string_view k_filter = "TXT Files (*.TXT)|*.txt|All Files (*.*)|*.*";

std::optional<std::string> choose_file_to_set(Dialogs& person) {
    for (;;) {
        auto path = person.choose_file_to_open("Open nvSram File To Read", k_filter);
        if (!path || file_exists(*path))
            return path;
    }
}

bool may_replace(const std::string& path, Dialogs& person) {
    return person.ask({.text = "Replace existing file - " + path + "?",
                       .detail = {},
                       .icon = Icon::question,
                       .buttons = Buttons::yes_no_cancel}) == Answer::yes;
}

std::optional<std::string> choose_file_to_read_into(Dialogs& person) {
    for (;;) {
        auto path = person.choose_file_to_save("Open nvSram File To Save", k_filter, {}, false);
        if (!path || !file_exists(*path) || may_replace(*path, person))
            return path;
    }
}

}  // namespace

std::optional<std::string> choose_nvram_file(NvramTransfer::Mode mode, Dialogs& person) {
    return mode == NvramTransfer::Mode::set ? choose_file_to_set(person) : choose_file_to_read_into(person);
}

}  // namespace ampdesk
