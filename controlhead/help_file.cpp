#include "controlhead/help_file.h"

#include <filesystem>

#include "controlhead/panel.h"
#include "platform/numbers.h"
#include "platform/text_file.h"

namespace ampdesk {

namespace {

using Lines = std::vector<std::string>;

std::string path_in(const std::string& folder) {
    return (std::filesystem::path(folder) / "mhelp.txt").string();
}

std::string display_text(const std::string& line) {
    std::string_view text = line;
    if (const std::size_t opening = text.find('"'); opening != std::string_view::npos) {
        const std::size_t closing = text.rfind('"');
        text = text.substr(opening + 1, closing > opening ? closing - opening - 1 : std::string_view::npos);
    }
    return left_aligned(text.substr(0, Panel::k_columns), Panel::k_columns);
}

Lines section_of(const Lines& file, int screen) {
    Lines section;
    bool inside = false;
    for (std::size_t i = 1; i < file.size() && section.size() < k_longest_help; ++i) {
        if (!inside)
            inside = lenient_number(file[i]) == screen;
        else if (file[i].find("[END]") != std::string::npos)
            break;
        else
            section.push_back(display_text(file[i]));
    }
    return section;
}

}  // namespace

HelpSection read_help(const HeadOptions& options, int screen) {
    HelpSection result;
    std::string path = path_in(options.folder);
    if (!file_exists(path))
        path = path_in(options.shipped_folder);
    if (!file_exists(path)) {
        result.file_missing = true;
        return result;
    }
    try {
        const Lines file = read_text_lines(path);
        if (file.empty())
            throw RunTimeError::input_past_end();
        if (file.front().find("machine help") == std::string::npos)
            throw RunTimeError(321, "Invalid file format");
        result.lines = section_of(file, screen);
    } catch (const RunTimeError& error) {
        result.refusal = error;
    }
    return result;
}

}  // namespace ampdesk
