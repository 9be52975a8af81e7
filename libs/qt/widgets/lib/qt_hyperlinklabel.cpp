#include "qt_hyperlinklabel.h"

#include "qt_focusmark.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyle>
#include <QTextDocument>

#include <algorithm>
#include <cmath>

namespace NS_QT {
namespace {

constexpr QPalette::ColorGroup kGroups[] = {QPalette::Active, QPalette::Inactive};

bool hasMarkup(const QLabel& label) {
    return label.textFormat() == Qt::AutoText ? Qt::mightBeRichText(label.text())
                                              : label.textFormat() != Qt::PlainText;
}

void readMarkup(QTextDocument& document, const QLabel& label) {
    if (label.textFormat() == Qt::MarkdownText)
        document.setMarkdown(label.text());
    else
        document.setHtml(label.text());
}

QString plainText(const QLabel& label) {
    if (!hasMarkup(label))
        return label.text();
    QTextDocument document;
    readMarkup(document, label);
    return document.toPlainText();
}

// What screen readers are told: a link with its text, which can be pressed.
class LinkAccess : public QAccessibleWidget {
public:
    explicit LinkAccess(HyperlinkLabel* label) : QAccessibleWidget(label) {}

    QAccessible::Role role() const override {
        return label()->linkEnabled() ? QAccessible::Link : QAccessible::StaticText;
    }
    QString text(QAccessible::Text kind) const override {
        const QString text = QAccessibleWidget::text(kind);
        return text.isEmpty() && kind == QAccessible::Name ? plainText(*label()) : text;
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.linked = label()->linkEnabled();
        return state;
    }
    QStringList actionNames() const override {
        QStringList names = QAccessibleWidget::actionNames();
        if (label()->linkEnabled())
            names.prepend(pressAction());
        return names;
    }
    void doAction(const QString& name) override {
        if (name == pressAction())
            label()->click();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    HyperlinkLabel* label() const { return static_cast<HyperlinkLabel*>(widget()); }
};

QAccessibleInterface* makeLinkAccess(const QString&, QObject* object) {
    auto* const label = qobject_cast<HyperlinkLabel*>(object);
    return label != nullptr ? new LinkAccess(label) : nullptr;
}

} // namespace

HyperlinkLabel::HyperlinkLabel(QWidget* parent) : HyperlinkLabel({}, parent) {}

HyperlinkLabel::HyperlinkLabel(const QString& text, QWidget* parent) : QLabel(parent) {
    QAccessible::installFactory(&makeLinkAccess); // again does no harm
    installEventFilter(this);
    setCursorAndFocusPolicy();
    followParent();
    setText(text); // given to QLabel's constructor, screen readers would see a mere label
}

void HyperlinkLabel::click() {
    if (isEnabled() && d_linkEnabled)
        emit clicked();
}

// A parent's palette is ours only as long as nobody sets one of our own, which is what
// the appearance does; so we have to watch it.
void HyperlinkLabel::followParent() {
    if (d_watchedParent != nullptr)
        d_watchedParent->removeEventFilter(this);
    d_watchedParent = parentWidget();
    if (d_watchedParent != nullptr)
        d_watchedParent->installEventFilter(this);
    updateAppearance();
}

QColor HyperlinkLabel::textColour(QPalette::ColorGroup group, const QPalette& palette) const {
    const QColor& colour = d_linkEnabled ? d_linkColour : d_plainColour;
    if (colour.isValid())
        return colour;
    return palette.color(group, d_linkEnabled ? QPalette::Link : QPalette::WindowText);
}

void HyperlinkLabel::setLinkEnabled(bool enabled) {
    if (d_linkEnabled == enabled)
        return;
    d_linkEnabled = enabled;
    setCursorAndFocusPolicy();
    updateAppearance();
    QAccessible::State changed;
    changed.linked = true;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
    emit linkAppearanceChanged();
}

void HyperlinkLabel::setCursorAndFocusPolicy() {
    setCursor(d_linkEnabled ? Qt::PointingHandCursor : Qt::ArrowCursor);
    setFocusPolicy(d_linkEnabled ? Qt::TabFocus : Qt::NoFocus);
}

// What the colours of links come on top of: the parent's palette or, without a parent,
// the label's own, where they have to be taken out again.
QPalette HyperlinkLabel::basePalette() {
    if (parentWidget() != nullptr)
        return parentWidget()->palette();
    const QPalette application = QApplication::palette(this);
    QPalette base = palette();
    for (const auto group : kGroups) {
        TextColour& text = d_text[group];
        text.application = application.color(group, QPalette::WindowText);
        if (const QColor now = base.color(group, QPalette::WindowText); now != text.shown)
            text.own = now;
        else if (!text.own.isValid())
            text.own = text.application;
        base.setColor(group, QPalette::WindowText, text.own);
    }
    return base;
}

// The application's palette changes only what the label has not been given.
void HyperlinkLabel::followApplication() {
    const QPalette application = QApplication::palette(this);
    for (const auto group : kGroups) {
        if (d_text[group].own == d_text[group].application)
            d_text[group].own = application.color(group, QPalette::WindowText);
    }
}

void HyperlinkLabel::updateAppearance() {
    if (d_updating) // by the palette that it sets itself
        return;
    const QScopedValueRollback guard(d_updating, true);
    const QPalette base = basePalette();
    QPalette changed = base;
    for (const auto group : kGroups) {
        d_text[group].shown = textColour(group, base);
        changed.setColor(group, QPalette::WindowText, d_text[group].shown);
    }
    QFont linkFont = font();
    linkFont.setUnderline(d_linkEnabled && d_underline);
    linkFont.setItalic(d_linkEnabled && d_italic);
    setFont(linkFont);
    setPalette(changed);
}

bool HyperlinkLabel::event(QEvent* event) {
    if (event->type() == QEvent::ParentChange)
        followParent();
    const bool isApplications = event->type() == QEvent::ApplicationPaletteChange;
    if (isApplications)
        followApplication();
    const bool handled = QLabel::event(event);
    if (isApplications) // now that the label has the colour of links
        updateAppearance();
    return handled;
}

bool HyperlinkLabel::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::PaletteChange) {
        updateAppearance();
    } else if (object == this && event->type() == QEvent::MouseButtonPress) {
        const QPointer<QObject> self = this;
        click();
        if (self == nullptr)
            return true; // nobody is left to receive the event
    }
    return false;
}

