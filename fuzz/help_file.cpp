// "mhelp.txt".
#include <filesystem>

#include "controlhead/help_file.h"
#include "fuzz/memory_file.h"
#include "tests/support/scratch_folder.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ampdesk;
    using fuzz::check;
    static fuzz::MemoryFile file;
    static const ScratchFolder folder;
    static const HeadOptions options = [] {
        std::filesystem::create_symlink(file.path(), folder / "mhelp.txt");
        HeadOptions made;
        made.folder = folder.path();
        return made;
    }();
    file.put(fuzz::text_of(data, size));
    for (int screen = 0; screen <= 5; ++screen) {
        const HelpSection help = read_help(options, screen);
        check(!help.file_missing, "the file is there");
        check(help.lines.size() <= k_longest_help, "100 lines");
        check(help.lines.empty() || !help.refusal, "lines or a refusal");
        for (const std::string& line : help.lines) check(line.size() == 20, "20 characters a line");
    }
    return 0;
}
