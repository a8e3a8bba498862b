#include "terminal/ui/volume_dialog.h"

#include <QButtonGroup>
#include <QDialogButtonBox>
#include <QRadioButton>
#include <QStringList>
#include <QVBoxLayout>

namespace ampdesk {

VolumeDialog::VolumeDialog(QWidget* parent) : QDialog(parent), choices_(new QButtonGroup(this)) {
    setObjectName(QStringLiteral("frmVolume"));
    setWindowTitle(QStringLiteral("Modem Volume"));
    auto* layout = new QVBoxLayout(this);
    const QStringList captions = QStringLiteral("&Off,&Low,&Medium,&High").split(u',');
    for (int i = 0; i < captions.size(); ++i) {
        auto* choice = new QRadioButton(captions[i], this);
        choice->setObjectName(QStringLiteral("optVolume(%1)").arg(i));
        choices_->addButton(choice, i);
        layout->addWidget(choice);
    }
    choices_->button(static_cast<int>(Volume::low))->setChecked(true);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

Volume VolumeDialog::volume() const {
    return static_cast<Volume>(choices_->checkedId());
}

}  // namespace ampdesk
