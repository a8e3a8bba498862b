// What was typed into the console lately, to be recalled.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace ampdesk {

// The last twenty commands. A command like the one before it is kept once.
class CommandHistory {
  public:
    static constexpr std::size_t k_length = 20;

    void add(const std::string& command);

    // What the entry shows after the up or down key, given what it shows now. Up leads to older
    // commands and stays at the oldest; down leads back, in the end to the text that was there first.
    std::string older(const std::string& shown);
    std::string newer(const std::string& shown);

  private:
    bool recalled(const std::string& shown) const;

    std::vector<std::string> commands_;
    std::size_t at_ = 0;  // the command that is shown; one past the last for none
    std::string draft_;   // what was typed before the first up key
};

}  // namespace ampdesk
