#include "tools/nvram_transfer.h"

#include <algorithm>

#include "platform/run_time_error.h"
#include "tools/hex_text.h"

namespace ampdesk {

namespace {

constexpr int k_last_attempt = 10;  // the first is number 0
constexpr int k_most_silent = 5;

// An exchange on a line that is unplugged fails at once. Its attempts keep the pace of unanswered
// ones, so that an adapter that is put back in time costs nothing.
constexpr auto k_unplugged_pace = BusLink::k_reply_limit;

// Behind a reply that is another block's the right one is still under way. Without this rest it would be
// taken for late in its turn, and so on to the end.
constexpr std::chrono::milliseconds k_rest{300};

NvramPanel first_panel(NvramTransfer::Mode mode) {
    if (mode == NvramTransfer::Mode::set)
        return {.caption = "Setting nvRam Parameters",
                .status_label = "Status of Set nvRam:",
                .output_label = "Current Setting Command:"};
    return {.caption = "Reading nvRam Parameters",
            .status_label = "Status of read nvRam:",
            .output_label = "Current read back:"};
}

}  // namespace

NvramTransfer::NvramTransfer(Mode mode, const std::string& path, std::int16_t unit_address, BusLink& bus,
                             Operator& person)
    : nvram_mode(mode),
      bus_(bus),
      operator_(person),
      path_(path),
      unit_address_(unit_address),
      panel_(first_panel(mode)) {
    if (mode == Mode::read) {
        writer_.emplace(path);
        writer_->append_line(nvram_date(bus_.clock().local_time()));
        return;
    }
    reader_.emplace(path);
    if (!reader_->next_line())
        throw RunTimeError::input_past_end();
}

void NvramTransfer::start() {
    nvram_running = true;
    under_way_ = true;
    panel_.start_caption = "Continue";
    panel_.start_enabled = false;
    panel_.pause_enabled = true;
}

void NvramTransfer::pause() {
    nvram_running = false;
    panel_.pause_enabled = false;
    panel_.start_enabled = true;
}

void NvramTransfer::unload() {
    nvram_abort = true;
    under_way_ = false;
    close_files();
    nvram_block = 0;
    panel_.start_caption = "Start";
}

std::optional<Duration> NvramTransfer::nvram_transfer_run() {
    if (stepping_)
        return BusLink::k_reply_limit;
    if (nvram_abort)
        close_files();
    if (nvram_abort || (!nvram_running && stage_ == Stage::none))
        return std::nullopt;
    const Instant now = bus_.clock().now();
    if (stage_ == Stage::announced && now < next_attempt_)
        return next_attempt_ - now;
    stepping_ = true;
    try {
        nvram_transfer_step();
    } catch (const RunTimeError& error) {
        fail(error.what());
    }
    stepping_ = false;
    if (nvram_abort || (!nvram_running && stage_ == Stage::none))
        return std::nullopt;
    return Duration::zero();
}

void NvramTransfer::nvram_transfer_step() {
    switch (stage_) {
        case Stage::none:
            begin();
            break;
        case Stage::announced:
            exchange();
            break;
        case Stage::exchanged:
            take_reply();
            break;
        case Stage::shown:
            if (nvram_mode == Mode::read)
                judge_read();
            else if (reading_back_)
                judge_read_back();
            else
                judge_set();
            break;
    }
}

void NvramTransfer::begin() {
    attempts_ = -1;
    silent_ = 0;
    unsaid_ = 0;
    reading_back_ = false;
    if (nvram_mode == Mode::read)
        command_ = nvram_read_command(nvram_block);
    else if (!read_line())
        return;
    attempt();
}

// Makes the file's next line the command; false when there is none and the transfer has ended.
bool NvramTransfer::read_line() {
    const std::optional<std::string> line = reader_->next_line();
    if (!line || ends_nvram_file(*line)) {
        finish("end of nvRam file");
        return false;
    }
    const NvramLine parsed = parse_nvram_line(*line);
    if (!parsed.block) {
        finish("Set nvRam Error, Exit And Set Again", true);
        return false;
    }
    block_ = *parsed.block;
    command_ = nvram_set_command(block_);
    const auto before = sent_.find(block_.number);
    number_again_ = before != sent_.end() && before->second != command_;
    sent_[block_.number] = command_;
    status_ = parsed.blank;
    return true;
}

// When the attempts are used up the next step asks for the same block; a set stops, as going on would
// leave its line out.
void NvramTransfer::attempt(Duration rest) {
    next_attempt_ = std::max(next_attempt_, bus_.clock().now() + rest);
    if (++attempts_ > k_last_attempt) {
        if (nvram_mode == Mode::set)
            set_is_over(true);
        else
            stage_ = Stage::none;
        return;
    }
    const std::string block = std::to_string(nvram_block);
    const std::string errors = std::to_string(attempts_);
    panel_.status = nvram_mode == Mode::read ? "Read block #" + block + "   Errs:" + errors
                                             : "Setting block #" + block + "   Errors:" + errors +
                                                   "  Status:" + std::to_string(status_);
    stage_ = Stage::announced;
}

void NvramTransfer::exchange() {
    const auto line = bus_.settings();
    if (!line_)
        line_ = line;
    if (line && *line != *line_) {
        fail("Another line has been opened during the transfer");
        return;
    }
    const Instant begun = bus_.clock().now();
    const std::string command = reading_back_ ? nvram_read_command(block_.number) : command_;
    status_ = static_cast<std::size_t>(bus_.bus_command(unit_address_, command, reply_));
    spoilt_ = bus_.failure() == BusFailure::bad_crc;
    next_attempt_ = bus_.port().is_connected() ? begun : begun + k_unplugged_pace;
    stage_ = Stage::exchanged;
}

void NvramTransfer::take_reply() {
    if (reply_.empty() && reading_back_) {
        judge_read_back();
        return;
    }
    if (reply_.empty()) {
        silent_ = spoilt_ ? 0 : silent_ + 1;
        if (silent_ > k_most_silent)
            connection_error();
        else
            attempt();
        return;
    }
    silent_ = 0;
    panel_.output = hex_listing(reply_);
    stage_ = Stage::shown;
}

// The amplifier's answer to an earlier question may come when this one is open, and be sound. One that
// names another block is passed over: the block in hand is asked for again. An end that does not say of
// which block it speaks counts when it comes a second time, after a second in which a late one is lost.
void NvramTransfer::judge_read() {
    const std::optional<int> number = nvram_number_of_reply(reply_);
    if (number.value_or(nvram_block) != nvram_block) {
        attempt(k_rest);
        return;
    }
    if (nvram_reply_is_nak(reply_)) {
        if (!number && ++unsaid_ == 1) {
            attempt(BusLink::k_reply_limit);
            return;
        }
        finish(nvram_reply_ends_well(reply_) ? "nvRam Transfer was Successful" : "nvRam Transfer failed");
        return;
    }
    const std::optional<NvramBlock> block = nvram_block_of_reply(reply_);
    if (!block) {
        attempt();
        return;
    }
    writer_->append_line(nvram_line(*block));
    if (nvram_block == k_last_nvram_block)
        throw RunTimeError::overflow();
    ++nvram_block;
    stage_ = Stage::none;
}

// Here, too, a reply that names another block is passed over. One that fits an earlier line as well, as
// it names no block or the same one, is believed when the block is seen to hold what was written.
void NvramTransfer::judge_set() {
    const std::optional<int> number = nvram_number_of_reply(reply_);
    if (number.value_or(block_.number) != block_.number) {
        attempt(k_rest);
        return;
    }
    refused_ = nvram_reply_is_nak(reply_);
    const std::string_view said = nvram_data_of_reply(reply_);
    const bool whole = said.size() >= command_.size() ? said.starts_with(command_) : !number_again_;
    if (number && (refused_ || whole)) {
        set_is_over(refused_);
        return;
    }
    reading_back_ = true;
    stage_ = Stage::announced;
}

// An amplifier that lets nobody read is believed when it says the same twice, with a vain wait of a
// second between, in which a late reply is lost.
void NvramTransfer::judge_read_back() {
    std::optional<NvramBlock> block;
    if (!reply_.empty() && !nvram_reply_is_nak(reply_)) {
        block = nvram_block_of_reply(reply_);
        if (!block || block->number != block_.number) {
            attempt(k_rest);
            return;
        }
        can_read_back_ = true;
    }
    can_read_back_ = can_read_back_ || spoilt_;
    reading_back_ = false;
    if (block == block_)
        set_is_over(false);
    else if (++unsaid_ > 1 && (refused_ || !can_read_back_))
        set_is_over(refused_);
    else
        attempt();
}

void NvramTransfer::set_is_over(bool refused) {
    if (refused) {
        finish("Set nvRam Error, Exit And Set Again", true);
        return;
    }
    ++nvram_block;
    stage_ = Stage::none;
}

void NvramTransfer::end() {
    stage_ = Stage::none;
    nvram_running = false;
    under_way_ = false;
    if (on_end)
        on_end();
}

void NvramTransfer::finish(const std::string& status, bool keep_file) {
    end();
    panel_.start_enabled = false;
    panel_.pause_enabled = false;
    const bool whole = keep_file || close_files();
    panel_.status = whole ? status : "nvRam Transfer failed";
}

// The file failed in the middle: what has been written stays.
void NvramTransfer::fail(const std::string& cause) {
    writer_.reset();
    finish(nvram_mode == Mode::read ? "nvRam Transfer failed" : "Set nvRam Error, Exit And Set Again");
    operator_.notify(cause, path_);
}

void NvramTransfer::connection_error() {
    end();
    operator_.notify("Cmd Receiving Error, Check Connection");
    close_files();
    nvram_abort = true;
}

// False, after a message, when what was written may not have reached the disk.
bool NvramTransfer::close_files() {
    reader_.reset();
    try {
        if (writer_)
            writer_->close();
        return true;
    } catch (const RunTimeError& error) {
        operator_.notify(error.what(), path_);
        return false;
    }
}

}  // namespace ampdesk
