// An operator who is not there, for the programs that run by themselves.
#pragma once

#include <cstdio>

#include "platform/operator.h"

namespace ampdesk {

// What would be said goes to standard error.
class Nobody : public Operator {
  public:
    Answer ask(const Message& message) override {
        std::fprintf(stderr, "box: %s %s\n", message.text.c_str(), message.detail.c_str());
        return Answer::ok;
    }
    std::optional<std::string> input_box(std::string_view) override { return {}; }
    std::optional<std::string> choose_file_to_open(std::string_view, std::string_view) override { return {}; }
    std::optional<std::string> choose_file_to_save(std::string_view, std::string_view, std::string_view,
                                                   bool) override {
        return {};
    }
    void start_beep(std::chrono::milliseconds) override {}
    void set_busy_pointer(bool) override {}
    void show_status(std::string_view) override {}
};

}  // namespace ampdesk
