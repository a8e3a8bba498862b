#include "shell/site_configuration.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <map>
#include <optional>
#include <regex>
#include <string_view>

#include "platform/numbers.h"
#include "platform/run_time_error.h"
#include "platform/text_file.h"

namespace ampdesk {

namespace {

constexpr std::size_t k_most_models = 8;  // the places for them in the band list
constexpr int k_highest_capability = 4;
constexpr std::size_t k_read_limit = 65536;
constexpr std::size_t k_most_warnings = 20;  // they are shown in one box
constexpr std::size_t k_longest_shown = 60;  // of a text in a warning

std::string_view stripped(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    return text;
}

std::string lower(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c + ('a' - 'A'));
    return out;
}

// The whole text as a number, decimal or "0x…", in the range; else nothing.
std::optional<int> whole_number(std::string_view text, int low, int high) {
    const bool hexadecimal = lower(text.substr(0, 2)) == "0x";
    if (hexadecimal)
        text.remove_prefix(2);
    int value = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), value, hexadecimal ? 16 : 10);
    if (error != std::errc{} || end != text.data() + text.size() || value < low || value > high)
        return std::nullopt;
    return value;
}

std::optional<double> finite_number(std::string_view text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

// A text out of the file as it may stand in a warning.
std::string shown(std::string_view text) {
    std::string out(text.substr(0, k_longest_shown));
    std::replace_if(
        out.begin(), out.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, '?');
    return out;
}

// Whether the library compiles the pattern without harm: its parser goes one level deeper for every
// parenthesis and does not check how large a number behind "{" or "\\" is.
bool harmless_pattern(std::string_view pattern) {
    constexpr std::size_t k_longest_pattern = 200;
    constexpr std::size_t k_most_digits = 4;
    const auto digits_end = [&](std::size_t at) {
        return std::min(pattern.find_first_not_of("0123456789", at), pattern.size());
    };
    for (std::size_t at = pattern.find_first_of("{\\"); at < pattern.size();
         at = pattern.find_first_of("{\\", at + 1)) {
        std::size_t end = digits_end(at + 1);
        bool large = end - at - 1 > k_most_digits;
        if (pattern[at] == '{' && end < pattern.size() && pattern[end] == ',') {
            const std::size_t second = end + 1;
            large = large || digits_end(second) - second > k_most_digits;
        }
        if (large)
            return false;
    }
    return pattern.size() <= k_longest_pattern;
}

class Reader {
  public:
    explicit Reader(std::string name) : name_(std::move(name)) {}

    SiteConfigurationReport read(const std::vector<std::string>& lines) {
        for (const std::string& text : lines) {
            ++line_;
            take_line(stripped(line_ == 1 && text.starts_with("\xEF\xBB\xBF") ? text.substr(3) : text));
        }
        finish_patterns();
        finish_gauge();
        const std::size_t more = warnings_ - report_.warnings.size();
        if (more > 0)
            report_.warnings.push_back(name_ + ": and " + std::to_string(more) + " more");
        return std::move(report_);
    }

  private:
    struct Pattern {
        int line = 0;
        std::optional<std::string> pattern;
        std::optional<std::string> replacement;
    };

    void warn(int line, const std::string& what) {
        if (++warnings_ <= k_most_warnings)
            report_.warnings.push_back(name_ + " line " + std::to_string(line) + ": " + what);
    }

    void take_line(std::string_view line) {
        if (line.empty() || line.front() == ';' || line.front() == '#')
            return;
        if (line.front() == '[') {
            section_ = lower(stripped(line.substr(1, line.find(']') - 1)));
            known_section_ = line.back() == ']' && std::find(std::begin(k_sections), std::end(k_sections),
                                                             section_) != std::end(k_sections);
            if (!known_section_)
                warn(line_, "unknown section " + shown(line));
            return;
        }
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos)
            return warn(line_, "neither a section nor a key with a value");
        if (section_.empty())
            return warn(line_, "a key before the first section");
        if (!known_section_)
            return;  // its header has been reported
        const std::string key(stripped(line.substr(0, equals)));
        const std::string_view value = stripped(line.substr(equals + 1));
        switch (take_value(section_, section_ == "models" ? key : lower(key), value)) {
            case Taken::good:
                break;
            case Taken::unknown_key:
                warn(line_, "unknown key " + shown(key) + " in [" + section_ + "]");
                break;
            case Taken::bad_value:
                warn(line_, "bad value for " + shown(key) + ": " + shown(value));
                break;
        }
    }

    enum class Taken { good, unknown_key, bad_value };

    static Taken good_if(bool good) { return good ? Taken::good : Taken::bad_value; }

    Taken take_value(std::string_view section, const std::string& key, std::string_view value) {
        if (section == "ports")
            return port(key, value);
        if (section == "crc")
            return crc(key, value);
        if (section == "models")
            return model(key, value);
        if (section == "identity")
            return identity(key, value);
        if (section == "gauge")
            return gauge(key, value);
        return amplifier(key, value);
    }

    Taken port(const std::string& key, std::string_view value) {
        const int number = com_number(key);
        if (number == 0)
            return Taken::unknown_key;
        if (!value.empty())
            report_.values.ports.emplace_back(number, value);
        return good_if(!value.empty());
    }

    Taken crc(const std::string& key, std::string_view value) {
        CrcParameters& parameters = report_.values.crc;
        const bool polynomial = key == "polynomial";
        if (!polynomial && key != "initial")
            return Taken::unknown_key;
        const auto number = whole_number(value, polynomial ? 1 : 0, 0xFFFF);
        if (number)
            (polynomial ? parameters.polynomial : parameters.initial) = static_cast<std::uint16_t>(*number);
        return good_if(number.has_value());
    }

    Taken model(const std::string& key, std::string_view value) {
        auto& models = report_.values.models;
        const auto capability = whole_number(value, 0, k_highest_capability);
        if (key.empty() || !capability)
            return Taken::bad_value;
        const auto known =
            std::find_if(models.begin(), models.end(), [&](auto& m) { return m.first == key; });
        if (known != models.end())
            known->second = *capability;
        else if (models.size() < k_most_models)
            models.emplace_back(key, *capability);
        else
            warn(line_, "more than eight models, " + shown(key) + " is left out");
        return Taken::good;
    }

    Taken identity(const std::string& key, std::string_view value) {
        const bool is_pattern = key.starts_with("pattern");
        if (!is_pattern && !key.starts_with("replace"))
            return Taken::unknown_key;
        const auto number = whole_number(std::string_view(key).substr(7), 1, 9999);
        if (!number)
            return Taken::unknown_key;
        Pattern& pattern = patterns_[*number];
        pattern.line = line_;
        (is_pattern ? pattern.pattern : pattern.replacement) = value;
        if (!is_pattern)
            return Taken::good;
        try {
            if (harmless_pattern(value)) {
                const std::regex compiled(*pattern.pattern);
                return good_if(!value.empty());
            }
        } catch (const std::regex_error&) {
            // as one that is not harmless
        }
        pattern.pattern->clear();
        return Taken::bad_value;
    }

    // A pattern that is empty or did not compile has been reported; it is empty.
    void finish_patterns() {
        for (const auto& [number, entry] : patterns_) {
            const std::string digits = std::to_string(number);
            if (!entry.pattern)
                warn(entry.line, "replace" + digits + " has no pattern" + digits);
            else if (!entry.replacement)
                warn(entry.line, "pattern" + digits + " has no replace" + digits);
            else if (!entry.pattern->empty())
                report_.values.identity_patterns.push_back({*entry.pattern, *entry.replacement});
        }
    }

    Taken gauge(const std::string& key, std::string_view value) {
        if (key != "minimum" && key != "maximum")
            return Taken::unknown_key;
        const auto dbm = finite_number(value);
        if (!dbm)
            return Taken::bad_value;
        (key == "minimum" ? report_.values.gauge_minimum : report_.values.gauge_maximum) = *dbm;
        gauge_line_ = line_;
        return Taken::good;
    }

    void finish_gauge() {
        SiteConfiguration& values = report_.values;
        if (values.gauge_minimum < values.gauge_maximum)
            return;
        warn(gauge_line_, "the gauge's minimum must be below its maximum");
        values.gauge_minimum = SiteConfiguration{}.gauge_minimum;
        values.gauge_maximum = SiteConfiguration{}.gauge_maximum;
    }

    Taken amplifier(const std::string& key, std::string_view value) {
        const std::string word = lower(value);
        if (key == "negative_words") {
            report_.values.negative_words =
                word == "signed" ? NegativeWords::two_complement : NegativeWords::overflow;
            return good_if(word == "signed" || word == "error");
        }
        if (key == "reply_address") {
            static constexpr std::pair<std::string_view, ReplyAddress> k_rules[] = {
                {"learned", ReplyAddress::learned},
                {"checked", ReplyAddress::checked},
                {"ignored", ReplyAddress::ignored}};
            for (const auto& [name, rule] : k_rules)
                if (word == name) {
                    report_.values.reply_address = rule;
                    return Taken::good;
                }
            return Taken::bad_value;
        }
        return Taken::unknown_key;
    }

    static constexpr std::string_view k_sections[] = {"ports",    "crc",   "models",
                                                      "identity", "gauge", "amplifier"};

    std::string name_;
    int line_ = 0;
    std::size_t warnings_ = 0;
    std::string section_;
    bool known_section_ = false;
    std::map<int, Pattern> patterns_;
    int gauge_line_ = 0;
    SiteConfigurationReport report_;
};

}  // namespace

SiteConfigurationReport read_site_configuration(const std::string& path) {
    const std::string name = std::filesystem::path(path).filename().string();
    SiteConfigurationReport report;
    if (!file_exists(path))
        return report;
    try {
        return Reader(name).read(read_text_lines(path, k_read_limit));
    } catch (const RunTimeError& error) {
        report.warnings.push_back(name + ": " + error.what());
        return report;
    }
}

}  // namespace ampdesk
