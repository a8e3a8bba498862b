#include "demo/ui/frmFault.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTreeWidget>
#include <string>

#include "platform/qt/labelled_list.h"
#include "platform/qt/text.h"

namespace ampdesk::demo {

namespace {

constexpr std::chrono::milliseconds k_look_every{500};
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

frmFault::frmFault(const SimBus& bus, QWidget* parent) : QDialog(parent), bus_(bus) {
    setObjectName(QStringLiteral("frmFault"));
    setWindowTitle(QStringLiteral("Select A Fault To Make"));
    auto* layout = new QGridLayout(this);
    who_ = make_label(this, "lblAmplifier");
    layout->addWidget(who_, 0, 0, 1, 3);
    build_faults(layout);
    build_buttons(layout);
    resize(620, 500);

    connect(&look_, &QTimer::timeout, this, &frmFault::refresh);
    connect(faults_, &QTreeWidget::currentItemChanged, this, &frmFault::show_chosen);
    connect(faults_, &QTreeWidget::itemDoubleClicked, this, &frmFault::cmdMake_Click);
    faults_->setCurrentItem(faults_->topLevelItem(0)->child(0));
    follow({});
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
    clear_all_ = add("cmdClearAll", "Clear &All", [this] { obey("clear"); });
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
    amplifier_ = unit_address ? bus_.find(*unit_address) : nullptr;
    if (amplifier_ != nullptr) {
        const SimModel& model = amplifier_->model();
        who_->setText(QStringLiteral("Amplifier %1, address %2, %3")
                          .arg(model.serial)
                          .arg(model.address)
                          .arg(from_latin1(model.name)));
    } else {
        who_->setText(QStringLiteral("No simulated amplifier is open"));
    }
    answer_->clear();
    make_->setEnabled(amplifier_ != nullptr && chosen() != nullptr);
    refresh();
}

void frmFault::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    refresh();
    look_.start(k_look_every);
}

void frmFault::hideEvent(QHideEvent* event) {
    look_.stop();
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
    make_->setEnabled(amplifier_ != nullptr && fault != nullptr);  // not under a group's name
}

// The list is filled anew only when it has changed, and keeps its choice.
void frmFault::refresh() {
    std::vector<ActiveFault> active;
    if (amplifier_ != nullptr)
        active = active_faults(*amplifier_);
    if (active != shown_) {
        const QListWidgetItem* before = active_->currentItem();
        const QVariant kept = before != nullptr ? before->data(k_data) : QVariant();
        shown_ = std::move(active);
        active_->clear();
        for (const ActiveFault& fault : shown_) {
            QString text = from_utf8(listed_title(*fault.fault));
            if (!fault.argument.empty())
                text += QStringLiteral(": ") + from_latin1(fault.argument);
            auto* item = new QListWidgetItem(text, active_);
            item->setData(k_data, from_utf8(fault.clear));
            if (item->data(k_data) == kept)
                active_->setCurrentItem(item);
        }
        if (active_->currentItem() == nullptr)
            active_->setCurrentRow(0);
    }
    clear_->setEnabled(!shown_.empty());
    clear_all_->setEnabled(!shown_.empty());
}

// One of ampsim's command lines, for this amplifier.
void frmFault::obey(const std::string& command) {
    if (amplifier_ == nullptr)
        return;
    const std::string address = std::to_string(amplifier_->model().address);
    const FaultAnswer answer = make_fault(bus_, "@" + address + " " + command);
    answer_->setText(answer.text == "ok" ? QString() : from_latin1(answer.text));
    refresh();
}

void frmFault::cmdMake_Click() {
    const Fault* fault = chosen();
    if (fault == nullptr)
        return;
    std::string command(fault->name);
    if (!fault->arguments.empty())
        command += " " + argument_->currentText().toLatin1().toStdString();
    obey(command);
}

void frmFault::cmdClear_Click() {
    if (const QListWidgetItem* item = active_->currentItem())
        obey(item->data(k_data).toString().toStdString());
}

}  // namespace ampdesk::demo
