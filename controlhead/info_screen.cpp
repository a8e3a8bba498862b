// The information screen: maker, model, serial number and revision of the amplifier, from its
// identity block: text, "*", model, "*", serial number, "*", revision.
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "controlhead/head.h"
#include "controlhead/menu_engine.h"
#include "controlhead/screens.h"
#include "platform/numbers.h"
#include "platform/run_time_error.h"

namespace ampdesk {

namespace {

std::vector<std::string> fields_of(std::string_view payload) {
    std::vector<std::string> fields;
    while (true) {
        const std::size_t star = payload.find('*');
        fields.emplace_back(trimmed(payload.substr(0, star)));
        if (star == std::string_view::npos)
            return fields;
        payload.remove_prefix(star + 1);
    }
}

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

// Empty when the amplifier did not answer: the screen then says what is known without it.
std::string read_identity(Head& head) {
    try {
        return head.amplifier.read_itemAll(k_identity_request);
    } catch (const RunTimeError&) {
        return {};
    }
}

void draw(Head& head) {
    static constexpr const char* k_serial = "  Serial#   ";
    head.panel.set_line(1, "JEX Quorvalitics Inc");
    for (const int line : {2, 4}) head.panel.set_line(line, "");
    head.panel.set_line(3, std::string(k_serial) + "----");

    const std::string payload = read_identity(head);
    if (payload.size() <= 5)
        return;
    const std::vector<std::string> fields = fields_of(payload);
    const std::string model = fields.size() > 1 ? fields[1] : "";
    head.panel.set_line(2, ("   Model " + model + " BAND").substr(0, Panel::k_columns));
    if (fields.size() > 2)
        head.panel.set_line(3, k_serial + plain_number(lenient_number(fields[2])));
    if (fields.size() > 3)
        head.panel.set_line(
            4, arranged(fields[3], head.services.options.identity_patterns).substr(0, Panel::k_columns));
}

}  // namespace

void attach_info(Head& head, std::int16_t key) {
    if (key == k_key_enter || key == k_key_refresh)
        draw(head);
    else
        leave_sub_menu(head);
}

}  // namespace ampdesk
