#include "demo/demonstration.h"

#include "platform/text_file.h"

namespace ampdesk::demo {

SimModel demonstration_model(int number) {
    using namespace std::chrono_literals;
    SimModel model{.address = number, .serial = 1000 + number, .signed_words = true};
    switch (number % 3) {
        case 1:
            model.name = "C/KU/X";
            break;
        case 2:
            model.name = "KU/DBS";
            model.has_switch = false;
            model.warm_up = 20s;
            model.console_time = 311h + 58min;
            model.rf_time = 120h + 7min;
            break;
        default:
            model.name = "KU";
            model.has_switch = false;
            model.power_save = false;
            model.filament_in_ma = true;
            model.fahrenheit = true;
            model.forward_in_watts = true;
            model.reverse_in_watts = true;
            model.hv_on = true;
            model.rf_on = true;
            model.console_time = 20411h + 31min;
            model.rf_time = 18002h + 16min;
            break;
    }
    return model;
}

void add_demonstration(SimBus& bus, int count) {
    for (int number = 1; number <= count; ++number) bus.add(demonstration_model(number));
}

std::vector<std::string> write_demonstration_files(const std::string& folder, int count) {
    const auto settings = [](int address) {
        return std::vector<std::string>{"RS-485", "COM1:", "6", std::to_string(address)};
    };
    std::vector<std::string> names;
    for (int number = 1; number <= count; ++number) {
        names.push_back("com" + std::to_string(demonstration_model(number).serial) + ".dat");
        write_text_lines(folder + "/" + names.back(), settings(number));
    }
    write_text_lines(folder + "/rs485.dat", settings(1));
    write_text_lines(folder + "/ampdesk.ini",
                     {"[amplifier]", "negative_words=signed", "reply_address=checked"});
    return names;
}

}  // namespace ampdesk::demo
