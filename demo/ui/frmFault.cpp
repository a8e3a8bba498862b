#include "demo/ui/frmFault.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTreeWidget>
#include <string>

#include "demo/faults.h"
#include "platform/qt/labelled_list.h"
#include "platform/qt/text.h"

namespace ampdesk::demo {

namespace {

constexpr int k_data = Qt::UserRole;  // a fault's name, or the command line that ends it

// In the order of FaultGroup; the commands are the dialog's buttons.
constexpr const char* k_groups[] = {"Shutdowns", "Alarms", "Warning levels crossed", "Line faults",
                                    "Forced values"};

QLabel* make_label(QWidget* parent, const char* name, const QString& text = {}, QWidget* buddy = nullptr) {
    auto* label = new QLabel(text, parent);
    label->setObjectName(QLatin1String(name));
    label->setTextFormat(Qt::PlainText);
    label->setBuddy(buddy);
    if (buddy != nullptr)
        buddy->setAccessibleName(text);
    return label;
}

}  // namespace

frmFault::frmFault(Hooks hooks, QWidget* parent) : QDialog(parent), hooks_(std::move(hooks)) {
    setObjectName(QStringLiteral("frmFault"));
    setWindowTitle(QStringLiteral("Select A Fault To Make"));
    auto* layout = new QGridLayout(this);
    who_ = make_label(this, "lblAmplifier");
    layout->addWidget(who_, 0, 0, 1, 3);
    build_faults(layout);
    build_buttons(layout);
    resize(620, 500);

    connect(faults_, &QTreeWidget::currentItemChanged, this, &frmFault::show_chosen);
    connect(faults_, &QTreeWidget::itemDoubleClicked, this, &frmFault::cmdMake_Click);
    faults_->setCurrentItem(faults_->topLevelItem(0)->child(0));
    show_faults({});
}

void frmFault::build_faults(QGridLayout* layout) {
    faults_ = new QTreeWidget(this);
    faults_->setObjectName(QStringLiteral("treFaults"));
    faults_->setHeaderHidden(true);
    for (const char* group : k_groups) {
        auto* item = new QTreeWidgetItem(faults_, {QLatin1String(group)});
        item->setFlags(Qt::ItemIsEnabled);
    }
    for (const Fault& fault : fault_table()) {
        if (fault.group == FaultGroup::commands)
            continue;
        auto* item = new QTreeWidgetItem(faults_->topLevelItem(static_cast<int>(fault.group)),
                                         {from_utf8(listed_title(fault))});
        item->setData(0, k_data, from_utf8(fault.name));
        item->setToolTip(0, from_utf8(fault.help));
    }
    faults_->expandAll();

    help_ = make_label(this, "lblHelp");
    help_->setWordWrap(true);
    help_->setMinimumHeight(2 * help_->fontMetrics().lineSpacing());
    help_->setAlignment(Qt::AlignTop);
    const QString argument = QStringLiteral("Argument:");
    argument_ = new LabelledList(QStringLiteral("cboArgument"), argument, this);
    active_ = new QListWidget(this);
    active_->setObjectName(QStringLiteral("lstActive"));
    answer_ = make_label(this, "lblAnswer");

    layout->addWidget(make_label(this, "Label1", QStringLiteral("Faults:"), faults_), 1, 0, 1, 2);
    layout->addWidget(make_label(this, "Label2", QStringLiteral("Active faults:"), active_), 1, 2);
    layout->addWidget(faults_, 2, 0, 1, 2);
    layout->addWidget(active_, 2, 2);
    layout->addWidget(help_, 3, 0, 1, 3);
    layout->addWidget(make_label(this, "Label3", argument, argument_), 4, 0);
    layout->addWidget(argument_, 4, 1, 1, 2);
    layout->addWidget(answer_, 5, 0, 1, 3);
    layout->setColumnStretch(1, 1);
    layout->setColumnStretch(2, 1);
    layout->setRowStretch(2, 1);
}

void frmFault::build_buttons(QGridLayout* layout) {
    auto* row = new QHBoxLayout;
    row->addStretch();
    const auto add = [&](const char* name, const char* caption, auto&& act) {
        auto* button = new QPushButton(QLatin1String(caption), this);
        button->setObjectName(QLatin1String(name));
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, act);
        row->addWidget(button);
        return button;
    };
    make_ = add("cmdMake", "&Make", [this] { cmdMake_Click(); });
    make_->setDefault(true);
    clear_ = add("cmdClear", "C&lear", [this] { cmdClear_Click(); });
    clear_all_ = add("cmdClearAll", "Clear &All", [this] { make("clear"); });
    add("cmdClose", "Close", [this] { close(); });
    layout->addLayout(row, 6, 0, 1, 3);
}

