// The fuzzer's bytes read from the front, as a script of numbers and stretches. Past the end all
// numbers are 0 and all stretches empty.
#pragma once

#include <algorithm>
#include <string>

#include "fuzz/check.h"

namespace ampdesk::fuzz {

class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : bytes_(text_of(data, size)) {}

    bool empty() const { return bytes_.empty(); }

    unsigned number() {
        if (bytes_.empty())
            return 0;
        const auto value = static_cast<unsigned char>(bytes_.front());
        bytes_.remove_prefix(1);
        return value;
    }

    std::string take(std::size_t count) {
        const std::string_view taken = bytes_.substr(0, count);
        bytes_.remove_prefix(taken.size());
        return std::string(taken);
    }

    // A length and that many bytes.
    std::string stretch() { return take(number()); }

    // Up to the next line feed, which is left out.
    std::string line() {
        std::string taken = take(std::min(bytes_.find('\n'), bytes_.size()));
        number();
        return taken;
    }

    std::string rest() { return take(bytes_.size()); }

  private:
    std::string_view bytes_;
};

}  // namespace ampdesk::fuzz
