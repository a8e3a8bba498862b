// An operator who remembers what was said and answers as the test prepared.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/dialogs.h"

namespace ampdesk {

class RecordingOperator : public Dialogs {
  public:
    void tell(const Message& message) override { ask(message); }

    // Prepared as for the boxes, and given when the test takes the replies.
    void put_question(int number, const Question& question) override {
        using enum Question::Kind;
        if (question.kind == choice)
            replies_[number] = {ask(question.message)};
        else
            replies_[number] = {Answer::ok, question.kind == text ? take_input(question.message.text)
                                                                  : take_first(bands, {})};
    }
    void withdraw(int number) override { replies_.erase(number); }

    // The replies to what was asked since the last call and has not been withdrawn, by number.
    std::map<int, Reply> take_replies() { return std::exchange(replies_, {}); }

    Answer ask(const Message& message) override {
        messages.push_back(message);
        if (on_ask)
            on_ask(message);
        const bool has_ok = message.buttons == Buttons::ok || message.buttons == Buttons::ok_cancel;
        return take_first(answers, has_ok ? Answer::ok : Answer::yes);
    }
    std::optional<std::string> choose_file_to_open(std::string_view title, std::string_view) override {
        prompts.emplace_back(title);
        return take_first(choices, {});
    }
    std::optional<std::string> choose_file_to_save(std::string_view title, std::string_view, std::string_view,
                                                   bool) override {
        return choose_file_to_open(title, {});
    }
    void start_beep(std::chrono::milliseconds length) override { beeps.push_back(length); }
    void set_busy_pointer(bool busy) override { pointer.push_back(busy); }
    void show_status(std::string_view text) override { status = text; }

    // The texts of all boxes so far, emptied by the call: a test that shows a box nobody asked for
    // fails by comparing this with {}.
    std::vector<std::string> take_texts() {
        std::vector<std::string> texts;
        for (const Message& message : std::exchange(messages, {})) texts.push_back(message.text);
        return texts;
    }

    std::vector<Message> messages;
    std::deque<Answer> answers;                      // else ok, or yes where there is no ok
    std::deque<std::optional<std::string>> inputs;   // else cancelled
    std::deque<std::optional<std::string>> choices;  // of both file dialogs; else cancelled
    std::deque<std::string> bands;                   // else cancelled
    std::vector<std::string> prompts;                // input boxes and file dialog titles
    std::vector<std::chrono::milliseconds> beeps;
    std::vector<bool> pointer;                   // busy or not
    std::string status;                          // the last one
    std::function<void(const Message&)> on_ask;  // runs while a box is open
    std::function<void()> on_input;              // … or an input box

  private:
    std::map<int, Reply> replies_;

    std::string take_input(const std::string& prompt) {
        prompts.push_back(prompt);
        if (on_input)
            on_input();
        return take_first(inputs, {}).value_or("");
    }
    template <class T>
    static T take_first(std::deque<T>& prepared, T otherwise) {
        if (prepared.empty())
            return otherwise;
        const T first = prepared.front();
        prepared.pop_front();
        return first;
    }
};

}  // namespace ampdesk