void HyperlinkLabel::keyPressEvent(QKeyEvent* event) {
    if (!d_linkEnabled || !isPressKey(event->key()))
        QLabel::keyPressEvent(event);
    else if (!event->isAutoRepeat())
        click();
}

// Where QLabel puts its text: within frame, margin and indentation, which unless it is set
// is half an "x" in a frame and otherwise none.
QRect HyperlinkLabel::textArea() const {
    const int around = margin();
    QRect area = contentsRect().adjusted(around, around, -around, -around);
    int gap = indent();
    if (gap < 0)
        gap = frameWidth() > 0 ? fontMetrics().horizontalAdvance('x') / 2 - around : 0;
    const Qt::Alignment aligned = textAlignment();
    gap = std::max(gap, 0);
    area.adjust(aligned & Qt::AlignLeft ? gap : 0, aligned & Qt::AlignTop ? gap : 0,
                aligned & Qt::AlignRight ? -gap : 0, aligned & Qt::AlignBottom ? -gap : 0);
    return area;
}

// A label aligns its text by the direction of the text, not by its own.
Qt::Alignment HyperlinkLabel::textAlignment() const {
    return QStyle::visualAlignment(
        plainText(*this).isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight, alignment());
}

QRect HyperlinkLabel::focusRect() const {
    const QRect area = textArea();
    QRect text = area;
    if (hasMarkup(*this)) {
        QTextDocument document;
        document.setDefaultFont(font());
        document.setDocumentMargin(0);
        readMarkup(document, *this);
        document.setTextWidth(wordWrap() ? area.width() : -1);
        const QSize size(static_cast<int>(std::ceil(document.idealWidth())),
                         static_cast<int>(std::ceil(document.size().height())));
        text = QStyle::alignedRect(Qt::LeftToRight, textAlignment(), size, area);
    } else if (!this->text().isEmpty()) {
        const int wrap = wordWrap() ? Qt::TextWordWrap : 0;
        text = style()->itemTextRect(fontMetrics(), area, static_cast<int>(textAlignment()) | wrap,
                                     isEnabled(), this->text());
    }
    return text.adjusted(-2, -2, 2, 2) & rect();
}

void HyperlinkLabel::paintEvent(QPaintEvent* event) {
    QLabel::paintEvent(event);
    if (!hasFocus()) // to which only keys lead
        return;
    QPainter painter(this);
    drawFocusFrame(*this, painter, focusRect());
}

} // namespace NS_QT
