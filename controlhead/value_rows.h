// The rows of a screen that show values. One whose value cannot be shown is blank, because what stood there
// is no longer so; the rows behind it are drawn all the same.
#pragma once

#include <optional>

#include "controlhead/panel.h"
#include "platform/run_time_error.h"

namespace ampdesk {

class ValueRows {
  public:
    explicit ValueRows(Panel& panel) : panel_(panel) {}

    // Line 1..4 gets what `text` returns; blank when it throws a RunTimeError.
    template <class Text>
    void draw(int line, Text text) {
        try {
            panel_.set_line(line, text());
        } catch (const RunTimeError& error) {
            panel_.set_line(line, "");
            if (!first_error_)
                first_error_ = error;
        }
    }

    // Throws the first error that a row has met.
    void finish() const {
        if (first_error_)
            throw RunTimeError(*first_error_);
    }

  private:
    Panel& panel_;
    std::optional<RunTimeError> first_error_;
};

}  // namespace ampdesk
