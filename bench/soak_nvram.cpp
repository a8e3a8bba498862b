#include "bench/soak_nvram.h"

#include <algorithm>
#include <fstream>
#include <utility>

#include "tests/support/hex_bytes.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk::bench {

using std::chrono::milliseconds;

namespace {

constexpr int k_blocks = demo::SimNvram::k_blocks;

std::string digits(const std::string& bytes) {
    std::string text = to_hex(bytes);
    std::erase(text, ' ');
    return text;
}

// A block's line as the file must have it.
std::string line_of(int number, const std::string& block) {
    return std::to_string(number) + " " + digits(block.substr(0, block.size() - 2)) + " " +
           digits(block.substr(block.size() - 2)) + "\r\n";
}

std::string command(char first, int number) {
    return {first, '\x20', static_cast<char>(number % 256), static_cast<char>(number / 256)};
}

}  // namespace

ServiceEngineer::Blocks ServiceEngineer::memory() const {
    const demo::SimNvram& nvram = line_.bus().find(address_)->nvram;
    Blocks all;
    for (std::size_t i = 0; const auto block = nvram.read(i); ++i) all.push_back(*block);
    return all;
}

// Blocks in any order, some of them twice; a bad line, a block that no amplifier has or an early end
// now and then.
void ServiceEngineer::write_file() {
    const auto bytes = [this](int count) {
        std::string some;
        while (count-- > 0) some += static_cast<char>(chance_.number(0, 255));
        return some;
    };
    std::ofstream file(path_, std::ios::binary);
    file << "11-21-2025\r\n";
    wanted_.clear();
    sound_ = true;
    for (int left = chance_.number(0, 80); left > 0 && sound_; --left) {
        const NvramBlock block{.number = chance_.number(0, chance_.one_in(200) ? 99 : k_blocks - 1),
                               .data = bytes(chance_.number(1, demo::SimNvram::k_longest_block)),
                               .trailing = bytes(2)};
        if (chance_.one_in(500)) {
            file << block.number << " 12G4 0000\r\n";
            sound_ = false;
        } else if (chance_.one_in(200)) {
            break;
        } else {
            file << line_of(block.number, block.data + block.trailing);
            wanted_.push_back(block);
        }
    }
    if (sound_ && chance_.one_in(2))
        file << "END_SRAM\r\n0 FFFF FFFF\r\n";
}

void ServiceEngineer::begin() {
    const auto mode = chance_.one_in(2) ? NvramTransfer::Mode::read : NvramTransfer::Mode::set;
    address_ = chance_.number(1, static_cast<int>(line_.bus().amplifiers().size()));
    before_ = memory();
    sent_ = 0;
    if (mode == NvramTransfer::Mode::set)
        write_file();
    transfer_ =
        std::make_unique<NvramTransfer>(mode, path_, static_cast<std::int16_t>(address_), bus_, person_);
    transfer_->start();
    station_.add_guest(*this);
}

std::optional<Instant> ServiceEngineer::due() const {
    return transfer_ && !busy_ ? transfer_->due() : std::nullopt;
}

std::optional<BusCommand> ServiceEngineer::next() {
    busy_ = true;
    auto command = transfer_->next();
    busy_ = false;
    asked_ = command.has_value();
    if (asked_)
        line_.next_speaker = Speaker::nvram;
    return command;
}

void ServiceEngineer::ended(const BusReply& reply) {
    asked_ = false;
    went_on_ = true;
    busy_ = true;
    transfer_->ended(reply);
    busy_ = false;
}

// Nothing more comes of it.
bool ServiceEngineer::over() const {
    const bool paused = transfer_->panel().start_enabled && !transfer_->nvram_abort;
    return !asked_ && !transfer_->due() && !paused;
}

