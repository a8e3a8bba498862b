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
        : ChildProgram([&] {
              arguments.insert(arguments.begin(), AMPSIM_PROGRAM);
              return std::move(arguments);
          }()) {}

    std::string command(const std::string& line) const {
        send(line + "\n");
        return answer();
    }
    std::string answer() const {
        std::string line;
        for (std::string byte; (byte = receive(1, 10'000)) != "\n"; line += byte)
            if (byte.empty())
                return line + " (nothing more)";
        return line;
    }
};

}  // namespace ampdesk
