// The person as the station sees him: by way of the notices that go to the windows.
#pragma once

#include <string>

#include "station/talk.h"

namespace ampdesk {

class NotifiedOperator : public Operator {
  public:
    explicit NotifiedOperator(Mailbox<Notice>& notices) : notices_(notices) {}

    // While nobody looks, one that is told again and again waits once.
    void tell(const Message& message) override {
        newest("told " + message.title + '\n' + message.text + '\n' + message.detail, notice::Told{message});
    }
    void put_question(int number, const Question& question) override {
        notices_.put(notice::Asked{number, question});
    }
    void withdraw(int number) override { notices_.put(notice::QuestionWithdrawn{number}); }
    void start_beep(std::chrono::milliseconds length) override { newest("beep", notice::Beep{length}); }
    void set_busy_pointer(bool busy) override { notices_.put(notice::BusyPointer{busy}); }
    void show_status(std::string_view text) override { newest("status", notice::Status{std::string(text)}); }

  private:
    void newest(const std::string& key, PersonNotice notice) { notices_.put_newest(key, std::move(notice)); }

    Mailbox<Notice>& notices_;
};

}  // namespace ampdesk
