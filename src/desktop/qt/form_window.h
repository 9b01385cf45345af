#pragma once

#include <QMainWindow>
#include <QShortcut>
#include <QString>
#include <QTimer>
#include <array>
#include <functional>
#include <string>

#include "desktop/qt/look.h"
#include "desktop/qt/session_bus.h"
#include "desktop/qt/views.h"
#include "panel/form_web.h"

namespace vento::desktop::qt {

/// FormWeb on the screen: it shows the form's controls and takes what the operator does to its handlers. The
/// form has been through `Form_Load`. It outlives the window, and so do the desktop and the look.
class FormWindow : public QMainWindow {
  public:
    FormWindow(FormWeb& form, platform::Desktop& desktop, Look& look, const QString& title);

    /// Takes place, fonts and colours from the look, which has changed.
    void ApplyLook();

    /// Brings what follows from the panel's state, and is not in a control, up to date: to be called before
    /// the event loop has a turn.
    void Refresh();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    [[nodiscard]] std::function<void()> Pressing(void (FormWeb::*handler)());
    [[nodiscard]] View* ViewOf(ControlId id);
    void SetTabOrder();
    void FitScreen();
    void KeepOnScreen();
    void ShowOperation(bool operating);
    void CopyStatus();
    void DoHint();
    void ShowDetails();
    void LookForTransmitter();

    FormWeb& form_;
    platform::Desktop& desktop_;
    Look& look_;
    LogoView image1_;
    std::array<ItemsView, kColumns> listView1_;
    ButtonView command2_;
    ButtonView command3_;
    ButtonView command4_;
    ButtonView command6_;
    LabelView label1_;
    BarView progressBar1_;
    HintView hint_;
    QShortcut escape_;
    QShortcut copy_;
    QShortcut details_;
    QTimer looking_;
    platform::Presence transmitter_ = platform::Presence::unknown;
    QTimer loading_;
    std::string dropped_;  ///< the file that `loading_` is about to load
    Launcher launcher_;
    bool operating_ = false;
    bool screenIsWatched_ = false;
};

}  // namespace vento::desktop::qt
