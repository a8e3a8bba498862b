// What the station has to say to the person in front of the windows, and what he answers.
#pragma once

#include <chrono>
#include <string>
#include <variant>

#include "platform/operator.h"

namespace ampdesk {

namespace act {

struct AnswerQuestion {
    int number = 0;
    Reply reply{};
};

}  // namespace act

using PersonAct = std::variant<act::AnswerQuestion>;

namespace notice {

struct Told {
    Message message{};
};
struct Asked {
    int number = 0;
    Question question{};
};
struct QuestionWithdrawn {
    int number = 0;
};
struct Beep {
    std::chrono::milliseconds length{};
};
struct BusyPointer {
    bool busy = false;
};
struct Status {
    std::string text{};  // UTF-8
};

}  // namespace notice

using PersonNotice = std::variant<notice::Told, notice::Asked, notice::QuestionWithdrawn, notice::Beep,
                                  notice::BusyPointer, notice::Status>;

}  // namespace ampdesk
