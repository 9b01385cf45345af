#include "desktop/qt/views.h"

#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QPainter>
#include <QPicture>
#include <QSvgRenderer>
#include <cmath>
#include <utility>

#include "desktop/qt/look.h"

namespace vento::desktop::qt {
namespace {

constexpr int kButtonPadding = 6;  // pixels beside a caption

void LayOut(QWidget& view, const ControlLayout& layout, Language language) {
    view.setGeometry(PlaceOf(layout.place));
    view.setFont(FontOf(layout.font));
    view.setAccessibleName(Text(layout.name.In(language)));
    view.setToolTip(Text(ToolTipOf(layout, language)));
}

// Breaks a text at its blanks into lines that are no wider than `width`, where that is possible.
QString Wrapped(const QString& text, const QFontMetrics& metrics, int width) {
    QString lines;
    QString line;
    for (const QString& word : text.split(' ')) {
        const QString longer = line.isEmpty() ? word : line + ' ' + word;
        if (line.isEmpty() || metrics.horizontalAdvance(longer) <= width) {
            line = longer;
        } else {
            lines += line + '\n';
            line = word;
        }
    }
    return lines + line;
}

// What a screen reader says of its own accord when it appears: a label that changes its text is not spoken.
class Notification : public QAccessibleWidget {
  public:
    explicit Notification(LabelView& view) : QAccessibleWidget(&view, QAccessible::Notification) {}

    // The tool tip, which would otherwise be spoken behind each text, is not part of it.
    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Description ? QString() : QAccessibleWidget::text(kind);
    }
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

ButtonView::ButtonView(Button& button, ControlId id, Language language, std::function<void()> handler,
                       QWidget* parent)
    : QPushButton(parent), button_(button) {
    const ControlLayout& layout = LayoutOf(id);
    LayOut(*this, layout, language);
    setStyleSheet(ButtonStyle(layout.background));
    setFocusPolicy(Qt::StrongFocus);
    shortcut_ = QKeySequence("Alt+" + Text(layout.mnemonic.In(language)));
    connect(this, &QPushButton::clicked, this, std::move(handler));
    button.Observe([this] { Follow(); });
    Follow();
}

void ButtonView::Follow() {
    const QString caption = ShownLines(button_.Caption());
    setText(Wrapped(caption, fontMetrics(), width() - 2 * kButtonPadding).replace('&', "&&"));
    setAccessibleName(caption);
    setShortcut(shortcut_);  // a new text has taken it away
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

void ButtonView::keyPressEvent(QKeyEvent* event) {
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!isEnter) {
        QPushButton::keyPressEvent(event);
    } else if (!event->isAutoRepeat()) {
        click();
    }
}

LabelView::LabelView(Label& label, ControlId id, Language language, QWidget* parent)
    : QLabel(parent), label_(label), name_(Text(LayoutOf(id).name.In(language))) {
    QAccessible::installFactory(NotificationOf);
    LayOut(*this, LayoutOf(id), language);
    setTextFormat(Qt::PlainText);
    setAlignment(Qt::AlignCenter);
    setWordWrap(true);
    label.Observe([this] { Follow(); });
    Follow();
}

// For a screen reader the text is the name, except that an empty one would have none.
void LabelView::Follow() {
    const QString lines = ShownLines(label_.Caption());
    setVisible(label_.Visible());
    if (lines == text() && !accessibleName().isEmpty()) return;
    setText(lines);
    setAccessibleName(lines.isEmpty() ? name_ : lines);
    Announce(*this, QAccessible::ObjectHide);
    if (!lines.isEmpty()) Announce(*this, QAccessible::ObjectShow);
}

ItemsView::ItemsView(ListView& list, ControlId id, Language language, QWidget* parent)
    : QListWidget(parent), list_(list), name_(Text(LayoutOf(id).name.In(language))) {
    LayOut(*this, LayoutOf(id), language);
    setStyleSheet(ListStyle());
    setSelectionMode(QAbstractItemView::NoSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTextElideMode(Qt::ElideRight);
    setWordWrap(true);
    list.Observe([this] { Follow(); });
    Follow();
}

void ItemsView::Follow() {
    clear();
    QStringList names{name_};
    const QSize room = contentsRect().size();
    for (const std::string& each : list_.Items()) {
        addItem(ShownLines(each).replace('\n', ' '));
        names.append(item(count() - 1)->text());
        QListWidgetItem& item = *this->item(count() - 1);
        item.setTextAlignment(Qt::AlignCenter);
        item.setSizeHint(QSize(1, room.height()));
        const QRect needed = fontMetrics().boundingRect(QRect(QPoint(), room), Qt::TextWordWrap, item.text());
        if (needed.width() > room.width() || needed.height() > room.height()) item.setToolTip(item.text());
    }
    setAccessibleName(names.join(": "));
}

BarView::BarView(ProgressBar& bar, ControlId id, Language language, QWidget* parent)
    : QProgressBar(parent), bar_(bar) {
    LayOut(*this, LayoutOf(id), language);
    setStyleSheet(BarStyle());
    setTextVisible(false);
    bar.Observe([this] { Follow(); });
    Follow();
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

LogoView::LogoView(ControlId id, Language language, QWidget* parent) : QLabel(parent) {
    LayOut(*this, LayoutOf(id), language);
    QPicture picture;
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    QSvgRenderer(QStringLiteral(":/logo.svg")).render(&painter, rect());
    painter.end();
    setPicture(picture);
}

}  // namespace vento::desktop::qt
