// The band dialog.
#include "controlhead/ui/frmBand.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

#include "platform/qt/labelled_list.h"

namespace ampdesk {

namespace {
constexpr std::size_t k_most_models = 8;
}

frmBand::frmBand(const std::vector<std::string>& models, QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmBand"));
    setWindowTitle(QStringLiteral("Select or input the band name"));
    auto* layout = new QGridLayout(this);

    auto* label = new QLabel(QStringLiteral("Band Name:"), this);
    label->setObjectName(QStringLiteral("Label1"));
    band_ = new LabelledList(QStringLiteral("cboBand"), label->text(), this);
    label->setBuddy(band_);
    band_->addItems(QStringLiteral("C/KU/X C/KU KU/K KU/DBS").split(u' '));
    for (std::size_t i = 0; i < models.size() && i < k_most_models; ++i)
        band_->addItem(QString::fromLatin1(models[i]));
    band_->addItem(QStringLiteral("KU"));
    band_->setMaxVisibleItems(band_->count());

    layout->addWidget(label, 0, 0);
    layout->addWidget(band_, 0, 1, 1, 2);

    for (int index : {1, 0}) {
        auto* button = new QPushButton(index == 1 ? QStringLiteral("OK") : QStringLiteral("Cancel"), this);
        button->setObjectName(QStringLiteral("cmdOk(%1)").arg(index));
        button->setDefault(index == 1);
        layout->addWidget(button, 1, 2 - index);
        connect(button, &QPushButton::clicked, this, [this, index] { cmdOk_Click(index); });
    }
}

void frmBand::cmdOk_Click(int index) {
    if (index == 0) {
        reject();
        return;
    }
    model_ = band_->currentText().toLatin1().toStdString();
    accept();
}

}  // namespace ampdesk
