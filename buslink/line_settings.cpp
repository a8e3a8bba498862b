#include "buslink/line_settings.h"

#include <algorithm>
#include <filesystem>

#include "platform/numbers.h"

namespace ampdesk {

std::optional<int> baud_of_code(int code) {
    if (code < 0 || code >= static_cast<int>(k_baud_rates.size()))
        return std::nullopt;
    return k_baud_rates[static_cast<std::size_t>(code)];
}

std::optional<int> code_of_baud(int baud) {
    const auto* found = std::find(k_baud_rates.begin(), k_baud_rates.end(), baud);
    if (found == k_baud_rates.end())
        return std::nullopt;
    return static_cast<int>(found - k_baud_rates.begin());
}

char parity_letter(int parity_code) {
    switch (parity_code) {
        case 1:
            return 'o';
        case 2:
            return 'e';
        default:
            return 'n';
    }
}

std::string settings_string(const LineSettings& settings) {
    return std::to_string(settings.baud) + "," + parity_letter(settings.parity_code) + "," +
           std::to_string(settings.data_bits) + "," + std::to_string(settings.stop_bits);
}

int port_number(std::string_view port_name) {
    if (port_name.size() < 4)
        return 0;
    const double number = lenient_number(port_name.substr(3));
    return number >= 1 && number <= 99 ? static_cast<int>(number) : 0;
}

int com_number(std::string_view name) {
    if (name.size() == 5 && name.back() == ':')
        name.remove_suffix(1);
    if (name.size() != 4 || name[3] < '1' || name[3] > '4')
        return 0;
    constexpr std::string_view k_upper = "COM";
    constexpr std::string_view k_lower = "com";
    for (std::size_t i = 0; i < 3; ++i)
        if (name[i] != k_upper[i] && name[i] != k_lower[i])
            return 0;
    return name[3] - '0';
}

PortMap::PortMap() {
    for (int number = 1; number <= 4; ++number) set(number, "/dev/ttyS" + std::to_string(number - 1));
}

void PortMap::set(int number, std::string device) {
    devices_[number] = std::move(device);
}

std::string PortMap::device(int number) const {
    const auto found = devices_.find(number);
    return found == devices_.end() ? std::string() : found->second;
}

bool PortMap::same_device(int a, int b) const {
    const auto behind = [this](int number) {
        std::error_code failure;
        const std::filesystem::path name = device(number);
        const std::filesystem::path target = std::filesystem::weakly_canonical(name, failure);
        return failure ? name : target;
    };
    return behind(a) == behind(b);
}

}  // namespace ampdesk
