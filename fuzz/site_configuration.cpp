// "ampdesk.ini".
#include "shell/site_configuration.h"
#include "fuzz/memory_file.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ampdesk;
    using fuzz::check;
    static fuzz::MemoryFile file;
    const auto [site, warnings] = read_site_configuration(file.put(fuzz::text_of(data, size)));
    check(warnings.size() <= 21, "warnings fit one box");
    for (const std::string& warning : warnings) {
        check(warning.size() < 300, "a warning is a line");
        for (const char c : warning) check(static_cast<unsigned char>(c) >= ' ', "a warning can be shown");
    }
    for (const auto& [number, device] : site.ports)
        check(number >= 1 && number <= 4 && !device.empty(), "COM1 to COM4");
    check(site.crc.polynomial != 0, "a polynomial");
    check(site.models.size() <= 8, "eight models");
    for (const auto& [name, capability] : site.models)
        check(!name.empty() && capability >= 0 && capability <= 4, "a model");
    check(site.gauge_minimum < site.gauge_maximum, "a gauge with a range");
    for (const IdentityPattern& p : site.identity_patterns) check(!p.pattern.empty(), "a pattern");
    return 0;
}
