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

NvramPanel first_panel(NvramTransfer::Mode mode, std::int16_t unit_address) {
    if (mode == NvramTransfer::Mode::set)
        return {.unit_address = unit_address,
                .caption = "Setting nvRam Parameters",
                .status_label = "Status of Set nvRam:",
                .output_label = "Current Setting Command:"};
    return {.unit_address = unit_address,
            .caption = "Reading nvRam Parameters",
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
      panel_(first_panel(mode, unit_address)) {
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
    if (ended_ || nvram_abort)
        return;
    nvram_running = true;
    panel_.under_way = true;
    panel_.start_caption = "Continue";
    panel_.start_enabled = false;
    panel_.pause_enabled = true;
    tell_panel();
}

void NvramTransfer::pause() {
    if (ended_ || nvram_abort)
        return;
    nvram_running = false;
    panel_.pause_enabled = false;
    panel_.start_enabled = true;
    tell_panel();
}

void NvramTransfer::exit() {
    nvram_abort = true;
    if (const std::string cause = close_files(); !cause.empty())
        operator_.tell({.text = cause, .detail = path_});
}

void NvramTransfer::unload() {
    exit();
    nvram_block = 0;
    panel_.under_way = false;
    panel_.start_caption = "Start";
    tell_panel();
}

std::optional<Instant> NvramTransfer::due() const {
    if (over() || stage_ == Stage::asked)
        return std::nullopt;
    return stage_ == Stage::announced ? next_attempt_ : Instant{};
}

std::optional<BusCommand> NvramTransfer::next() {
    if (over())
        return std::nullopt;
    try {
        if (stage_ == Stage::none)
            begin();
    } catch (const RunTimeError& error) {
        fail(error.what());
    }
    const Instant now = bus_.clock().now();
    if (stage_ != Stage::announced || now < next_attempt_ || !is_on_its_line())
        return std::nullopt;
    stage_ = Stage::asked;
    asked_at_ = now;
    return BusCommand{.address = unit_address_,
                      .command = reading_back_ ? nvram_read_command(block_.number) : command_};
}

void NvramTransfer::ended(const BusReply& reply) {
    if (nvram_abort)
        return;
    stage_ = Stage::announced;
    if (reply.failure == BusFailure::cut)
        return;
    next_attempt_ = bus_.port().is_connected() ? asked_at_ : asked_at_ + k_unplugged_pace;
    reply_ = reply.bytes;
    status_ = reply_.size();
    spoilt_ = reply.failure == BusFailure::bad_crc;
    try {
        take_reply();
    } catch (const RunTimeError& error) {
        fail(error.what());
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
    tell_panel();
}

bool NvramTransfer::is_on_its_line() {
    const auto line = bus_.settings();
    if (!line_)
        line_ = line;
    if (!line || *line == *line_)
        return true;
    fail("Another line has been opened during the transfer");
    return false;
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
    tell_panel();
    if (nvram_mode == Mode::read)
        judge_read();
    else if (reading_back_)
        judge_read_back();
    else
        judge_set();
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
    ended_ = true;
    stage_ = Stage::none;
    nvram_running = false;
    panel_.under_way = false;
}

void NvramTransfer::finish(const std::string& status, bool keep_file) {
    end();
    panel_.start_enabled = false;
    panel_.pause_enabled = false;
    const std::string cause = keep_file ? std::string() : close_files();
    panel_.status = cause.empty() ? status : "nvRam Transfer failed";
    tell_panel();
    if (!cause.empty())
        operator_.tell({.text = cause, .detail = path_});
}

// The file failed in the middle: what has been written stays.
void NvramTransfer::fail(const std::string& cause) {
    writer_.reset();
    finish(nvram_mode == Mode::read ? "nvRam Transfer failed" : "Set nvRam Error, Exit And Set Again");
    operator_.tell({.text = cause, .detail = path_});
}

void NvramTransfer::connection_error() {
    end();
    nvram_abort = true;
    const std::string cause = close_files();
    tell_panel();
    operator_.tell({.text = "Cmd Receiving Error, Check Connection"});
    if (!cause.empty())
        operator_.tell({.text = cause, .detail = path_});
}

// Empty, or why what was written may not have reached the disk.
std::string NvramTransfer::close_files() {
    reader_.reset();
    std::string cause;
    try {
        if (writer_)
            writer_->close();
    } catch (const RunTimeError& error) {
        cause = error.what();
    }
    writer_.reset();
    return cause;
}

void NvramTransfer::tell_panel() {
    if (on_panel)
        on_panel();
}

std::unique_ptr<NvramTransfer> make_nvram_transfer(NvramTransfer::Mode mode, const std::string& path,
                                                   std::int16_t unit_address, BusLink& bus,
                                                   Operator& person) {
    try {
        return std::make_unique<NvramTransfer>(mode, path, unit_address, bus, person);
    } catch (const RunTimeError& error) {
        person.notify(error.what(), path);
        return nullptr;
    }
}

}  // namespace ampdesk
