// What the windows and the station say to each other: acts of a person go to the station, notices of what is
// to be seen come back. Values only: each side keeps what it hears.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "platform/mailbox.h"
#include "platform/operator.h"
#include "station/head_talk.h"
#include "station/person_talk.h"
#include "station/setup_talk.h"
#include "station/simulator_talk.h"
#include "station/terminal_talk.h"
#include "station/tool_talk.h"

namespace ampdesk {

namespace act {

// Once, when the windows are there: reads the terminal's settings, opens the amplifiers, then the terminal's
// port, then tells what there is to tell, as a box may stand for hours. A settings file that is none is told,
// and no amplifier is opened.
struct Start {
    std::vector<std::string> amplifier_files{};
    std::vector<Message> messages{};
};

// The program ends: what has been pressed is carried out, output leaves, the heads close. `files` are the
// windows' own, to be kept with the others. Finished is the answer, 4 s later at most.
struct Finish {
    struct File {
        std::string path{};
        std::vector<std::string> lines{};  // the title first
    };
    std::vector<File> files{};
};

}  // namespace act

using ProgramAct = std::variant<act::Start, act::Finish>;

namespace notice {

// Nothing comes after it.
struct Finished {};

}  // namespace notice

using ProgramNotice = std::variant<notice::Finished>;

using Act = std::variant<HeadAct, TerminalAct, ToolAct, SetupAct, SimulatorAct, PersonAct, ProgramAct>;
using Notice = std::variant<HeadNotice, TerminalNotice, ToolNotice, SetupNotice, SimulatorNotice,
                            PersonNotice, ProgramNotice>;

// Compiled once: so many kinds of values take the compiler its time.
extern template class Mailbox<Act>;
extern template class Mailbox<Notice>;

// The two queues. What is put into one is never touched again by who put it there.
struct Talk {
    Mailbox<Act> acts;
    Mailbox<Notice> notices;
};

}  // namespace ampdesk
