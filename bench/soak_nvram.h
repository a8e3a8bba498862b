// The soak's service engineer: reads parameter memories to a file and writes files to them, at random
// times and while everything else goes on, and compares the memory, the file and what the transfer
// says of itself block by block.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "bench/soak_findings.h"
#include "bench/soak_line.h"
#include "station/station.h"
#include "tools/nvram_transfer.h"

namespace ampdesk::bench {

struct NvramCounts {
    long reads_done = 0, reads_ended = 0;  // ended: failed, given up or paused for good
    long writes_done = 0, writes_ended = 0;
    long blocks_read = 0, blocks_written = 0;  // of all of them
    long wrong = 0;                            // transfers whose file or memory is not what was said of it
    long unasked = 0;  // commands to an amplifier that the transfer in hand has no use for
};

class ServiceEngineer : public BusGuest {
  public:
    // The files are made in the folder.
    ServiceEngineer(Station& station, BusLink& bus, Operator& person, SoakLine& line, FaultyLine& chance,
                    Clock& clock, const std::string& folder, Findings& findings)
        : station_(station),
          bus_(bus),
          person_(person),
          line_(line),
          chance_(chance),
          clock_(clock),
          findings_(findings),
          path_(folder + "/nv.txt") {}

    // Begins, goes on with, pauses or ends a transfer, when it is time.
    void turn();

    // When there is something to do again.
    Instant next_turn() const { return next_turn_; }

    // The transfer as the station's guest; its requests are marked.
    std::optional<Instant> due() const override;
    std::optional<BusCommand> next() override;
    void ended(const BusReply& reply) override;

    // Called for every command that a transfer sends to an amplifier.
    void watch(const LineRequest& order);

    // Leaves the transfer in hand, if there is one; its end takes a few turns more.
    void leave();
    bool under_way() const { return transfer_ != nullptr; }

    NvramCounts counts;

  private:
    using Blocks = std::vector<std::string>;  // data and trailing bytes

    void begin();
    void write_file();
    bool over() const;
    void judge();
    bool file_is_right(int blocks, bool whole) const;
    bool memory_is_right(std::size_t taken, bool whole) const;
    Blocks memory() const;
    bool reading() const { return transfer_->nvram_mode == NvramTransfer::Mode::read; }

    Station& station_;
    BusLink& bus_;
    Operator& person_;
    SoakLine& line_;
    FaultyLine& chance_;
    Clock& clock_;
    Findings& findings_;
    const std::string path_;

    std::unique_ptr<NvramTransfer> transfer_;
    bool busy_ = false;     // it is doing something, perhaps telling a message
    bool asked_ = false;    // its exchange is under way
    bool went_on_ = false;  // since the last turn
    int address_ = 0;
    Blocks before_;                   // the memory as it was when the transfer began
    std::vector<NvramBlock> wanted_;  // what the file to be written holds, as far as it is sound
    bool sound_ = false;              // … and that is all
    std::size_t sent_ = 0;            // how many of the wanted blocks have gone out
    Instant next_turn_{};
    Instant go_on_{};  // after a pause
};

}  // namespace ampdesk::bench
