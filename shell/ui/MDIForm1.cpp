#include "shell/ui/MDIForm1.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QProxyStyle>
#include <QScreen>
#include <QStatusBar>
#include <algorithm>
#include <utility>

#include "platform/qt/text.h"
#include "platform/run_time_error.h"

namespace ampdesk {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds k_poll_again{250};  // at the latest

constexpr std::string_view k_amplifier_files = "Amplifier Files (com*.dat)|com*.dat|All Files (*.*)|*.*";

constexpr QSize k_natural_size(1300, 860);  // room for four control heads
constexpr int k_terminal_height = 96;

// An icon has room for the whole caption, as its number is at the end.
class IconStyle : public QProxyStyle {
  public:
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override {
        const int width = QProxyStyle::pixelMetric(metric, option, widget);
        return metric == PM_MdiSubWindowMinimizedWidth ? std::max(width, 250) : width;
    }
};

}  // namespace

MDIForm1::MDIForm1(Station& station, BusLink& bus, TerminalLine& line, QtOperator& person,
                   MDIForm1Options options)
    : station_(station),
      bus_(bus),
      person_(person),
      options_(std::move(options)),
      layout_(*this, "layout.dat"),
      set_up_(*this, station, bus, person, options_.gauge, options_.models),
      tools_(*this, station, bus, person, tool_hooks()),
      icon_style_(new IconStyle) {
    setObjectName(QStringLiteral("MDIForm1"));
    setWindowTitle(options_.demonstration ? QStringLiteral("JEX Remote Control - demonstration")
                                          : QStringLiteral("JEX Remote Control"));
    build_centre();
    terminal_ = std::make_unique<TerminalControl>(*this, *Term_, line, station, bus, person,
                                                  [this](const QString& text) { show_status(text); });
    terminal_->line_wanted = [this] { poll_timer_.start(0); };
    build_menu(line);
    resize(k_natural_size.boundedTo(screen()->availableSize() * 0.94));
    layout_.restore_main();

    keys_ = new HeadKeys(this, [this] { return keyboard_target(); });
    connect(area_, &QMdiArea::subWindowActivated, keys_, &HeadKeys::follow);
    connect(qApp, &QApplication::focusChanged, keys_, &HeadKeys::follow);
    connect(area_, &QMdiArea::subWindowActivated, this, &MDIForm1::follow_active);

    poll_timer_.setSingleShot(true);
    connect(&poll_timer_, &QTimer::timeout, this, &MDIForm1::poll);
    TimerFileAutoOpen_.setSingleShot(true);
    connect(&TimerFileAutoOpen_, &QTimer::timeout, this, &MDIForm1::TimerFileAutoOpen_Timer);

    station_.on_window_created = [this](const std::shared_ptr<ControlHead>& head) { window_created(head); };
    station_.on_window_closed = [this](ControlHead& head) { window_closed(head); };
    person_.on_status = [this](const QString& text) { show_status(text); };
    person_.on_reply = [this](int number, const Reply& reply) {
        station_.answer(number, reply);
        poll();
    };
    person_.on_quiet = [this] {
        if (closing_)
            close();
    };
    set_up_.line_wanted = [this] { poll(); };
    bus_.port().on_connection_change = [this](bool connected) {
        const auto used = bus_.settings();
        if (!used)
            return;
        const QString name = from_utf8(used->port_name);
        lost_line_ = connected ? QString() : name;
        show_status(name + (connected ? QStringLiteral(" connected again")
                                      : QStringLiteral(" connection lost, trying again")));
    };
}

