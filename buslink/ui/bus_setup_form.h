// The form that frmSetup and frmSerial share: port, address, the four groups of option buttons and
// the notice that is shown while the line is checked.
#pragma once

#include <QDialog>
#include <string>

#include "buslink/bus_setup.h"

class QButtonGroup;
class QComboBox;
class QGridLayout;
class QLabel;
class QPushButton;

namespace ampdesk {

class BusSetupForm : public QDialog {
    Q_OBJECT

  public:
    // Loads the fields from the file at `path` ("rs485.dat"). `logic` is what OK does; until it has a result
    // the dialog takes no input. `ports` tells which device each name stands for.
    BusSetupForm(const QString& caption, const std::string& path, const PortMap& ports, Operator& person,
                 BusSetup& logic, QWidget* parent);
    ~BusSetupForm() override;

    // The fields as they stand, also when the dialog has closed.
    BusChoices choices() const;

    void reject() override;

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void build_lists(QGridLayout* layout);
    void build_options(QGridLayout* layout);
    void check_later(QComboBox* list);
    bool check(QComboBox* list);
    bool check_all();
    void show_device();
    void cmdOk_Click();
    void take_result(const SetupResult& result);
    void set_checking(bool checking);

    const PortMap ports_;
    Operator& operator_;
    BusSetup& logic_;
    bool checking_ = false;       // OK is running
    QWidget* focused_ = nullptr;  // what had the focus when it began

    QWidget* fields_;
    QComboBox* port_;
    QComboBox* address_;
    QLabel* device_;
    QButtonGroup* baud_;
    QButtonGroup* bits_;
    QButtonGroup* stop_;
    QButtonGroup* parity_;
    QLabel* wait_;
    QPushButton* ok_button_;
    QPushButton* cancel_button_;
};

}  // namespace ampdesk
