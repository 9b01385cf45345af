#pragma once

#include <QMainWindow>
#include <QShortcut>
#include <QString>
#include <QTimer>
#include <array>
#include <string>

#include "desktop/qt/views.h"
#include "panel/form_web.h"

namespace vento::desktop::qt {

/// FormWeb on the screen: it shows the form's controls and takes what the operator does to its handlers. The
/// form has been through `Form_Load` and outlives the window.
class FormWindow : public QMainWindow {
  public:
    FormWindow(FormWeb& form, const QString& title);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    [[nodiscard]] QWidget* ViewOf(ControlId id);
    void SetTabOrder();

    FormWeb& form_;
    LogoView image1_;
    std::array<ItemsView, kColumns> listView1_;
    ButtonView command2_;
    ButtonView command3_;
    ButtonView command4_;
    ButtonView command6_;
    LabelView label1_;
    BarView progressBar1_;
    QShortcut escape_;
    QTimer loading_;
    std::string dropped_;  ///< the file that `loading_` is about to load
};

}  // namespace vento::desktop::qt
