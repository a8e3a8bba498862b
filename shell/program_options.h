// What the command line and "ampdesk.ini" ask for, as the station and the main window take it.
#pragma once

#include <string>
#include <vector>

#include "shell/command_line.h"
#include "shell/site_configuration.h"
#include "station/station_host.h"

namespace ampdesk {

struct MDIForm1Options {
    std::string version;         // major.minor.revision
    bool demonstration = false;  // the amplifiers are simulated: faults can be made on them
    GaugeRange gauge;
    PortMap ports{};                           // which device each COM port stands for
    std::string shipped_folder = ".";          // where the manual is when the program's folder has none
    std::vector<std::string> amplifier_files;  // opened by the first tick of TimerFileAutoOpen
    std::vector<std::string> models{};         // the site's own designations, in the order of its file

    // Told at the start, in this order, after all amplifiers have been opened: a box may stand for hours.
    std::vector<Message> notices{};
};

struct ProgramOptions {
    StationHostOptions station;
    MDIForm1Options window;  // but for the version
};

// A port of the command line goes before the file's. `folder_kept` is false when nothing can be written to
// the program's folder, the current one, which is then told.
ProgramOptions program_options(const CommandLine& line, const SiteConfigurationReport& site,
                               const std::string& shipped_folder, bool folder_kept);

}  // namespace ampdesk
