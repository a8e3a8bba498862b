// The person in front of the program: message boxes, questions, file dialogs, beep, pointer.
// Texts are UTF-8. The Qt implementation shows windows; the tests' one records and answers.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace ampdesk {

enum class Icon { none, exclamation, question, information };
enum class Buttons { ok, ok_cancel, yes_no, yes_no_cancel };
enum class Answer { ok, cancel, yes, no };

struct Message {
    std::string text{};    // a fixed text, shown unchanged
    std::string detail{};  // one line of cause below it; may be empty
    Icon icon = Icon::exclamation;
    Buttons buttons = Buttons::ok;
    std::string title = "JEX Remote Control";
    bool operator==(const Message&) const = default;
};

// What the operator is asked without anybody waiting for the answer.
struct Question {
    enum class Kind {
        choice,  // the message and its buttons
        text,    // a line of text; the message's text is the prompt
        band,    // the name of a band
    };
    Kind kind = Kind::choice;
    Message message{};
};

struct Reply {
    Answer answer = Answer::cancel;  // of a choice
    std::string text{};              // of the others, UTF-8; empty when he gave none
};

class Operator {
  public:
    virtual ~Operator() = default;

    // Told and not waited for. Shown when what came before it has been seen; left out when one like it waits
    // or stands.
    virtual void tell(const Message& message) { ask(message); }

    // Asked and not waited for: the reply brings the number back, to whom it was agreed upon; none comes of a
    // question that has been withdrawn. Shown in turn with what is told.
    virtual void put_question(int /*number*/, const Question& /*question*/) {}
    virtual void withdraw(int /*number*/) {}

    // Modal: returns when the operator has answered. Other windows go on living meanwhile. A box
    // that is closed without a button answers cancel, no where there is no cancel, else ok.
    virtual Answer ask(const Message& message) = 0;

    // Nothing when the operator cancels.
    virtual std::optional<std::string> input_box(std::string_view prompt) = 0;

    // Filters in the form "Text (*.ext)|*.ext|All Files (*.*)|*.*". Nothing when cancelled.
    virtual std::optional<std::string> choose_file_to_open(std::string_view title,
                                                           std::string_view filter) = 0;
    // Asks before an existing file is chosen, unless the caller does that in its own words.
    virtual std::optional<std::string> choose_file_to_save(std::string_view title, std::string_view filter,
                                                           std::string_view suggestion,
                                                           bool ask_to_replace = true) = 0;

    // Starts the sound and returns; a beep that is sounding is prolonged, not doubled.
    virtual void start_beep(std::chrono::milliseconds length) = 0;

    virtual void set_busy_pointer(bool busy) = 0;

    // One line in the status label of the main window, in the place of what stood there.
    virtual void show_status(std::string_view text) = 0;

    // The ordinary notice: exclamation icon and OK.
    void notify(std::string_view text, std::string_view detail = {}) {
        ask({.text = std::string(text), .detail = std::string(detail)});
    }
};

}  // namespace ampdesk
