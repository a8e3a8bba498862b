#include "shell/ui/present.h"

namespace ampdesk {

namespace {

struct Presenter {
    Operator& person;
    void operator()(const notice::Told& told) const { person.tell(told.message); }
    void operator()(const notice::Asked& asked) const { person.put_question(asked.number, asked.question); }
    void operator()(const notice::QuestionWithdrawn& withdrawn) const { person.withdraw(withdrawn.number); }
    void operator()(const notice::Beep& beep) const { person.start_beep(beep.length); }
    void operator()(const notice::BusyPointer& pointer) const { person.set_busy_pointer(pointer.busy); }
    void operator()(const notice::Status& status) const { person.show_status(status.text); }
};

}  // namespace

void present(const PersonNotice& notice, Operator& person) {
    std::visit(Presenter{person}, notice);
}

}  // namespace ampdesk
