#include "shell/program_options.h"

#include <filesystem>

namespace ampdesk {

namespace {

std::vector<Message> notices(const SiteConfigurationReport& site, bool folder_kept) {
    std::vector<Message> all;
    if (!folder_kept)
        all.push_back({.text = "The program's folder cannot be written",
                       .detail = std::filesystem::current_path().string() + ": settings will not be kept"});
    std::string warnings;
    for (const std::string& warning : site.warnings) warnings += (warnings.empty() ? "" : "\n") + warning;
    if (!warnings.empty())
        all.push_back({.text = "Some settings of ampdesk.ini are not understood; their defaults are used",
                       .detail = warnings});
    return all;
}

}  // namespace

ProgramOptions program_options(const CommandLine& line, const SiteConfigurationReport& report,
                               const std::string& shipped_folder, bool folder_kept) {
    const SiteConfiguration& site = report.values;
    ProgramOptions options;
    BusOptions& bus = options.station.bus;
    bus.crc = site.crc;
    bus.reply_address = site.reply_address;
    for (const auto& [number, device] : site.ports) bus.ports.set(number, device);
    for (const auto& [number, device] : line.ports) bus.ports.set(number, device);

    HeadOptions& heads = options.station.heads;
    heads.shipped_folder = shipped_folder;
    heads.negative_words = site.negative_words;
    heads.model_capabilities.insert(site.models.begin(), site.models.end());
    heads.identity_patterns = site.identity_patterns;

    MDIForm1Options& window = options.window;
    window.demonstration = line.demo.has_value();
    window.gauge = {site.gauge_minimum, site.gauge_maximum};
    window.ports = bus.ports;
    window.shipped_folder = shipped_folder;
    window.amplifier_files = line.amplifier_files;
    for (const auto& [model, capability] : site.models) window.models.push_back(model);
    window.notices = notices(report, folder_kept);
    return options;
}

}  // namespace ampdesk
