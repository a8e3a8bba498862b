#include "controlhead/ui/frmColor.h"

#include <QColorDialog>
#include <QFontDatabase>
#include <QFontDialog>
#include <QFontInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QStringListModel>
#include <QVBoxLayout>
#include <algorithm>

#include "controlhead/font_rule.h"
#include "controlhead/ui/panel_colours.h"

namespace ampdesk {

namespace {

// The three colours in the order of their buttons.
constexpr std::int32_t ScreenSettings::*k_colours[] = {
    &ScreenSettings::fore_colour, &ScreenSettings::back_colour, &ScreenSettings::machine_colour};

std::int32_t number_of(const QColor& colour) {
    return colour.red() | colour.green() << 8 | colour.blue() << 16;
}

FontChoice choice_of(const QFont& font) {
    return {.family = font.family().toStdString(), .bold = font.bold(), .size = font.pointSizeF()};
}

// The display's font as the font dialog can list it: where it is not installed, the one that is
// shown in its place.
QFont listed_font(double points) {
    QFont font = display_font(points);
    if (!QFontDatabase::families().contains(font.family()))
        font.setFamily(QFontInfo(font).family());
    return font;
}

QStringList allowed_sizes() {
    QStringList sizes;
    for (int size = k_smallest_size; size <= k_largest_size; ++size) sizes << QString::number(size);
    return sizes;
}

// The dialog's list of sizes is the one of its lists that holds numbers only.
QListView* size_list(const QFontDialog& dialog) {
    for (auto* list : dialog.findChildren<QListView*>()) {
        const auto* model = qobject_cast<QStringListModel*>(list->model());
        const QStringList rows = model != nullptr ? model->stringList() : QStringList();
        const auto is_number = [](const QString& row) { return row.toInt() > 0; };
        if (!rows.isEmpty() && std::all_of(rows.begin(), rows.end(), is_number))
            return list;
    }
    return nullptr;
}

// A list does not take its label's name by itself.
void name_lists(const QFontDialog& dialog) {
    for (const auto* label : dialog.findChildren<QLabel*>())
        if (auto* list = qobject_cast<QListView*>(label->buddy()))
            list->setAccessibleName(label->text().remove(u'&'));
}

// The dialog offers the sizes that printers have always used; 13 and 15 are not among them. It fills its
// list anew for every family and style.
void offer_allowed_sizes(const QFontDialog& dialog) {
    QListView* list = size_list(dialog);
    if (list == nullptr)
        return;
    list->setAccessibleName(QStringLiteral("Size"));
    auto* model = qobject_cast<QStringListModel*>(list->model());
    const auto fill = [&dialog, list, model] {
        const QStringList sizes = allowed_sizes();
        if (model->stringList() == sizes)
            return;
        model->setStringList(sizes);
        const auto row = sizes.indexOf(QString::number(dialog.currentFont().pointSize()));
        if (row >= 0)
            list->setCurrentIndex(model->index(static_cast<int>(row)));
    };
    // Not at once: the dialog is not done with its own list then.
    QObject::connect(model, &QAbstractItemModel::modelReset, &dialog, fill, Qt::QueuedConnection);
    fill();
}

}  // namespace

frmColor::frmColor(const Panel& panel, GaugeRange gauge, Dialogs& person, QWidget* parent)
    : QDialog(parent), operator_(person), copy_(panel) {
    setObjectName(QStringLiteral("frmColor"));
    setWindowTitle(QStringLiteral("Setup Color For Control Head"));

    auto* layout = new QVBoxLayout(this);
    view_ = new PanelView(gauge, this);
    view_->setEnabled(false);  // to look at
    view_->show_panel(copy_);
    layout->addWidget(view_);

    auto* row = new QHBoxLayout;
    layout->addLayout(row);
    const auto add_button = [&](const QString& name, const QString& caption, auto&& act) {
        auto* button = new QPushButton(caption, this);
        button->setObjectName(name);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, act);
        row->addWidget(button);
        return button;
    };
    int index = 0;
    for (const auto& caption :
         {QStringLiteral("Fore Color"), QStringLiteral("Back Color"), QStringLiteral("Machine Color")}) {
        add_button(QStringLiteral("cmdColor(%1)").arg(index), caption,
                   [this, index] { cmdColor_Click(index); });
        ++index;
    }
    add_button(QStringLiteral("cmdFont"), QStringLiteral("Font"), [this] { cmdFont_Click(); });
    row->addStretch();
    add_button(QStringLiteral("Command1(0)"), QStringLiteral("OK"), [this] {
        Command1_Click(0);
    })->setDefault(true);
    add_button(QStringLiteral("Command1(1)"), QStringLiteral("Cancel"), [this] { Command1_Click(1); });
}

void frmColor::cmdColor_Click(int index) {
    ScreenSettings look = copy_.look();
    std::int32_t& colour = look.*k_colours[index];
    QColorDialog dialog(colour_of(colour), this);
    dialog.setObjectName(QStringLiteral("CmdLog"));
    dialog.setOption(QColorDialog::DontUseNativeDialog);
    if (dialog.exec() != QDialog::Accepted)
        return;
    // Whoever leaves a colour of the system's palette as it is keeps it.
    if (dialog.selectedColor() != colour_of(colour))
        colour = number_of(dialog.selectedColor());
    change_look(look);
}

void frmColor::cmdFont_Click() {
    ScreenSettings look = copy_.look();
    QFontDialog dialog(listed_font(look.font_size), this);
    dialog.setObjectName(QStringLiteral("CmdLog"));
    dialog.setOption(QFontDialog::DontUseNativeDialog);
    name_lists(dialog);
    offer_allowed_sizes(dialog);
    // As the dialog itself names what it was given; the names of fonts differ from system to system.
    const FontChoice preset = choice_of(dialog.currentFont());
    if (dialog.exec() != QDialog::Accepted)
        return;
    const FontChoice chosen = choice_of(dialog.selectedFont());
    if (!accepted_font(preset, chosen)) {
        operator_.ask(font_refusal(display_font(look.font_size).family().toStdString()));
        return;
    }
    look.font_size = chosen.size;
    change_look(look);
}

void frmColor::Command1_Click(int index) {
    if (index != 0) {
        reject();
        return;
    }
    on_ok(copy_.look());
    accept();
}

void frmColor::change_look(const ScreenSettings& look) {
    copy_.set_look(look);
    view_->show_panel(copy_);
}

}  // namespace ampdesk
