#include "demo/ampsim_session.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "demo/faults.h"

namespace ampdesk::demo {

namespace {

constexpr std::size_t k_longest_command_line = 4096;

}  // namespace

AmpsimSession::~AmpsimSession() {
    std::error_code ignored;
    if (!link_.empty() && std::filesystem::read_symlink(link_, ignored) == device())
        std::filesystem::remove(link_, ignored);
}

std::string AmpsimSession::open(const std::string& link) {
    const std::string problem = host_.open();
    return !problem.empty() || link.empty() ? problem : make_link(link);
}

std::string AmpsimSession::make_link(const std::string& link) {
    namespace fs = std::filesystem;
    std::error_code code;
    if (fs::is_symlink(fs::symlink_status(link, code))) {
        const bool stale = !fs::exists(link, code) || fs::read_symlink(link, code) == device();
        if (!stale)
            return link + ": leads to " + fs::read_symlink(link, code).string() + ", which is there";
        fs::remove(link, code);
    }
    fs::create_symlink(device(), link, code);
    if (code)
        return link + ": " + code.message();
    link_ = link;
    return {};
}

bool AmpsimSession::run() {
    while (!quit_) {
        std::optional<Duration> limit;
        if (const auto due = bus_.next_due())
            limit = *due - clock_.now();
        const LineHost::Heard heard = host_.wait(limit);
        if (heard.stop || heard.failed)
            return heard.stop;
        if (!heard.line.empty())
            bus_.receive(heard.line);
        obey_input(heard);
        host_.send(bus_.take_due());
    }
    return true;
}

void AmpsimSession::obey_input(const LineHost::Heard& heard) {
    command_text_ += heard.commands;
    if (heard.commands_ended && !command_text_.empty())
        command_text_ += '\n';  // a last line without its end counts too
    std::size_t end = 0;
    while (!quit_ && (end = command_text_.find('\n')) != std::string::npos) {
        const std::string line = command_text_.substr(0, end);
        command_text_.erase(0, end + 1);
        obey(line);
    }
    if (command_text_.size() > k_longest_command_line)
        command_text_.resize(k_longest_command_line);
}

// Every line is answered, a blank one too: a script that has sent it waits.
void AmpsimSession::obey(std::string_view line) {
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    const FaultAnswer answer = make_fault(bus_, line);
    host_.answer(answer.text + "\n");
    quit_ = quit_ || answer.quit;
}

}  // namespace ampdesk::demo
