#pragma once

#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <functional>

#include "controls/controls.h"
#include "desktop/layout.h"
#include "text/language.h"

/// What shows a control of the panel on the screen. A view follows its control, which outlives it, and keeps
/// nothing of its own.
namespace vento::desktop::qt {

/// A button. Pressed by mouse, Space, Enter, or Alt with its letter.
class ButtonView : public QPushButton {
  public:
    ButtonView(Button& button, ControlId id, Language language, std::function<void()> handler,
               QWidget* parent);

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void Follow();

    Button& button_;
    QKeySequence shortcut_;
    bool focusWasTaken_ = false;
};

/// A status line: as many lines as fit, wrapped.
class LabelView : public QLabel {
  public:
    LabelView(Label& label, ControlId id, Language language, QWidget* parent);

  private:
    void Follow();

    Label& label_;
    QString name_;
};

/// A list. An item that does not fit is cut short, and its tool tip has it whole.
class ItemsView : public QListWidget {
  public:
    ItemsView(ListView& list, ControlId id, Language language, QWidget* parent);

  private:
    void Follow();

    ListView& list_;
    QString name_;
};

class BarView : public QProgressBar {
  public:
    BarView(ProgressBar& bar, ControlId id, Language language, QWidget* parent);

  private:
    void Follow();

    ProgressBar& bar_;
};

/// The logo: a picture of strokes and not of pixels, as fine as whatever screen it is on.
class LogoView : public QLabel {
  public:
    LogoView(ControlId id, Language language, QWidget* parent);
};

}  // namespace vento::desktop::qt
