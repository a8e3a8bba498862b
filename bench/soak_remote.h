// The soak's remote station: sends command lines, and what is none, to a real terminal and holds the
// terminal to them. Nothing may go to an amplifier that no line asked for, nothing twice, and every
// answer must be what the amplifier's reply, or its silence, makes of it.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "bench/soak_findings.h"
#include "bench/soak_line.h"
#include "bench/soak_terminal_port.h"
#include "station/station.h"
#include "terminal/terminal.h"

namespace ampdesk::bench {

struct RemoteCounts {
    long lines = 0;     // command lines sent whole, one answer due to each
    long others = 0;    // everything else: noise, half lines, lines without the marker
    long hang_ups = 0;  // calls that the terminal ended for noise
    long answers = 0;
    long wrong = 0;           // answers that the amplifier's reply, or its silence, does not bear out
    long of_another = 0;      // of a silent amplifier said that it replied: another one had
    long unanswered = 0;      // of the lines sent whole
    long unasked = 0;         // commands to an amplifier that no line asks for
    long settings = 0;        // sent to an amplifier
    long settings_twice = 0;  // sent again for the same line
    long settings_lost = 0;   // carried out, but the remote station was told that nobody replied
};

class RemoteStation : public BusGuest {
  public:
    // "rs422.dat" is looked for in the folder.
    RemoteStation(Station& station, BusLink& bus, SoakLine& line, FaultyLine& chance, Clock& clock,
                  std::string folder, Findings& findings);
    ~RemoteStation() override { station_.remove_guest(*this); }

    // Lets the remote station speak and the terminal work, when it is time.
    void turn();

    // When there is something to do again.
    Instant next_turn();

    // The terminal as the station's guest; its requests are marked, its answers held to what came of them.
    std::optional<Instant> due() const override { return terminal_.due(); }
    std::optional<BusCommand> next() override;
    void ended(const BusReply& reply) override;

    // Called for every command that the terminal sends to an amplifier.
    void watch(const LineRequest& order);

    RemoteCounts counts;

  private:
    // What the answer to a command may be.
    struct Expected {
        bool replied = false;  // the words for a reply: the amplifier's can have come through
        bool another = false;  // … or another amplifier's
        bool silence = false;  // an empty line: the reply can have been spoilt
        bool lost = false;     // an empty line tells of a setting that was carried out
        std::string what{};    // the command, in words
    };
    // The text of a line behind a marker: what the terminal may carry out, once.
    struct Asked {
        std::string text;
        bool used = false;
        bool orders(const LineRequest& order) const;
        bool malformed() const;
    };
    void speak();
    void say_line(bool alone);
    void say_other();
    std::string command_line();
    void say(std::string_view bytes, Duration pause = {});
    void remember_requests(std::string_view bytes);
    Expected expected(const LineRequest& order, bool setting_sent, bool cut);
    void hear();
    void judge(const std::string& answer);
    void wrong(const std::string& expected, const std::string& seen);
    void hung_up();

    Station& station_;
    SoakLine& bus_line_;
    FaultyLine& chance_;
    Clock& clock_;
    Findings& findings_;
    TerminalPort port_;
    TerminalLine line_;
    Terminal terminal_;

    std::deque<Asked> asked_;
    std::string said_since_line_end_;
    std::deque<LineRequest> orders_;  // that have gone out for the line in hand
    bool under_way_ = false;          // an exchange is under way …
    bool forgotten_ = false;          // … for a line whose answer nobody gets any more
    std::deque<Expected> expected_;
    std::string heard_;      // of the answer that is coming in
    int awaited_ = 0;        // answers to the lines of this call that have not come
    int awaited_wrong_ = 0;  // lines of this call that order nothing, until they are told so
    bool breaking_ = false;
    Instant next_call_{};
    Instant give_up_{};
};

}  // namespace ampdesk::bench
