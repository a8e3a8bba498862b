#include "terminal/ui/debug_dock.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>
#include <utility>

#include "platform/qt/text.h"
#include "platform/run_time_error.h"
#include "platform/text_file.h"

namespace ampdesk {

namespace {

constexpr int k_all_units = -1;

// A field behind its label, which is its name, too.
template <class Field>
Field* add_field(QHBoxLayout* row, QWidget* panel, const char* name, const char* caption) {
    auto* field = new Field(panel);
    field->setObjectName(QLatin1String(name));
    auto* label = new QLabel(QLatin1String(caption), panel);
    label->setBuddy(field);
    row->addWidget(label);
    row->addWidget(field);
    return field;
}

QPushButton* add_button(QBoxLayout* row, QWidget* panel, const char* name, const char* caption) {
    auto* button = new QPushButton(QLatin1String(caption), panel);
    button->setObjectName(QLatin1String(name));
    row->addWidget(button);
    return button;
}

}  // namespace

DebugDock::DebugDock(const Clock& clock, Dialogs& person, QWidget* parent)
    : QDockWidget(QStringLiteral("Debug"), parent), clock_(clock), operator_(person) {
    setObjectName(QStringLiteral("DebugDock"));
    setWidget(build());
    timer_.setSingleShot(true);
    timer_.setInterval(k_update);
    connect(&timer_, &QTimer::timeout, this, &DebugDock::show_new);
    hide();
    connect(toggleViewAction(), &QAction::toggled, this, &DebugDock::watch);
}

DebugDock::~DebugDock() {
    disconnect(toggleViewAction(), nullptr, this, nullptr);
    watch(false);
}

QWidget* DebugDock::build() {
    auto* panel = new QWidget(this);
    auto* layout = new QVBoxLayout(panel);
    auto* row = new QHBoxLayout;
    layout->addLayout(row);
    text_ = add_field<QLineEdit>(row, panel, "txtFilter", "Te&xt or hex:");
    text_->setClearButtonEnabled(true);
    which_ = add_field<QComboBox>(row, panel, "cboLine", "&Line:");
    which_->addItems({QStringLiteral("Bus and terminal"), QStringLiteral("Bus"), QStringLiteral("Terminal")});
    unit_ = add_field<QSpinBox>(row, panel, "spnUnit", "&Unit:");
    unit_->setRange(k_all_units, 99);
    unit_->setValue(k_all_units);
    unit_->setSpecialValueText(QStringLiteral("All"));
    direction_ = add_field<QComboBox>(row, panel, "cboDirection", "D&irection:");
    direction_->addItems({QStringLiteral("Both"), QStringLiteral("Received"), QStringLiteral("Sent")});
    row->setStretchFactor(text_, 1);
    view_ = new QPlainTextEdit(panel);
    view_->setObjectName(QStringLiteral("txtTraffic"));
    view_->setAccessibleName(QStringLiteral("Traffic"));
    view_->setReadOnly(true);
    view_->setUndoRedoEnabled(false);
    view_->setLineWrapMode(QPlainTextEdit::NoWrap);
    view_->setMaximumBlockCount(k_most_lines);
    view_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));

    // Beside the view: the panel stays narrow enough for a small screen.
    auto* lower = new QHBoxLayout;
    layout->addLayout(lower);
    lower->addWidget(view_);
    auto* column = new QVBoxLayout;
    lower->addLayout(column);
    pause_ = add_button(column, panel, "cmdPause", "&Pause");
    pause_->setCheckable(true);
    auto* clear = add_button(column, panel, "cmdClear", "Cl&ear");
    auto* copy = add_button(column, panel, "cmdCopy", "&Copy");
    auto* save = add_button(column, panel, "cmdSave", "&Save...");
    column->addStretch();

    connect(text_, &QLineEdit::textChanged, this, &DebugDock::update_soon);
    connect(which_, &QComboBox::currentIndexChanged, this, &DebugDock::update_soon);
    connect(unit_, &QSpinBox::valueChanged, this, &DebugDock::update_soon);
    connect(direction_, &QComboBox::currentIndexChanged, this, &DebugDock::update_soon);
    connect(pause_, &QPushButton::toggled, this, &DebugDock::update_soon);
    connect(clear, &QPushButton::clicked, this, [this] {
        log_.clear();
        view_->clear();
    });
    connect(copy, &QPushButton::clicked, this,
            [this] { QApplication::clipboard()->setText(view_->toPlainText()); });
    connect(save, &QPushButton::clicked, this, &DebugDock::cmdSave_Click);
    return panel;
}

void DebugDock::watch(bool on) {
    if (std::exchange(watching_, on) != on && on_watch)
        on_watch(on);
}

void DebugDock::add(const std::deque<TrafficChunk>& traffic) {
    for (const TrafficChunk& chunk : traffic) log_.add(chunk);
    if (!pause_->isChecked())
        update_soon();
}

void DebugDock::update_soon() {
    if (!timer_.isActive())
        timer_.start();
}

TrafficFilter DebugDock::chosen_filter() const {
    TrafficFilter filter;
    filter.text = text_->text().toLatin1().toStdString();
    if (which_->currentIndex() > 0)
        filter.line = which_->currentIndex() == 1 ? TrafficLine::bus : TrafficLine::terminal;
    if (unit_->value() != k_all_units)
        filter.unit = unit_->value();
    if (direction_->currentIndex() > 0)
        filter.sent = direction_->currentIndex() == 2;
    return filter;
}

// Shows what has come since the last time; from the start when the filter has changed. A pause holds
// what comes after it, and a filter goes on working on what came before.
void DebugDock::show_new() {
    const TrafficFilter filter = chosen_filter();
    const bool changed = filter != filter_;
    const std::uint64_t end = pause_->isChecked() ? next_ : log_.settled_end(clock_.now());
    if (changed) {
        filter_ = filter;
        next_ = log_.first();
        view_->clear();
    }
    std::deque<std::string> lines;
    for (next_ = std::max(next_, log_.first()); next_ < end; ++next_) {
        if (!filter.passes(log_.entry(next_)))
            continue;
        for (std::string& line : traffic_lines(log_.entry(next_))) lines.push_back(std::move(line));
        while (lines.size() > k_most_lines) lines.pop_front();
    }
    QString text;
    for (const std::string& line : lines)
        text += (text.isEmpty() ? QString() : QStringLiteral("\n")) + from_latin1(line);
    if (!text.isEmpty())
        view_->appendPlainText(text);
    if (!pause_->isChecked() && next_ < log_.end())
        update_soon();
}

void DebugDock::cmdSave_Click() {
    const auto path = operator_.choose_file_to_save("Save Traffic", "Text (*.txt)|*.txt|All Files (*.*)|*.*",
                                                    "traffic.txt");
    if (!path)
        return;
    try {
        write_text_lines(*path, traffic_file(log_, chosen_filter(), clock_.local_time()));
    } catch (const RunTimeError& error) {
        operator_.notify(error.what(), *path);
    }
}

}  // namespace ampdesk
