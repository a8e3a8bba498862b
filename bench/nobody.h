// An operator who is not there, for the programs that run by themselves.
#pragma once

#include <cstdio>

#include "platform/operator.h"

namespace ampdesk {

// What would be said goes to standard error.
class Nobody : public Operator {
  public:
    void tell(const Message& message) override {
        std::fprintf(stderr, "box: %s %s\n", message.text.c_str(), message.detail.c_str());
    }
    void put_question(int, const Question& question) override { tell(question.message); }
    void withdraw(int) override {}
    void start_beep(std::chrono::milliseconds) override {}
    void set_busy_pointer(bool) override {}
    void show_status(std::string_view) override {}
};

}  // namespace ampdesk
