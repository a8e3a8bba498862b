// Questions to the operator that nobody waits for: what is to be done with the answer is kept here until it
// comes.
#pragma once

#include <functional>
#include <map>
#include <utility>

#include "platform/operator.h"

namespace ampdesk {

class Questions {
  public:
    using Then = std::function<void(const Reply&)>;

    explicit Questions(Operator& person) : operator_(person) {}

    // The number of the question, from 1 and never given again.
    int ask(const Question& question, Then then) {
        open_.emplace(++last_, std::move(then));
        operator_.put_question(last_, question);
        return last_;
    }

    // Of a question that has been withdrawn or answered: nothing.
    void answer(int number, const Reply& reply) {
        if (auto found = open_.extract(number))
            found.mapped()(reply);
    }

    // Whatever was to be done with the answers is not done.
    void withdraw_all() {
        for (const auto& [number, then] : std::exchange(open_, {})) operator_.withdraw(number);
    }

    void withdraw(int number) {
        if (open_.erase(number) > 0)
            operator_.withdraw(number);
    }

  private:
    Operator& operator_;
    std::map<int, Then> open_;
    int last_ = 0;
};

}  // namespace ampdesk