MDIForm1::~MDIForm1() {
    delete keys_;  // the sub-windows go after this, and tell it of every change of the focus
    area_->disconnect(this);
    station_.on_window_created = nullptr;
    station_.on_window_closed = nullptr;
    person_.on_status = nullptr;
    person_.on_reply = nullptr;
    person_.on_quiet = nullptr;
    bus_.port().on_connection_change = nullptr;
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

void MDIForm1::build_menu(TerminalLine& line) {
    using enum Live;
    using Mode = NvramTransfer::Mode;
    using Page = HelpViewer::Page;
    menu_ = std::make_unique<MainMenu>(*menuBar(), options_.make_fault != nullptr);
    menu_->add(
        {.name = "mnuMachine",
         .caption = "&Amplifier",
         .array = "mnuMachineItem",
         .rows = {{"&New", [this] { set_up_.new_amplifier(); }},
                  {"&Open", [this] { open_file(); }},
                  {"&Close",
                   with_head([this](const auto& head) { station_.close_window(head->identity().slot); }),
                   with_amplifier},
                  {"-"},
                  {"&Save", with_head([this](const auto& head) { station_.save(*head); }), with_amplifier},
                  {"Save &As", with_head([this](const auto& head) { save_as(*head); }), with_amplifier},
                  {"Sa&ve All", [this] { station_.save_all(); }, with_amplifier},
                  {"-"},
                  {"E&xit", [this] { close(); }}},
         .after = [this] { poll(); }});
    modem_ = std::make_unique<ModemMenu>(*menu_, *this, *terminal_, line, bus_, person_);
    const std::vector<MenuRow> screen = {
        {"&Screen Settings", with_head([this](const auto& head) { set_up_.screen(head); }), with_amplifier},
        {"Make A &Fault",
         with_head([this](const auto& head) { options_.make_fault(*this, head->identity().unit_address); }),
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
                         {.caption = "nv&Ram Transfer", .array = "mnuToolsSram", .rows = nvram}},
                .after = [this] { poll(); }});
    menu_->add({.name = "mnuWin",
                .caption = "&Window",
                .array = "mnuWinItem",
                .rows = {{"Tile &Horizontally", [this] { arrange_heads(Arrangement::tile_horizontally); },
                          with_amplifier},
                         {"&Tile Vertically", [this] { arrange_heads(Arrangement::tile_vertically); },
                          with_amplifier},
                         {"&Cascade", [this] { arrange_heads(Arrangement::cascade); }, with_amplifier},
                         {"Arrange &Icons", [this] { arrange_heads(Arrangement::icons); }, with_amplifier},
                         {"-"},
                         {"&Close All", [this] { station_.close_all(); }, with_amplifier}}});
    menu_->add({.name = "mnuHelp",
                .caption = "&Help",
                .array = "mnuHelpItem",
                .rows = {{"&Contents", [this] { show_help(Page::contents); }},
                         {"&Index", [this] { show_help(Page::index); }},
                         {"&Search For Help On", [this] { show_help(Page::search); }},
                         {"-"},
                         {"&About", [this] { show_about(); }}}});
}

std::function<void()> MDIForm1::with_head(
    std::function<void(const std::shared_ptr<ControlHead>&)> action) const {
    return [this, action = std::move(action)] {
        const frmMachine* machine = active_machine();
        if (const auto head = machine != nullptr ? machine->head() : nullptr)
            action(head);
    };
}

// Without an open amplifier the tools speak to the one that was last spoken to by name.
ServiceTools::Hooks MDIForm1::tool_hooks() {
    return {.unit_address =
                [this] {
                    const frmMachine* machine = active_machine();
                    return machine != nullptr ? machine->head()->identity().unit_address
                                              : station_.last_address();
                },
            .rs422_mode = [this] { return set_up_.rs422_mode(); },
            .set_up_line = [this] { set_up_.line(); },
            .enable_nvram_items = [this](bool enabled) { menu_->enable_nvram_items(enabled); },
            .line_wanted = [this] { poll(); }};
}

void MDIForm1::load() {
    try {
        terminal_->load_settings();
    } catch (const RunTimeError& error) {
        person_.notify(error.what(), "ampdesk.dat");
        return tell_notices();
    }
    TimerFileAutoOpen_.start(0);
}

// The terminal's port only when the amplifiers are open: where both are set to the same port, they come
// first.
void MDIForm1::TimerFileAutoOpen_Timer() {
    const auto files_are_open = [this] {
        station_.when_files_are_open(nullptr);
        terminal_->open_at_start();
        tell_notices();
    };
    if (options_.amplifier_files.empty())
        return files_are_open();
    station_.when_files_are_open(files_are_open);
    station_.auto_open_dat_files(options_.amplifier_files);
    poll();
}

void MDIForm1::open_file() {
    if (const auto path = person_.choose_file_to_open("Open A Amplifier File To Read", k_amplifier_files)) {
        station_.open_amplifier_file(*path);
        poll();
    }
}

void MDIForm1::save_as(const ControlHead& head) {
    if (const auto path = person_.choose_file_to_save("Save Amplifier File As", k_amplifier_files,
                                                      AmplifierFiles::name_of(head.identity().number)))
        station_.save_as(head, *path);
}

void MDIForm1::tell_notices() {
    for (const Message& notice : std::exchange(options_.notices, {})) person_.tell(notice);
}

frmMachine* MDIForm1::active_machine() const {
    const QMdiSubWindow* current = area_->currentSubWindow();
    auto* machine = current != nullptr ? qobject_cast<frmMachine*>(current->widget()) : nullptr;
    return machine != nullptr && machine->head() ? machine : nullptr;
}

frmMachine* MDIForm1::keyboard_target() const {
    const bool hidden = area_->currentSubWindow() != nullptr && area_->currentSubWindow()->isMinimized();
    bool elsewhere = Term_->hasFocus();
    for (const QWidget* w = QApplication::focusWidget(); w != nullptr; w = w->parentWidget())
        elsewhere = elsewhere || qobject_cast<const QDockWidget*>(w) != nullptr;
    return hidden || elsewhere ? nullptr : active_machine();
}

