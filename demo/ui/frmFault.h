// "Select A Fault To Make": the table of faults for the active simulated amplifier, and what is in
// force on it. It makes none itself: it says what is to be made, and shows what it is told.
#pragma once

#include <QDialog>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "demo/fault_view.h"

class QGridLayout;
class QLabel;
class QListWidget;
class QPushButton;
class QTreeWidget;

namespace ampdesk {

class LabelledList;

namespace demo {

struct Fault;

class frmFault : public QDialog {
    Q_OBJECT

  public:
    struct Hooks {
        // While the dialog is seen: whose faults are to be shown from now on.
        std::function<void(std::optional<int> unit_address)> watch;
        // One of ampsim's command lines, without the address.
        std::function<void(int unit_address, const std::string& line)> make;
    };
    frmFault(Hooks hooks, QWidget* parent);

    // Comes to the front for the amplifier with that unit address.
    void show_for(int unit_address);

    // The amplifier that is meant from now on.
    void follow(std::optional<int> unit_address);

    // Of nobody: no fault can be made then.
    void show_faults(const FaultView& view);

    // What was wrong with the last line; empty when it was carried out. Latin-1.
    void show_answer(int unit_address, std::string_view text);

  protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void build_faults(QGridLayout* layout);
    void build_buttons(QGridLayout* layout);
    const Fault* chosen() const;
    void show_chosen();
    void enable_make();
    void fill_active();
    void make(const std::string& line);
    void cmdMake_Click();
    void cmdClear_Click();

    Hooks hooks_;
    std::optional<int> followed_;
    FaultView view_;

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
