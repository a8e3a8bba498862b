// The program ampsim as another program sees it: it answers line by line.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/support/child_program.h"

namespace ampdesk {

class RunningAmpsim : public ChildProgram {
  public:
    explicit RunningAmpsim(std::vector<std::string> arguments)
        : ChildProgram(with_name(std::move(arguments))) {}

    std::string command(const std::string& line) const {
        send(line + "\n");
        return answer();
    }
    std::string answer() const {
        std::string line;
        while (!line.ends_with('\n')) {
            const std::string byte = receive(1, 10'000);
            if (byte.empty())
                return line + " (nothing more)";
            line += byte;
        }
        return line.substr(0, line.size() - 1);
    }

  private:
    static std::vector<std::string> with_name(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), AMPSIM_PROGRAM);
        return arguments;
    }
};

}  // namespace ampdesk
