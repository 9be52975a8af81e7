#include "qt_infobutton.h"

#include <QEvent>
#include <QMessageBox>
#include <QPointer>
#include <QStyle>

namespace NS_QT {

InfoButton::InfoButton(QWidget* parent) : InfoButton(Information, {}, {}, parent) {}

InfoButton::InfoButton(int32_t kind, const QString& title, const QString& text, QWidget* parent)
    : QPushButton(parent), d_kind(kind), d_title(title), d_text(text) {
    setAccessibleName(nameFor(title));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    updateIcon();
    connect(this, &QPushButton::clicked, this, &InfoButton::showMessage);
}

QString InfoButton::nameFor(const QString& title) const {
    if (!title.isEmpty())
        return title;
    return isWarning() ? tr("Warning") : tr("Information");
}

void InfoButton::setKind(int32_t kind) {
    if (d_kind == kind)
        return;
    const bool isNamedByUs = accessibleName() == nameFor(d_title);
    d_kind = kind;
    if (isNamedByUs)
        setAccessibleName(nameFor(d_title));
    updateIcon();
    emit kindChanged();
}

void InfoButton::setTitle(const QString& title) {
    if (d_title == title)
        return;
    if (accessibleName() == nameFor(d_title))
        setAccessibleName(nameFor(title));
    d_title = title;
    emit titleChanged(title);
}

void InfoButton::setMessage(const QString& text) {
    if (d_text == text)
        return;
    d_text = text;
    emit messageChanged(text);
}

// Not one of QMessageBox's static functions: these keep the box on the stack, where it
// must not be when its parent is deleted meanwhile.
void InfoButton::showMessage() {
    const auto icon = isWarning() ? QMessageBox::Warning : QMessageBox::Information;
    const QPointer<QMessageBox> box = new QMessageBox(icon, d_title, d_text, QMessageBox::Ok, this);
    box->exec();
    delete box;
}

void InfoButton::changeEvent(QEvent* event) {
    QPushButton::changeEvent(event);
    if (event->type() == QEvent::StyleChange)
        updateIcon();
}

void InfoButton::updateIcon() {
    const auto sign = isWarning() ? QStyle::SP_MessageBoxWarning : QStyle::SP_MessageBoxInformation;
    setIcon(style()->standardIcon(sign, nullptr, this));
}

} // namespace NS_QT
