// The person in front of the program, for whoever cannot wait for him: messages, questions, beep, pointer.
// Texts are UTF-8.
#pragma once

#include <chrono>
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
    virtual void tell(const Message& message) = 0;

    // Asked and not waited for: the reply brings the number back, to whom it was agreed upon; none comes of a
    // question that has been withdrawn. Shown in turn with what is told.
    virtual void put_question(int number, const Question& question) = 0;
    virtual void withdraw(int number) = 0;

    // Starts the sound and returns; a beep that is sounding is prolonged, not doubled.
    virtual void start_beep(std::chrono::milliseconds length) = 0;

    virtual void set_busy_pointer(bool busy) = 0;

    // One line in the status label of the main window, in the place of what stood there.
    virtual void show_status(std::string_view text) = 0;

    // The ordinary notice: exclamation icon and OK.
    void notify(std::string_view text, std::string_view detail = {}) {
        tell({.text = std::string(text), .detail = std::string(detail)});
    }
};

}  // namespace ampdesk
