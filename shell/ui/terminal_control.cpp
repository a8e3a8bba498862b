#include "shell/ui/terminal_control.h"

#include <QAction>
#include <QEvent>
#include <utility>

#include "platform/qt/text.h"
#include "terminal/terminal_line.h"

namespace ampdesk {

TerminalControl::TerminalControl(QMainWindow& window, TermBox& box,
                                 std::function<void(const TerminalAct&)> send)
    : Term_(box), send_(std::move(send)), form2_(new Form2(&window)) {
    Term_.installEventFilter(this);
    Term_.on_typed = [this](std::string_view text) {
        send_(act::TypeText{std::string(text)});
        return view_.shows_typed();
    };
    auto* keep_in_sight = new QAction(QStringLiteral("&Keep the Port in Sight"), &Term_);
    keep_in_sight->setObjectName(QStringLiteral("mnuForm2"));
    connect(keep_in_sight, &QAction::triggered, form2_, &Form2::show_on_top);
    Term_.add_menu_action(keep_in_sight);
    on(notice::TerminalState{});
}

TerminalControl::~TerminalControl() {
    Term_.on_typed = nullptr;
}

void TerminalControl::take(const TerminalNotice& notice) {
    std::visit([this](const auto& one) { on(one); }, notice);
}

void TerminalControl::on(const notice::TerminalState& state) {
    view_ = state.terminal;
    form2_->set_state(from_utf8(view_.state));
    if (on_change)
        on_change();
}

// In the pieces that the line hands on: the box drops its oldest text by half.
void TerminalControl::on(const notice::TerminalText& text) {
    constexpr std::size_t k_piece = TerminalLine::k_chunk;
    const std::string_view bytes = text.bytes;
    for (std::size_t at = 0; at < bytes.size(); at += k_piece) Term_.ShowData(bytes.substr(at, k_piece));
}

bool TerminalControl::eventFilter(QObject* watched, QEvent* event) {
    const bool shown = event->type() == QEvent::Show;
    // The window system's own events come of icons, which are still read.
    if (watched == &Term_ && !event->spontaneous() && (shown || event->type() == QEvent::Hide))
        send_(act::ShowTerminal{shown});
    return QObject::eventFilter(watched, event);
}

}  // namespace ampdesk
