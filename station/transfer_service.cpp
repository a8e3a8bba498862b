#include "station/transfer_service.h"

#include <utility>

#include "platform/run_time_error.h"
#include "platform/text_file.h"
#include "terminal/null_modem_test.h"
#include "terminal/text_transfer.h"
#include "terminal/xmodem_receiver.h"
#include "terminal/xmodem_sender.h"

namespace ampdesk {

namespace {

// Nothing when it is no receiver.
const std::string* received_file(const Transfer& transfer) {
    if (const auto* blocks = dynamic_cast<const XmodemReceiver*>(&transfer))
        return &blocks->file();
    const auto* text = dynamic_cast<const TextReceiver*>(&transfer);
    return text != nullptr ? &text->file() : nullptr;
}

}  // namespace

TransferService::TransferService(TerminalLine& line, Operator& person,
                                 std::function<void(TerminalNotice)> tell)
    : line_(line), operator_(person), tell_(std::move(tell)) {}

void TransferService::begin(const act::BeginTransfer& wanted) {
    if (file_.transfer)
        return;
    const std::string_view obstacle = wanted.xmodem ? xmodem_obstacle(line_.settings()) : std::string_view();
    if (!obstacle.empty())
        return operator_.notify(obstacle, "Modem > Settings changes that.");
    std::unique_ptr<Transfer> transfer = make_transfer(wanted);
    if (!transfer)
        return;
    if (!start(file_, std::move(transfer)))
        return operator_.notify("The terminal's port cannot be used now");
    view_ = {.direction = wanted.direction, .xmodem = wanted.xmodem, .path = wanted.path, .busy = true};
    tell_state();
}

bool TransferService::start(Carried& carried, std::unique_ptr<Transfer> transfer) {
    auto run = std::make_unique<TransferRun>(line_, *transfer);
    if (!run->start())
        return false;
    carried = {std::move(transfer), std::move(run), line_.clock().now() + TransferRun::k_tick};
    return true;
}

// Nothing when the file cannot be read; that has been told.
std::unique_ptr<Transfer> TransferService::make_transfer(const act::BeginTransfer& wanted) {
    if (wanted.direction == TransferDirection::receive) {
        if (wanted.xmodem)
            return std::make_unique<XmodemReceiver>(line_.clock().now());
        return std::make_unique<TextReceiver>();
    }
    try {
        return make_sender(wanted);
    } catch (const RunTimeError& error) {
        operator_.notify(error.what(), wanted.path);
        return nullptr;
    }
}

std::unique_ptr<Transfer> TransferService::make_sender(const act::BeginTransfer& wanted) {
    constexpr std::size_t k_longest = Transfer::k_longest_file;
    std::string bytes = read_file_bytes(wanted.path, k_longest + 1);
    if (bytes.size() > k_longest) {
        operator_.notify("The file is too long",
                         wanted.path + ": more than " + std::to_string(k_longest >> 20U) + " MB");
        return nullptr;
    }
    if (!wanted.xmodem)
        return std::make_unique<TextSender>(bytes);
    const auto block_time = static_cast<int>(k_xmodem_block) * character_time(line_.settings());
    return std::make_unique<XmodemSender>(std::move(bytes), block_time, line_.clock().now());
}

void TransferService::end() {
    if (auto* text = dynamic_cast<TextReceiver*>(file_.transfer.get()))
        text->end();
    tell_state();
}

void TransferService::cancel() {
    if (file_.transfer)
        file_.transfer->cancel();
    tell_state();
}

void TransferService::test_null_modem() {
    const Instant now = line_.clock().now();
    const auto stamp = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count();
    start(test_, std::make_unique<NullModemTest>(line_.port()->modem_lines(), static_cast<unsigned>(stamp),
                                                 character_time(line_.settings()), now));
}

void TransferService::step() {
    if (gives_line_back(file_))
        file_over();
    tell_state();
    if (gives_line_back(test_)) {
        const std::unique_ptr<Transfer> test = std::move(test_.transfer);
        operator_.tell({.text = test->message(), .icon = Icon::information, .title = "Null Modem Test"});
    }
}

// Whether it has just done so.
bool TransferService::gives_line_back(Carried& carried) {
    const Instant now = line_.clock().now();
    if (!carried.run || (now < carried.next_tick && !carried.run->over()))
        return false;
    carried.next_tick = now + TransferRun::k_tick;
    carried.run->tick();
    if (!carried.run->over())
        return false;
    carried.run.reset();
    if (on_over)
        on_over();
    return true;
}

void TransferService::file_over() {
    const Transfer& transfer = *file_.transfer;
    if (transfer.state() == TransferState::done && received_file(transfer) != nullptr)
        keep_received();
    else
        close_file(transfer.message());
}

void TransferService::keep(const std::optional<std::string>& path) {
    if (!file_.transfer || file_.run)
        return;
    if (!path)
        return close_file("The file was received but not saved.");
    view_.path = *path;
    keep_received();
}

// Hours of receiving are not lost to a full disk: the file stays here until it is written or given up.
void TransferService::keep_received() {
    const std::string& bytes = *received_file(*file_.transfer);
    try {
        write_file_bytes(view_.path, bytes);
    } catch (const RunTimeError& error) {
        tell_state();
        tell_(notice::FileNotKept{view_.path, error.what()});
        return;
    }
    std::string message = file_.transfer->message();
    if (view_.xmodem && bytes.ends_with(k_sub))
        message += " It ends in filling bytes (hexadecimal 1A) of the last block.";
    close_file(std::move(message));
}

void TransferService::close_file(std::string message) {
    view_.state = file_.transfer->state();
    view_.progress = file_.transfer->progress();
    view_.message = std::move(message);
    view_.busy = false;
    file_.transfer.reset();
    tell_state();
}

void TransferService::tell_state() {
    if (file_.transfer) {
        view_.state = file_.transfer->state();
        view_.progress = file_.transfer->progress();
    }
    if (view_ != told_)
        tell_(notice::TransferState{told_ = view_});
}

std::optional<Instant> TransferService::due() const {
    std::optional<Instant> due;
    for (const Carried* carried : {&file_, &test_})
        if (carried->run && (!due || carried->next_tick < *due))
            due = carried->next_tick;
    return due;
}

}  // namespace ampdesk
