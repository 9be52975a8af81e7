#include "qt_hyperlinklabel.h"

#include "qt_focusmark.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyle>
#include <QTextDocument>

namespace NS_QT {
namespace {

// What screen readers are told: a link with its text, which can be pressed.
class LinkAccess : public QAccessibleWidget {
public:
    explicit LinkAccess(HyperlinkLabel* label) : QAccessibleWidget(label) {}

    QAccessible::Role role() const override {
        return label()->linkEnabled() ? QAccessible::Link : QAccessible::StaticText;
    }
    QString text(QAccessible::Text kind) const override {
        const QString text = QAccessibleWidget::text(kind);
        return text.isEmpty() && kind == QAccessible::Name ? label()->text() : text;
    }
    QStringList actionNames() const override {
        return QStringList{pressAction()} + QAccessibleWidget::actionNames();
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
    QAccessible::installFactory(&makeLinkAccess); // known already, it stays one
    installEventFilter(this);
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

void HyperlinkLabel::updateAppearance() {
    if (d_updating) // by the palette that it sets itself
        return;
    const QScopedValueRollback guard(d_updating, true);
    const QPalette inherited = parentWidget() != nullptr ? parentWidget()->palette() : palette();
    QPalette changed = inherited;
    for (const auto group : {QPalette::Active, QPalette::Inactive})
        changed.setColor(group, QPalette::WindowText, textColour(group, inherited));
    QFont linkFont = font();
    linkFont.setUnderline(d_linkEnabled && d_underline);
    linkFont.setItalic(d_linkEnabled && d_italic);
    setCursor(d_linkEnabled ? Qt::PointingHandCursor : Qt::ArrowCursor);
    setFocusPolicy(d_linkEnabled ? Qt::TabFocus : Qt::NoFocus);
    setFont(linkFont);
    setPalette(changed);
}

bool HyperlinkLabel::event(QEvent* event) {
    if (event->type() == QEvent::ParentChange)
        followParent();
    return QLabel::event(event);
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

QRect HyperlinkLabel::focusRect() const {
    const int around = margin();
    const QRect inside = contentsRect().adjusted(around, around, -around, -around);
    if (text().isEmpty() || Qt::mightBeRichText(text()))
        return inside;
    // A label aligns its text by the direction of the text, not by its own.
    const auto direction = text().isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
    const auto aligned = static_cast<int>(QStyle::visualAlignment(direction, alignment()));
    return style()
               ->itemTextRect(fontMetrics(), inside, aligned, isEnabled(), text())
               .adjusted(-1, -1, 1, 1) &
           rect();
}

void HyperlinkLabel::paintEvent(QPaintEvent* event) {
    QLabel::paintEvent(event);
    if (!hasFocus()) // to which only keys lead
        return;
    QPainter painter(this);
    drawFocusFrame(*this, painter, focusRect());
}

} // namespace NS_QT
