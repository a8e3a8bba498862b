// The settings of the bus line and the codes that its files and dialogs use for them.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/serial_port.h"

namespace ampdesk {

// Baud code 0..7, the index of the baud option button.
inline constexpr std::array<int, 8> k_baud_rates = {110, 300, 600, 1200, 2400, 4800, 9600, 19200};

// Nothing for a code outside 0..7.
std::optional<int> baud_of_code(int code);

// Nothing for a rate that has no code.
std::optional<int> code_of_baud(int baud);

// What open_bus_port takes. Stop and data bits are the real counts; parity_code 1 is odd, 2 even,
// anything else none.
struct LineSettings {
    std::string port_name = "COM2:";
    int baud = 9600;
    int parity_code = 0;
    int data_bits = 8;
    int stop_bits = 1;
    bool operator==(const LineSettings&) const = default;
};

char parity_letter(int parity_code);

// "9600,n,8,1"
std::string settings_string(const LineSettings& settings);

// The number in a port name from its fourth character ("COM3:" gives 3); 0 when there is none.
int port_number(std::string_view port_name);

// The number of a name from COM1 to COM4, in either case and with or without its colon; 0 for
// anything else. For what a person typed into a configuration or on the command line.
int com_number(std::string_view name);

// Which operating-system device each of COM1: to COM4: stands for.
class PortMap {
  public:
    // The platform's own four lines, /dev/ttyS0 to /dev/ttyS3.
    PortMap();
    void set(int number, std::string device);
    // Empty for a number outside 1..4.
    std::string device(int number) const;
    // Whether both stand for one device, which has as many names as there are links to it.
    bool same_device(int a, int b) const;

  private:
    std::map<int, std::string> devices_;
};

}  // namespace ampdesk
