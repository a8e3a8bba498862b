// What a screen shows of the values that were read, and the rows it shows them in.
#pragma once

#include <optional>
#include <string>

#include "amplifier/readings.h"
#include "controlhead/panel.h"
#include "platform/run_time_error.h"

namespace ampdesk {

// The number on the display: 0 for a quantity that the block lacks. Throws Overflow, with the name of the
// quantity, for one that cannot be shown.
template <class Block>
double shown(const Block& block, typename Block::Item item) {
    const Quantity& quantity = block[item];
    if (quantity.kind == Quantity::Kind::overflowed)
        throw RunTimeError::overflow(
            std::string(Block::name(item)) +
            " comes as a negative number; negative_words=signed in ampdesk.ini accepts it");
    return quantity.value;
}

// A row whose value is not there or cannot be shown is blank, because what stood there is no longer so; the
// rows behind it are drawn all the same.
class ValueRows {
  public:
    // `known`: the block that the rows are made of is there.
    ValueRows(Panel& panel, bool known) : panel_(panel), known_(known) {}

    // Line 1..4 gets what `text` returns; blank when it throws a RunTimeError.
    template <class Text>
    void draw(int line, Text text) {
        if (!known_)
            return panel_.set_line(line, "");
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
    bool known_;
    std::optional<RunTimeError> first_error_;
};

}  // namespace ampdesk
