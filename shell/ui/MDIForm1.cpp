#include "shell/ui/MDIForm1.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QDockWidget>
#include <QPointer>
#include <QScreen>
#include <QStatusBar>
#include <algorithm>
#include <utility>

#include "platform/qt/text.h"
#include "shell/ui/present.h"
#include "station/amplifier_files.h"

namespace ampdesk {

namespace {

using std::chrono::milliseconds;

constexpr const char* k_layout_file = "layout.dat";
constexpr std::string_view k_amplifier_files = "Amplifier Files (com*.dat)|com*.dat|All Files (*.*)|*.*";

constexpr QSize k_natural_size(1300, 860);  // room for four control heads
constexpr int k_terminal_height = 96;

// The station answers sooner; the window does not wait for one that cannot.
constexpr milliseconds k_close_limit{4000};

}  // namespace

MDIForm1::MDIForm1(Talk& talk, const Clock& clock, QtOperator& person, MDIForm1Options options)
    : talk_(talk),
      person_(person),
      options_(std::move(options)),
      layout_(*this, k_layout_file),
      set_up_(*this, options_.ports, person, options_.gauge, options_.models,
              [this](const Act& act) { send(act); }),
      tools_(*this, person, tool_hooks()),
      faults_(*this, [this](const SimulatorAct& act) { send(act); }) {
    setObjectName(QStringLiteral("MDIForm1"));
    setWindowTitle(options_.demonstration ? QStringLiteral("JEX Remote Control - demonstration")
                                          : QStringLiteral("JEX Remote Control"));
    build_centre();
    heads_ = std::make_unique<HeadWindows>(*area_, layout_, options_.gauge, clock,
                                           [this](const HeadAct& act) { send(act); });
    terminal_ =
        std::make_unique<TerminalControl>(*this, *Term_, [this](const TerminalAct& act) { send(act); });
    build_menu(clock);
    resize(k_natural_size.boundedTo(screen()->availableSize() * 0.94));
    layout_.restore_main();

    keys_ = new HeadKeys(this, [this] { return keyboard_target(); });
    connect(qApp, &QApplication::focusChanged, keys_, &HeadKeys::follow);
    connect(heads_.get(), &HeadWindows::changed, this, &MDIForm1::follow_heads);

    TimerFileAutoOpen_.setSingleShot(true);
    connect(&TimerFileAutoOpen_, &QTimer::timeout, this, &MDIForm1::TimerFileAutoOpen_Timer);
    close_limit_.setSingleShot(true);
    connect(&close_limit_, &QTimer::timeout, this, [this] { take(ProgramNotice(notice::Finished{})); });

    talk_.notices.on_first = [this] {
        QMetaObject::invokeMethod(this, &MDIForm1::take_notices, Qt::QueuedConnection);
    };
    person_.on_status = [this](const QString& text) { show_status(text); };
    person_.on_reply = [this](int number, const Reply& reply) { send(act::AnswerQuestion{number, reply}); };
    person_.on_quiet = [this] {
        if (finished_)
            close();
    };
}

MDIForm1::~MDIForm1() {
    talk_.notices.on_first = nullptr;
    delete keys_;  // the sub-windows go after this, and tell it of every change of the focus
    heads_.reset();
    person_.on_status = nullptr;
    person_.on_reply = nullptr;
    person_.on_quiet = nullptr;
}

void MDIForm1::build_centre() {
    auto* divider = new QSplitter(Qt::Vertical, this);
    area_ = new QMdiArea(divider);
    area_->setObjectName(QStringLiteral("MdiArea"));
    area_->setBackground(QColor(0x3E, 0x43, 0x48));
    area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    area_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    area_->setActivationOrder(QMdiArea::ActivationHistoryOrder);

    Term_ = new TermBox(divider);
    divider->setStretchFactor(0, 1);
    divider->setCollapsible(0, false);
    divider->setSizes({k_natural_size.height(), k_terminal_height});
    setCentralWidget(divider);

    status_ = new QLabel(this);
    status_->setObjectName(QStringLiteral("StatusLabel"));
    status_->setAccessibleDescription(QStringLiteral("Status"));
    status_->setTextFormat(Qt::PlainText);
    statusBar()->addWidget(status_, 1);
    trouble_ = new TroubleLabel(this);
    statusBar()->addPermanentWidget(trouble_);

    // The way of the keyboard between the terminal, which takes every other key, and the heads.
    auto* change_over = new QShortcut(QKeySequence(Qt::Key_F6), this);
    connect(change_over, &QShortcut::activated, this, [this] {
        frmMachine* machine = active_machine();
        if (Term_->hasFocus() && machine != nullptr)
            machine->setFocus();
        else
            Term_->setFocus();
    });
}

void MDIForm1::build_menu(const Clock& clock) {
    using enum Live;
    using Mode = NvramTransfer::Mode;
    using Page = HelpViewer::Page;
    menu_ = std::make_unique<MainMenu>(*menuBar(), options_.demonstration);
    menu_->add(
        {.name = "mnuMachine",
         .caption = "&Amplifier",
         .array = "mnuMachineItem",
         .rows = {
             {"&New", [this] { set_up_.new_amplifier(); }},
             {"&Open", [this] { open_file(); }},
             {"&Close",
              with_head([this](const frmMachine& head) { send(act::CloseHead{head.identity().id}); }),
              with_amplifier},
             {"-"},
             {"&Save", with_head([this](const frmMachine& head) { send(act::SaveHead{head.identity().id}); }),
              with_amplifier},
             {"Save &As", with_head([this](const frmMachine& head) { save_as(head.identity()); }),
              with_amplifier},
             {"Sa&ve All", [this] { send(act::SaveAll{}); }, with_amplifier},
             {"-"},
             {"E&xit", [this] { close(); }}}});
    modem_ = std::make_unique<ModemMenu>(*menu_, *this, *terminal_, options_.ports, clock, person_,
                                         [this](const TerminalAct& act) { send(act); });
    const std::vector<MenuRow> screen = {
        {"&Screen Settings", with_head([this](const frmMachine& head) { set_up_.screen(head); }),
         with_amplifier},
        {"Make A &Fault",
         with_head([this](const frmMachine& head) { faults_.open(head.identity().unit_address); }),
         with_simulated}};
    const std::vector<MenuRow> nvram = {
        {"&Read nvRam", [this] { tools_.transfer_nvram(Mode::read); }, without_transfer},
        {"&Set nvRam", [this] { tools_.transfer_nvram(Mode::set); }, without_transfer}};
    menu_->add({.name = "mnuTools",
                .caption = "&Tools",
                .array = "mnuToolsItem",
                .rows = {{.caption = "&Amplifier Setup",
                          .live = with_amplifier,
                          .array = "mnuToolsScreen",
                          .rows = screen},
                         {"-"},
                         {"&Setup_422", [this] { set_up_.line(); }},
                         {"&Interactive_422", [this] { tools_.interactive(); }},
                         {.caption = "nv&Ram Transfer", .array = "mnuToolsSram", .rows = nvram}}});
    menu_->add({.name = "mnuWin",
                .caption = "&Window",
                .array = "mnuWinItem",
                .rows = {{"Tile &Horizontally", [this] { heads_->arrange(Arrangement::tile_horizontally); },
                          with_amplifier},
                         {"&Tile Vertically", [this] { heads_->arrange(Arrangement::tile_vertically); },
                          with_amplifier},
                         {"&Cascade", [this] { heads_->arrange(Arrangement::cascade); }, with_amplifier},
                         {"Arrange &Icons", [this] { heads_->arrange(Arrangement::icons); }, with_amplifier},
                         {"-"},
                         {"&Close All", [this] { send(act::CloseAll{}); }, with_amplifier}}});
    menu_->add({.name = "mnuHelp",
                .caption = "&Help",
                .array = "mnuHelpItem",
                .rows = {{"&Contents", [this] { show_help(Page::contents); }},
                         {"&Index", [this] { show_help(Page::index); }},
                         {"&Search For Help On", [this] { show_help(Page::search); }},
                         {"-"},
                         {"&About", [this] { show_about(); }}}});
}

std::function<void()> MDIForm1::with_head(std::function<void(const frmMachine&)> action) const {
    return [this, action = std::move(action)] {
        if (const frmMachine* machine = active_machine())
            action(*machine);
    };
}

// Without an open amplifier the tools speak to the one that was last spoken to by name.
ServiceTools::Hooks MDIForm1::tool_hooks() {
    return {.unit_address =
                [this] {
                    const frmMachine* machine = active_machine();
                    return machine != nullptr ? machine->identity().unit_address
                                              : static_cast<std::int16_t>(line_.last_address);
                },
            .rs422_mode = [this] { return line_.rs422_mode; },
            .set_up_line = [this] { set_up_.line(); },
            .enable_nvram_items = [this](bool enabled) { menu_->enable_nvram_items(enabled); },
            .send = [this](const ToolAct& act) { send(act); }};
}

void MDIForm1::load() {
    TimerFileAutoOpen_.start(0);
}

void MDIForm1::TimerFileAutoOpen_Timer() {
    send(act::Start{options_.amplifier_files, options_.notices});
}

void MDIForm1::open_file() {
    if (const auto path = person_.choose_file_to_open("Open A Amplifier File To Read", k_amplifier_files))
        send(act::OpenFile{*path});
}

// The window may close under the dialog.
void MDIForm1::save_as(const HeadIdentity& head) {
    const std::int16_t unit_address = head.unit_address;
    if (const auto path = person_.choose_file_to_save("Save Amplifier File As", k_amplifier_files,
                                                      AmplifierFiles::name_of(head.number)))
        send(act::SaveAs{unit_address, *path});
}

frmMachine* MDIForm1::keyboard_target() const {
    const bool hidden = area_->currentSubWindow() != nullptr && area_->currentSubWindow()->isMinimized();
    bool elsewhere = Term_->hasFocus();
    for (const QWidget* w = QApplication::focusWidget(); w != nullptr; w = w->parentWidget())
        elsewhere = elsewhere || qobject_cast<const QDockWidget*>(w) != nullptr;
    return hidden || elsewhere ? nullptr : active_machine();
}

void MDIForm1::take_notices() {
    for (const Notice& notice : talk_.notices.take_all())
        std::visit([this](const auto& part) { take(part); }, notice);
    trouble_->follow(*heads_);
}

void MDIForm1::take(const HeadNotice& notice) {
    if (const auto* line = std::get_if<notice::LineState>(&notice))
        line_ = *line;
    else
        heads_->show(notice);
}

void MDIForm1::take(const TerminalNotice& notice) {
    terminal_->take(notice);
    modem_->take(notice);
}

void MDIForm1::take(const PersonNotice& notice) {
    present(notice, person_);
}

// What there is to tell comes before the end, and is seen first. A dialog has nobody any more to do what it
// is for.
void MDIForm1::take(const ProgramNotice&) {
    finished_ = true;
    close_limit_.stop();
    QList<QPointer<QDialog>> dialogs;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (auto* dialog = qobject_cast<QDialog*>(window); dialog != nullptr && !person_.is_own(dialog))
            dialogs << dialog;
    for (const auto& dialog : dialogs)
        if (dialog != nullptr && dialog->isVisible())
            dialog->done(QDialog::Rejected);
    if (person_.quiet())
        close();
}

void MDIForm1::follow_heads() {
    menu_->set_amplifier_open(!heads_->all().empty());
    keys_->follow();
    trouble_->follow(*heads_);
    const frmMachine* machine = active_machine();
    std::optional<int> address;
    if (machine != nullptr)
        address = machine->identity().unit_address;
    if (std::exchange(active_address_, address) != address)
        faults_.follow(address);
}

void MDIForm1::shut_down() {
    if (std::exchange(finishing_, true))
        return;
    TimerFileAutoOpen_.stop();
    menuBar()->setEnabled(false);
    tools_.close();
    help_.reset();
    send(act::Finish{{{k_layout_file, layout_lines(layout_.layout())}}});
    close_limit_.start(k_close_limit);
}

void MDIForm1::closeEvent(QCloseEvent* event) {
    event->setAccepted(finished_ && person_.quiet());
    if (!finished_)
        shut_down();
}

void MDIForm1::show_status(const QString& text) {
    status_->setText(text);
}

void MDIForm1::show_help(HelpViewer::Page page) {
    person_.set_busy_pointer(true);
    if (!help_)
        help_ = std::make_unique<HelpViewer>(
            QStringList{QStringLiteral("."), from_utf8(options_.shipped_folder)});
    const QString failure = help_->failure();
    if (failure.isEmpty())
        help_->show_page(page);
    else
        help_.reset();  // tried again the next time
    person_.set_busy_pointer(false);
    if (!failure.isEmpty())
        person_.notify("The manual cannot be opened", failure.toStdString());
}

void MDIForm1::show_about() {
    Message message;
    message.text = "JEX REMOTE CONTROL PROGRAM\nVersion: " + options_.version + "\nMay 14, 2008";
    message.icon = Icon::information;
    message.title = "About";
    person_.ask(message);
}

}  // namespace ampdesk
