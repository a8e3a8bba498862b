// The information screen: maker, model, serial number and revision of the amplifier, from its
// identity block.
#include <regex>
#include <string>
#include <vector>

#include "controlhead/head.h"
#include "controlhead/menu_engine.h"
#include "controlhead/screens.h"
#include "platform/numbers.h"

namespace ampdesk {

namespace {

// The revision as the site wants it rearranged. A pattern that is no regular expression was
// reported when the program started and is passed over.
std::string arranged(std::string revision, const std::vector<IdentityPattern>& patterns) {
    for (const IdentityPattern& p : patterns) {
        try {
            revision = std::regex_replace(revision, std::regex(p.pattern), p.replacement);
        } catch (const std::regex_error&) {
            continue;
        }
    }
    return revision;
}

constexpr const char* k_serial = "  Serial#   ";

// The amplifier is asked again by whoever comes again: another one may stand there.
void enter(Head& head) {
    head.panel.set_line(1, "JEX Quorvalitics Inc");
    for (const int line : {2, 4}) head.panel.set_line(line, "");
    head.panel.set_line(3, k_serial);
    head.want({Request::Kind::identity});
}

void take_info(Head& head, const Reading& reading) {
    if (reading.request.kind != Request::Kind::identity)
        return;
    const Identity* identity = reading.get<Identity>();
    const bool numbered = identity != nullptr && identity->serial_number;
    head.panel.set_line(
        3, k_serial + (numbered ? plain_number(lenient_number(*identity->serial_number)) : "----"));
    if (identity == nullptr)
        return;
    head.panel.set_line(2, ("   Model " + identity->model + " BAND").substr(0, Panel::k_columns));
    if (identity->revision)
        head.panel.set_line(4, arranged(*identity->revision, head.services.options.identity_patterns)
                                   .substr(0, Panel::k_columns));
}

void attach_info(Head& head, std::int16_t key) {
    if (key == k_key_enter || key == k_key_refresh)
        enter(head);
    else
        leave_sub_menu(head);
}

}  // namespace

// An identity that cannot be read shows as "----".
extern const Screen k_identity{.sub_menu = k_information,
                               .attach = attach_info,
                               .from = 2,
                               .key = 1,
                               .take = take_info,
                               .keys = {"Leave", "Leave", "Leave", "Leave"}};

}  // namespace ampdesk
