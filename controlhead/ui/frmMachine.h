// The window of one amplifier: its front panel in the middle of a sub-window. It paints the copy of the
// control head that it was given last, and says what the operator does to it.
#pragma once

#include <QWidget>
#include <chrono>
#include <functional>
#include <map>
#include <string>

#include "controlhead/head.h"
#include "controlhead/head_view.h"
#include "controlhead/ui/panel_view.h"

namespace ampdesk {

class frmMachine : public QWidget {
    Q_OBJECT

  public:
    frmMachine(HeadIdentity identity, const HeadView& view, GaugeRange gauge);

    const HeadIdentity& identity() const { return identity_; }
    const HeadView& view() const { return view_; }

    // What is to be seen from now on. `moves` of the scroll bar have been heard of by the head: before that
    // are all, its view is older than where the operator has put the bar.
    void show_view(const HeadView& view, int moves);

    // Whether soft key 0..3, or the scroll bar, did something else that long ago. Other keys always do the
    // same.
    static constexpr int k_scroll_bar = 8;  // behind the lamps
    bool was_another(int key, Duration ago) const;

    // Handlers; they do nothing once the window is on its way out.
    void cmdKey_Click(int index);
    void cmdHardkey_Click(int index);
    void picLight_Click(int index);
    void VScroll1_Change(int value);

    PanelView& panel_view() { return *view_of_panel_; }
    QSize sizeHint() const override;

    // What the operator does. A soft key or lamp comes with what the key did as the panel showed it, a move
    // with the bar as it was shown.
    struct Hooks {
        std::function<void(int index, const std::string& did)> key;
        std::function<void(int index)> hard_key;
        std::function<void(int index, const std::string& did)> lamp;
        std::function<void(int value, const ScrollBar& bar)> scroll;
        std::function<void()> close;  // the window is on its way out
    };
    Hooks hooks;

  protected:
    void resizeEvent(QResizeEvent*) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    void note_changes(const Panel& panel);
    void follow_shutdown();
    bool ok_is_seen(int key) const;
    std::string did(int key) const;
    void Form_Resize();

    HeadIdentity identity_;
    HeadView view_;
    PanelView* view_of_panel_;
    std::map<int, std::chrono::steady_clock::time_point> changed_;  // when what a key does changed last
    int moves_ = 0;                                                 // of the scroll bar, that have been told
    bool shutdown_painted_ = false;
    bool ok_seen_ = false;  // the OK of a shutdown has been there for the operator to see
    bool closing_ = false;
};

}  // namespace ampdesk
