#include "shell/command_line.h"

#include <charconv>
#include <string_view>

#include "buslink/line_settings.h"

namespace ampdesk {

namespace {

constexpr int k_demo_default = 3;
constexpr int k_demo_most = 99;
constexpr std::size_t k_most_files = 100;  // the number of unit addresses

std::optional<int> whole_number(std::string_view text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

// "COM1:=/dev/ttyUSB0"; the colon may be left out.
std::optional<std::pair<int, std::string>> port_device(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals + 1 == text.size())
        return std::nullopt;
    const int number = com_number(std::string_view(text).substr(0, equals));
    if (number == 0)
        return std::nullopt;
    return std::pair(number, text.substr(equals + 1));
}

class Parser {
  public:
    explicit Parser(const std::vector<std::string>& arguments) : arguments_(arguments) {}

    CommandLine parse() {
        bool options = true;  // until "--"
        while (at_ < arguments_.size() && line_.error.empty()) {
            const std::string& argument = arguments_[at_++];
            if (options && argument == "--")
                options = false;
            else if (options && argument.size() > 1 && argument.front() == '-')
                option(argument);
            else if (line_.amplifier_files.size() < k_most_files)
                line_.amplifier_files.push_back(argument);
        }
        return line_;
    }

  private:
    void option(const std::string& argument) {
        const std::size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        std::optional<std::string> value;
        if (equals != std::string::npos)
            value = argument.substr(equals + 1);
        if (name == "--demo")
            demo(value);
        else if (name == "--folder")
            line_.folder = needed(name, value);
        else if (name == "--port")
            port(needed(name, value));
        else if (argument == "--version")
            line_.version = true;
        else if (argument == "--help" || argument == "-h")
            line_.help = true;
        else
            line_.error = "unknown option " + argument;
    }

    // The value behind "=" or, without one, the next argument.
    std::string needed(const std::string& name, const std::optional<std::string>& value) {
        std::string text = value ? *value : at_ < arguments_.size() ? arguments_[at_++] : "";
        if (text.empty())
            line_.error = name + " needs a value";
        return text;
    }

    void demo(const std::optional<std::string>& value) {
        line_.demo = value ? whole_number(*value) : k_demo_default;
        if (line_.demo && *line_.demo >= 1 && *line_.demo <= k_demo_most)
            return;
        line_.demo.reset();
        line_.error = "--demo takes a number from 1 to 99";
    }

    void port(const std::string& value) {
        if (!line_.error.empty())
            return;
        if (auto mapping = port_device(value))
            line_.ports.push_back(std::move(*mapping));
        else
            line_.error = "--port takes COM1:=DEVICE to COM4:=DEVICE, not " + value;
    }

    const std::vector<std::string>& arguments_;
    std::size_t at_ = 0;
    CommandLine line_;
};

}  // namespace

CommandLine parse_command_line(const std::vector<std::string>& arguments) {
    return Parser(arguments).parse();
}

std::string usage_text() {
    return "Usage: ampdesk [--folder DIR] [--demo[=N]] [--port COM1:=DEVICE]... [--version] [--help]\n"
           "               [AMPLIFIER FILE...]\n"
           "\n"
           "  --folder DIR         the program's folder, with its settings and amplifier files\n"
           "  --demo[=N]           N simulated amplifiers (1 to 99, 3 unless told); no hardware needed\n"
           "  --port COM1:=DEVICE  the device that COM1: (to COM4:) stands for\n"
           "  --version            print the version and end\n"
           "  --help               print this and end\n"
           "  AMPLIFIER FILE       amplifier files to open at start, 100 at most\n";
}

}  // namespace ampdesk
