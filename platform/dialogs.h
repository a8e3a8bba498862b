// The person in front of the windows, who can be waited for. The Qt implementation shows windows; the tests'
// one records and answers.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/operator.h"

namespace ampdesk {

class Dialogs : public Operator {
  public:
    // Modal: returns when the operator has answered. Other windows go on living meanwhile. A box
    // that is closed without a button answers cancel, no where there is no cancel, else ok.
    virtual Answer ask(const Message& message) = 0;

    // Filters in the form "Text (*.ext)|*.ext|All Files (*.*)|*.*". Nothing when the operator cancels.
    virtual std::optional<std::string> choose_file_to_open(std::string_view title,
                                                           std::string_view filter) = 0;
    // Asks before an existing file is chosen, unless the caller does that in its own words.
    virtual std::optional<std::string> choose_file_to_save(std::string_view title, std::string_view filter,
                                                           std::string_view suggestion,
                                                           bool ask_to_replace = true) = 0;
};

}  // namespace ampdesk
