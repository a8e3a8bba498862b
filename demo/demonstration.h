// The amplifiers of the demonstration, one kind after another, and the files with which the station
// finds them.
#pragma once

#include <string>
#include <vector>

#include "demo/sim_bus.h"

namespace ampdesk::demo {

inline constexpr int k_most_amplifiers = 99;

// Amplifier `number`, 1..99: unit address `number`, serial number 1000 + `number`. Three kinds take
// turns:
//
//   1, 4 …  C/KU/X with output switch and power save; warm, in standby
//   2, 5 …  KU/DBS with power save, no switch; 20 s of warm-up left
//   3, 6 …  KU, one band, neither switch nor power save, °F, Watts and mA; transmitting
//
// Negative quantities go out signed, which the configuration below tells the station; it also makes
// the station look at the address in a reply, so that a wrong one shows.
SimModel demonstration_model(int number);

// Hangs the amplifiers 1..count on the bus.
void add_demonstration(SimBus& bus, int count);

// Writes into that folder one amplifier file each ("com1001.dat" …, RS-485, COM1:, 9600 baud),
// "rs485.dat" and "ampdesk.ini". Returns the names of the amplifier files, without the folder.
// Throws what write_text_lines throws.
std::vector<std::string> write_demonstration_files(const std::string& folder, int count);

}  // namespace ampdesk::demo
