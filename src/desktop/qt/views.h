#pragma once

#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <functional>

#include "controls/controls.h"
#include "desktop/layout.h"
#include "desktop/qt/look.h"
#include "text/language.h"

/// What shows a control of the panel on the screen. A view follows its control, which outlives it, and keeps
/// nothing of its own.
namespace vento::desktop::qt {

/// What all views have in common.
class View {
  public:
    View(QWidget& widget, ControlId id, const Look& look, Language language);
    View(const View&) = delete;
    View& operator=(const View&) = delete;
    View(View&&) = delete;
    View& operator=(View&&) = delete;
    virtual ~View() = default;

    [[nodiscard]] QWidget& Widget() { return widget_; }
    [[nodiscard]] ControlId Id() const { return layout_.id; }

    /// The tool tip, which is the description for screen readers too.
    void SetGuidance(const std::string& text);

    /// Takes place, font and colours from the look, which has changed.
    void Apply();

  protected:
    [[nodiscard]] const ControlLayout& Layout() const { return layout_; }
    [[nodiscard]] const Look& CurrentLook() const { return look_; }
    [[nodiscard]] QString Name() const { return name_; }

    [[nodiscard]] virtual QString Style() const { return {}; }
    /// Shows what the control holds.
    virtual void Follow() = 0;

  private:
    QWidget& widget_;
    const ControlLayout& layout_;
    const Look& look_;
    QString name_;
    std::string guidance_;
};

/// A button. Pressed by mouse, Space, Enter, or Alt with its letter.
class ButtonView : public QPushButton, public View {
  public:
    ButtonView(Button& button, ControlId id, const Look& look, Language language,
               std::function<void()> handler, QWidget* parent);

    /// Gives it the look of a disabled one. It keeps the focus, and does what it does.
    void SetDimmed(bool dimmed);

  protected:
    [[nodiscard]] QString Style() const override { return CurrentLook().ButtonStyle(Layout().background); }
    void Follow() override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    [[nodiscard]] QString Marked(const QString& caption) const;

    Button& button_;
    QString mnemonic_;
    bool focusWasTaken_ = false;
};

/// A status line: as many lines as fit, wrapped. Screen readers speak each text as it comes. It can be
/// selected by mouse.
class LabelView : public QWidget, public View {
  public:
    LabelView(Label& label, ControlId id, const Look& look, Language language, QWidget* parent);

    /// What is selected, or else all of it.
    [[nodiscard]] QString TextToCopy() const;

  protected:
    void Follow() override;

  private:
    Label& label_;
    QLabel text_;
    QString shown_;
};

/// A list. An item that does not fit is cut short.
class ItemsView : public QListWidget, public View {
  public:
    ItemsView(ListView& list, ControlId id, const Look& look, Language language, QWidget* parent);

  protected:
    [[nodiscard]] QString Style() const override { return CurrentLook().ListStyle(); }
    void Follow() override;

  private:
    ListView& list_;
};

class BarView : public QProgressBar, public View {
  public:
    BarView(ProgressBar& bar, ControlId id, const Look& look, Language language, QWidget* parent);

  protected:
    [[nodiscard]] QString Style() const override { return CurrentLook().BarStyle(); }
    void Follow() override;

  private:
    ProgressBar& bar_;
};

/// The key that helps now. A click does what the key does.
class HintView : public QPushButton, public View {
  public:
    HintView(const Look& look, Language language, std::function<void()> handler, QWidget* parent);

    /// Empty for none.
    void SetHint(const std::string& text);

  protected:
    [[nodiscard]] QString Style() const override { return CurrentLook().HintStyle(); }
    void Follow() override {}
};

/// The logo: a picture of strokes and not of pixels, as fine as whatever screen it is on.
class LogoView : public QLabel, public View {
  public:
    LogoView(ControlId id, const Look& look, Language language, QWidget* parent);

  protected:
    void Follow() override {}
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace vento::desktop::qt
