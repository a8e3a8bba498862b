// "Select or input the band name": the operator names the model of an amplifier that does not.
#pragma once

#include <QDialog>
#include <string>
#include <vector>

class QComboBox;

namespace ampdesk {

class frmBand : public QDialog {
    Q_OBJECT

  public:
    // Of `models`, the site's own designations in the order of its file, the first eight are listed.
    explicit frmBand(const std::vector<std::string>& models, QWidget* parent = nullptr);

    // Latin-1, as picked or typed with OK; empty after Cancel.
    const std::string& model() const { return model_; }

  private:
    void cmdOk_Click(int index);

    QComboBox* band_;
    std::string model_;
};

}  // namespace ampdesk