void ServiceEngineer::turn() {
    constexpr milliseconds k_look{100};
    if (busy_ || clock_.now() < next_turn_)
        return;
    next_turn_ = clock_.now() + k_look;
    if (!transfer_) {
        begin();
    } else if (over()) {
        judge();
        next_turn_ = clock_.now() + milliseconds(chance_.number(0, 120'000));
    } else if (!transfer_->nvram_running && transfer_->panel().start_enabled) {
        if (clock_.now() >= go_on_)
            transfer_->start();
    } else if (!std::exchange(went_on_, false)) {
        return;
    } else if (chance_.one_in(2000)) {
        transfer_->exit();
    } else if (chance_.one_in(500)) {
        transfer_->pause();
        go_on_ = clock_.now() + milliseconds(chance_.number(0, 20'000));
    }
}

void ServiceEngineer::leave() {
    if (transfer_)
        transfer_->exit();
}

// After every command goes the reply to it, the same once more or, of a set, the question what the block
// holds.
void ServiceEngineer::watch(const LineRequest& order) {
    bool asked = order.address == address_ && !order.text;
    if (reading()) {
        asked = asked && order.command == command('\x20', transfer_->nvram_block);
    } else {
        const auto is = [&](std::size_t i) {
            return i < wanted_.size() && order.command == command('\x40', wanted_[i].number) +
                                                              wanted_[i].data + wanted_[i].trailing;
        };
        const bool next = is(sent_) && static_cast<std::size_t>(transfer_->nvram_block) == sent_;
        const bool read_back = sent_ > 0 && order.command == command('\x20', wanted_[sent_ - 1].number);
        asked = asked && (next || read_back || (sent_ > 0 && is(sent_ - 1)));
        sent_ += next ? 1 : 0;
    }
    if (asked)
        return;
    ++counts.unasked;
    findings_.tell("nvRam transfer", order.address, "only what it needs", to_hex(order.command));
}

// What the transfer says of itself, against the file and the memory. What it says of an end before the
// end is the number of blocks that it took.
void ServiceEngineer::judge() {
    const auto taken = static_cast<std::size_t>(transfer_->nvram_block);
    const bool read = reading();
    const std::string status = transfer_->panel().status;
    const bool done = status == (read ? "nvRam Transfer was Successful" : "end of nvRam file");
    station_.remove_guest(*this);
    transfer_->unload();
    transfer_.reset();
    if (read) {
        ++(done ? counts.reads_done : counts.reads_ended);
        counts.blocks_read += static_cast<long>(taken);
    } else {
        ++(done ? counts.writes_done : counts.writes_ended);
        counts.blocks_written += static_cast<long>(taken);
    }
    if (read ? file_is_right(static_cast<int>(taken), done) : memory_is_right(taken, done))
        return;
    ++counts.wrong;
    findings_.tell("nvRam transfer", address_, read ? "the memory in the file" : "the file in the memory",
                   "\"" + status + "\" after " + std::to_string(taken) + " blocks, and something else");
}

// The blocks as they are in the memory, from the first one on, and not a byte more.
bool ServiceEngineer::file_is_right(int blocks, bool whole) const {
    if (blocks > k_blocks || (whole && blocks != k_blocks) || memory() != before_)
        return false;
    std::string expected;
    for (int i = 0; i < blocks; ++i) expected += line_of(i, before_[static_cast<std::size_t>(i)]);
    const std::string bytes = file_bytes(path_);
    return bytes.size() >= 12 && bytes.compare(10, 2, "\r\n") == 0 && bytes.substr(12) == expected;
}

// The taken blocks are in the memory, perhaps the one in hand, and nothing else has changed.
bool ServiceEngineer::memory_is_right(std::size_t taken, bool whole) const {
    if (taken > wanted_.size() || (whole && (taken != wanted_.size() || !sound_)))
        return false;
    Blocks expected = before_;
    const auto put = [&](const NvramBlock& block) {
        if (block.number < k_blocks)
            expected[static_cast<std::size_t>(block.number)] = block.data + block.trailing;
        return block.number < k_blocks;
    };
    for (std::size_t i = 0; i < taken; ++i)
        if (!put(wanted_[i]))
            return false;
    return memory() == expected || (!whole && sent_ > taken && put(wanted_[taken]) && memory() == expected);
}

}  // namespace ampdesk::bench
