// Files that could not be written, gathered so that one message tells of all of them.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/operator.h"

namespace ampdesk {

class UnsavedFiles {
  public:
    // Writes a file by that action; an action that throws leaves its file unsaved.
    void attempt(const std::string& file, const std::function<void()>& write);

    // One box: the first cause and below it every file, with its own cause where that is another.
    // None when everything was written.
    void tell(Operator& person) const;

  private:
    struct Failure {
        std::string file;
        std::string cause;
    };
    std::vector<Failure> failures_;
};

}  // namespace ampdesk