void MDIForm1::window_created(const std::shared_ptr<ControlHead>& head) {
    auto* machine = new frmMachine(head, options_.gauge);
    machine->on_close = [this](const ControlHead& closing) {
        station_.close_window(closing.identity().slot);
    };
    machine->on_act = [this] { poll(); };
    connect(&machine->panel_view(), &PanelView::scroll_shown, keys_, &HeadKeys::follow);
    QMdiSubWindow* window = area_->addSubWindow(machine);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setStyle(icon_style_.get());
    connect(window, &QMdiSubWindow::windowStateChanged, keys_, &HeadKeys::follow);
    machines_.push_back(machine);
    window->show();
    layout_.follow(*window, head->identity().number);
    machine->setFocus();
    follow_amplifiers();
    if (!poll_timer_.isActive())
        poll_timer_.start(0);
}

void MDIForm1::window_closed(const ControlHead& head) {
    const auto found = std::find_if(machines_.begin(), machines_.end(), [&](const frmMachine* machine) {
        return machine->head().get() == &head;
    });
    if (found == machines_.end())
        return;
    frmMachine* machine = *found;
    machines_.erase(found);
    machine->let_go();
    if (!machine->closing())
        machine->parentWidget()->close();
    follow_amplifiers();
}

void MDIForm1::follow_amplifiers() {
    trouble_->follow(station_);
    menu_->set_amplifier_open(!machines_.empty());
    keys_->follow();
    follow_active();
}

void MDIForm1::follow_active() {
    const frmMachine* machine = active_machine();
    std::optional<int> address;
    if (machine != nullptr)
        address = machine->head()->identity().unit_address;
    if (std::exchange(active_address_, address) != address && options_.active_amplifier_changed)
        options_.active_amplifier_changed(address);
}

// Called whenever something may have come, an act of the operator's or a byte, and when something is due.
void MDIForm1::poll() {
    const frmMachine* machine = active_machine();
    station_.set_active(machine != nullptr ? machine->head()->identity().slot : 0);
    const Instant next = station_.step();
    trouble_->follow(station_);
    follow_bus_line();
    watch_line();
    const bool lost = bus_.port().is_open() && !bus_.port().is_connected();
    if (station_.idle() && !lost)
        return poll_timer_.stop();
    const Instant due = std::min(next, bus_.port().input_due().value_or(next));
    const auto wait = std::chrono::ceil<milliseconds>(due - bus_.clock().now());
    poll_timer_.start(std::clamp(wait, milliseconds(0), k_poll_again));
}

// A lost line has no descriptor; the timer looks for it. The notifier may be on the stack here. It is
// switched off where the port was closed behind its back, and another one may have been opened under the same
// number.
void MDIForm1::watch_line() {
    const int handle = bus_.port().watch_handle();
    const bool watching = line_notifier_ != nullptr && line_notifier_->isEnabled();
    if (handle == watched_handle_ && watching == (handle >= 0))
        return;
    watched_handle_ = handle;
    if (line_notifier_ != nullptr) {
        line_notifier_->setEnabled(false);
        line_notifier_->deleteLater();
        line_notifier_ = nullptr;
    }
    if (handle < 0)
        return;
    line_notifier_ = new QSocketNotifier(handle, QSocketNotifier::Read, this);
    connect(line_notifier_, &QSocketNotifier::activated, this, &MDIForm1::poll);
}

// A lost line that has been given up for another one, or closed, says nothing of that itself.
void MDIForm1::follow_bus_line() {
    if (lost_line_.isEmpty() || (bus_.port().is_open() && !bus_.port().is_connected()))
        return;
    const QString lost = std::exchange(lost_line_, {});
    const auto used = bus_.settings();
    show_status(used ? from_utf8(used->port_name) + QStringLiteral(" connected")
                     : lost + QStringLiteral(" closed"));
}

void MDIForm1::shut_down() {
    TimerFileAutoOpen_.stop();
    carry_out_last_keys();
    terminal_->finish();
    modem_->close_log();
    tools_.close();
    help_.reset();
    UnsavedFiles unsaved;
    unsaved.attempt("layout.dat", [this] { layout_.save(); });
    station_.close_all(std::move(unsaved));
}

// HV Off and the close button right after it: what has been pressed is sent.
void MDIForm1::carry_out_last_keys() {
    constexpr std::chrono::milliseconds k_limit{1500};
    const Clock& clock = bus_.clock();
    for (const Instant limit = clock.now() + k_limit; station_.orders_left() && clock.now() < limit;) {
        const Instant next = std::min<Instant>(station_.step(), limit);
        if (!bus_.under_way() || bus_.port().wait_readable(next) == WaitResult::lost)
            break;
    }
}

void MDIForm1::closeEvent(QCloseEvent* event) {
    if (!terminal_->ready_to_close()) {
        event->ignore();
        return;
    }
    shut_down();
    closing_ = !person_.quiet();  // what could not be kept is seen first
    event->setAccepted(!closing_);
}

void MDIForm1::show_status(const QString& text) {
    status_->setText(text);
}

void MDIForm1::arrange_heads(Arrangement how) {
    QList<QMdiSubWindow*> windows;
    for (const frmMachine* machine : machines_)
        windows << qobject_cast<QMdiSubWindow*>(machine->parentWidget());
    arrange(*area_, windows, how);
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
