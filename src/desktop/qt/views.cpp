#include "desktop/qt/views.h"

#include <QAccessibleWidget>
#include <QCursor>
#include <QKeyEvent>
#include <QPainter>
#include <QSvgRenderer>
#include <QToolTip>
#include <QVariant>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace vento::desktop::qt {
namespace {

constexpr int kButtonPadding = 6;  // pixels beside a caption

// Lines as near to each other as the font allows: the toolkit would leave room between them for a fourth.
QString Dense(const FittedText& text) {
    QStringList lines;
    for (const QString& line : text.lines)
        lines.append(line.toHtmlEscaped());
    return QString(
               "<p align='center' style='white-space:pre; line-height:%1px;"
               " -qt-line-height-type:line-distance'>%2</p>")
        .arg(-QFontMetrics(text.font).leading())
        .arg(lines.join("<br>"));
}

// What a screen reader says of its own accord when it appears: a label that changes its text is not spoken.
class Notification : public QAccessibleWidget {
  public:
    explicit Notification(LabelView& view) : QAccessibleWidget(&view, QAccessible::Notification) {}

    [[nodiscard]] int childCount() const override { return 0; }
    [[nodiscard]] QAccessibleInterface* child(int /*index*/) const override { return nullptr; }
};

QAccessibleInterface* NotificationOf(const QString& /*className*/, QObject* object) {
    auto* const view = dynamic_cast<LabelView*>(object);
    return view == nullptr ? nullptr : new Notification(*view);  // NOLINT: the toolkit owns it
}

void Announce(QObject& view, QAccessible::Event what) {
    QAccessibleEvent event(&view, what);
    QAccessible::updateAccessibility(&event);
}

}  // namespace

View::View(QWidget& widget, ControlId id, const Look& look, Language language)
    : widget_(widget), layout_(LayoutOf(id)), look_(look), name_(Text(layout_.name.In(language))) {}

// Without a description of its own a widget has its tool tip for one, markup included.
void View::SetGuidance(const std::string& text) {
    if (text == guidance_) return;
    guidance_ = text;
    widget_.setToolTip(ToolTip(text));
    widget_.setAccessibleDescription(Text(text).replace(".\n", ". ").replace('\n', ". "));
    if (QToolTip::isVisible() && widget_.underMouse())
        QToolTip::showText(QCursor::pos(), widget_.toolTip(), &widget_);
}

void View::Apply() {
    widget_.setGeometry(look_.PlaceOf(layout_.place));
    widget_.setFont(look_.FontOf(layout_.font));
    widget_.setStyleSheet(Style());
    if (widget_.accessibleName().isEmpty()) widget_.setAccessibleName(name_);
    Follow();
}

ButtonView::ButtonView(Button& button, ControlId id, const Look& look, Language language,
                       std::function<void()> handler, QWidget* parent)
    : QPushButton(parent),
      View(*this, id, look, language),
      button_(button),
      mnemonic_(Text(Layout().mnemonic.In(language))) {
    setFocusPolicy(Qt::StrongFocus);
    connect(this, &QPushButton::clicked, this, std::move(handler));
    button.Observe([this] { Follow(); });
    Apply();
}

// With the letter underlined that presses the button.
QString ButtonView::Marked(const QString& caption) const {
    QString marked = caption;
    marked.replace('&', "&&");
    const qsizetype at = mnemonic_.isEmpty() ? -1 : marked.indexOf(mnemonic_);
    return at < 0 ? marked : marked.insert(at, '&');
}

void ButtonView::Follow() {
    const QString caption = ShownLines(button_.Caption());
    const QSize room(width() - 2 * kButtonPadding, height() - 2);
    const FittedText fitted = CurrentLook().Fit(Layout().font, caption, room);
    setFont(fitted.font);
    setText(Marked(fitted.lines.join('\n')));
    setShortcut(QKeySequence("Alt+" + mnemonic_));  // a new text has taken it away
    setAccessibleName(caption);
    setVisible(button_.Visible());
    if (isEnabled() == button_.Enabled()) return;
    // Disabled, a button would lose the focus to the next one, and Enter would then press that.
    if (!button_.Enabled()) {
        focusWasTaken_ = hasFocus();
        clearFocus();
    }
    setEnabled(button_.Enabled());
    if (button_.Enabled() && focusWasTaken_ && window()->focusWidget() == nullptr) setFocus();
}

void ButtonView::SetDimmed(bool dimmed) {
    if (property("dimmed").toBool() == dimmed) return;
    setProperty("dimmed", dimmed);
    setStyleSheet(Style());  // which looks at the property again
}

