// "Select A Fault To Make": the table of faults for the active simulated amplifier, and what is in
// force on it.
#pragma once

#include <QDialog>
#include <QTimer>
#include <optional>
#include <vector>

#include "demo/faults.h"

class QGridLayout;
class QLabel;
class QListWidget;
class QPushButton;
class QTreeWidget;

namespace ampdesk {

class LabelledList;

namespace demo {

class frmFault : public QDialog {
    Q_OBJECT

  public:
    // `bus` must outlive the dialog.
    frmFault(const SimBus& bus, QWidget* parent);

    // Comes to the front for the amplifier with that unit address.
    void show_for(int unit_address);

    // The amplifier that is meant from now on; with nothing, or an address that no simulated one has,
    // no fault can be made.
    void follow(std::optional<int> unit_address);

  protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void build_faults(QGridLayout* layout);
    void build_buttons(QGridLayout* layout);
    const Fault* chosen() const;
    void show_chosen();
    void refresh();
    void obey(const std::string& command);
    void cmdMake_Click();
    void cmdClear_Click();

    const SimBus& bus_;
    const SimAmplifier* amplifier_ = nullptr;
    std::vector<ActiveFault> shown_;  // in the list
    QTimer look_;                     // faults end by themselves too

    QLabel* who_;
    QTreeWidget* faults_;
    QLabel* help_;
    LabelledList* argument_;
    QLabel* answer_;
    QListWidget* active_;
    QPushButton* make_;
    QPushButton* clear_;
    QPushButton* clear_all_;
};

}  // namespace demo

}  // namespace ampdesk