void frmFault::show_for(int unit_address) {
    follow(unit_address);
    // Not in the middle, where it would hide the panels; later where the person has put it.
    if (!testAttribute(Qt::WA_Moved) && parentWidget() != nullptr)
        move(parentWidget()->frameGeometry().bottomRight() - rect().bottomRight() - QPoint(24, 24));
    show();
    raise();
    activateWindow();
}

void frmFault::follow(std::optional<int> unit_address) {
    followed_ = unit_address;
    answer_->clear();
    if (isVisible())
        hooks_.watch(followed_);
}

void frmFault::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    hooks_.watch(followed_);
}

void frmFault::hideEvent(QHideEvent* event) {
    hooks_.watch({});
    QDialog::hideEvent(event);
}

const Fault* frmFault::chosen() const {
    const QTreeWidgetItem* item = faults_->currentItem();
    return item == nullptr ? nullptr : find_fault(item->data(0, k_data).toString().toStdString());
}

void frmFault::show_chosen() {
    const Fault* fault = chosen();
    const bool takes_one = fault != nullptr && !fault->arguments.empty();
    argument_->clear();
    argument_->setEnabled(takes_one);
    argument_->lineEdit()->setPlaceholderText(takes_one ? from_utf8(fault->arguments) : QString());
    if (takes_one)
        argument_->addItems(from_utf8(fault->proposals).split(u'|'));
    QString help;
    if (fault != nullptr) {
        help = from_utf8(fault->help);
        help[0] = help[0].toUpper();
        help += QStringLiteral("\nIn ampsim: %1 %2").arg(from_utf8(fault->name), from_utf8(fault->arguments));
    }
    help_->setText(help);
    answer_->clear();
    enable_make();
}

// Not under a group's name.
void frmFault::enable_make() {
    make_->setEnabled(view_.unit_address && chosen() != nullptr);
}

void frmFault::show_faults(const FaultView& view) {
    if (!isVisible())
        return;  // it watches nobody then, and goes on naming whom it was about
    const bool listed = view.faults == view_.faults;
    view_ = view;
    who_->setText(view_.unit_address ? from_latin1(view_.who)
                                     : QStringLiteral("No simulated amplifier is open"));
    enable_make();
    if (!listed)
        fill_active();
    clear_->setEnabled(!view_.faults.empty());
    clear_all_->setEnabled(!view_.faults.empty());
}

// The list keeps its choice.
void frmFault::fill_active() {
    const QListWidgetItem* before = active_->currentItem();
    const QVariant kept = before != nullptr ? before->data(k_data) : QVariant();
    active_->clear();
    for (const FaultView::Active& fault : view_.faults) {
        auto* item = new QListWidgetItem(from_latin1(fault.title), active_);
        item->setData(k_data, from_latin1(fault.clear));
        if (item->data(k_data) == kept)
            active_->setCurrentItem(item);
    }
    if (active_->currentItem() == nullptr)
        active_->setCurrentRow(0);
}

void frmFault::show_answer(int unit_address, std::string_view text) {
    if (view_.unit_address == unit_address)
        answer_->setText(from_latin1(text));
}

// For the amplifier that is shown, which need not be the one that has just been asked for.
void frmFault::make(const std::string& line) {
    if (view_.unit_address)
        hooks_.make(*view_.unit_address, line);
}

void frmFault::cmdMake_Click() {
    const Fault* fault = chosen();
    if (fault == nullptr)
        return;
    std::string command(fault->name);
    if (!fault->arguments.empty())
        command += " " + argument_->currentText().toLatin1().toStdString();
    make(command);
}

void frmFault::cmdClear_Click() {
    if (const QListWidgetItem* item = active_->currentItem())
        make(item->data(k_data).toString().toLatin1().toStdString());
}

}  // namespace ampdesk::demo