void ButtonView::keyPressEvent(QKeyEvent* event) {
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!isEnter) {
        QPushButton::keyPressEvent(event);
    } else if (!event->isAutoRepeat()) {
        click();
    }
}

LabelView::LabelView(Label& label, ControlId id, const Look& look, Language language, QWidget* parent)
    : QWidget(parent), View(*this, id, look, language), label_(label), text_(this) {
    QAccessible::installFactory(NotificationOf);
    text_.setTextFormat(Qt::RichText);
    text_.setTextInteractionFlags(Qt::TextSelectableByMouse);
    text_.setAlignment(Qt::AlignCenter);
    label.Observe([this] { Follow(); });
    Apply();
}

// For a screen reader the text is the name, except that an empty one would have none.
void LabelView::Follow() {
    const QString lines = ShownLines(label_.Caption());
    setVisible(label_.Visible());
    const FittedText fitted = CurrentLook().Fit(Layout().font, lines, size());
    text_.setFont(fitted.font);
    text_.setText(Dense(fitted));
    text_.setGeometry(rect());
    const bool isNews = lines != std::exchange(shown_, lines);
    if (!isNews) return;
    setAccessibleName(lines.isEmpty() ? Name() : lines);
    Announce(*this, QAccessible::ObjectHide);
    if (!lines.isEmpty()) Announce(*this, QAccessible::ObjectShow);
}

QString LabelView::TextToCopy() const {
    return text_.hasSelectedText() ? text_.selectedText().replace(QChar::ParagraphSeparator, '\n') : shown_;
}

ItemsView::ItemsView(ListView& list, ControlId id, const Look& look, Language language, QWidget* parent)
    : QListWidget(parent), View(*this, id, look, language), list_(list) {
    setSelectionMode(QAbstractItemView::NoSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTextElideMode(Qt::ElideRight);
    setWordWrap(true);
    list.Observe([this] { Follow(); });
    Apply();
}

void ItemsView::Follow() {
    clear();
    QStringList names{Name()};
    for (const std::string& each : list_.Items()) {
        addItem(ShownLines(each).replace('\n', ' '));
        QListWidgetItem& item = *this->item(count() - 1);
        item.setTextAlignment(Qt::AlignCenter);
        item.setSizeHint(QSize(1, contentsRect().height()));
        names.append(item.text());
    }
    setAccessibleName(names.join(": "));
}

BarView::BarView(ProgressBar& bar, ControlId id, const Look& look, Language language, QWidget* parent)
    : QProgressBar(parent), View(*this, id, look, language), bar_(bar) {
    setTextVisible(false);
    bar.Observe([this] { Follow(); });
    Apply();
}

// Each new value is news to screen readers, so that it is given to the toolkit once a percent only.
void BarView::Follow() {
    const int least = static_cast<int>(std::lround(bar_.Minimum()));
    const int most = static_cast<int>(std::lround(bar_.Maximum()));
    const int now = static_cast<int>(std::lround(bar_.Value()));
    if (least != minimum() || most != maximum()) setRange(least, most);
    const bool isPercentOn = std::abs(now - value()) * 100 >= most - least;
    if (isPercentOn || now == most) setValue(now);
    setVisible(bar_.Visible());
}

HintView::HintView(const Look& look, Language language, std::function<void()> handler, QWidget* parent)
    : QPushButton(parent), View(*this, ControlId::hint, look, language) {
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::PointingHandCursor);
    connect(this, &QPushButton::clicked, this, std::move(handler));
    Apply();
    hide();
}

void HintView::SetHint(const std::string& text) {
    setText(Text(text));
    setAccessibleName(Text(text));
    setVisible(!text.empty());
}

LogoView::LogoView(ControlId id, const Look& look, Language language, QWidget* parent)
    : QLabel(parent), View(*this, id, look, language) {
    setPixmap(QPixmap(1, 1));  // makes it an image to screen readers
    Apply();
}

// In high contrast it has the colour of a text, by its shape.
void LogoView::paintEvent(QPaintEvent* /*event*/) {
    QImage image(size() * devicePixelRatio(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter drawing(&image);
    drawing.setRenderHint(QPainter::Antialiasing);
    QSvgRenderer(QStringLiteral(":/logo.svg")).render(&drawing);
    if (CurrentLook().HasHighContrast()) {
        drawing.setCompositionMode(QPainter::CompositionMode_SourceIn);
        drawing.fillRect(image.rect(), CurrentLook().TextColour());
    }
    drawing.end();
    QPainter(this).drawImage(rect(), image);
}

}  // namespace vento::desktop::qt
