// "ampdesk.ini": what the maker or the site supplies. Read once at start, never written.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "buslink/bus_link.h"
#include "controlhead/services.h"

namespace ampdesk {

struct SiteConfiguration {
    std::vector<std::pair<int, std::string>> ports;  // COM number 1..4 and its device
    CrcParameters crc;
    // Up to eight designations in file order, each with its band capability 0..4.
    std::vector<std::pair<std::string, int>> models;
    std::vector<IdentityPattern> identity_patterns;
    double gauge_minimum = 30;  // dBm
    double gauge_maximum = 60;
    NegativeWords negative_words = NegativeWords::overflow;
    ReplyAddress reply_address = ReplyAddress::learned;
};

struct SiteConfigurationReport {
    SiteConfiguration values;
    // One line each, "ampdesk.ini line 7: …": unknown keys and bad values, which keep their defaults.
    std::vector<std::string> warnings;
};

// A missing file gives the defaults without a warning; one that cannot be read gives them with one.
//
// Lines are "[section]", "key = value", blank, or a comment that starts with ";" or "#". Sections
// and keys may stand in either case. A value ends with its line, so that a pattern may hold any
// character. Of a key given twice the later one counts.
SiteConfigurationReport read_site_configuration(const std::string& path);

}  // namespace ampdesk
