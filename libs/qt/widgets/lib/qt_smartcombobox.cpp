#include "qt_smartcombobox.h"

#include <QByteArray>
#include <QVariant>

namespace NS_QT {

SmartComboBox::SmartComboBox(QWidget* parent) : KeyComboBox(parent) {
    connect(this, SIGNAL(activated(int)), SLOT(slotActivated(int)));
}

void SmartComboBox::slotActivated(int) { emit sigKeyActivated(currentKey()); }

StringComboBox::StringComboBox(QWidget* parent) : KeyComboBox(parent) {
    qRegisterMetaType<std::string>("std::string"); // for queued connections
    connect(this, SIGNAL(activated(int)), SLOT(slotActivated(int)));
}

void StringComboBox::slotActivated(int) { emit sigKeyActivated(currentKey()); }

// Bytes rather than a QString, so that every key comes back as it was.
QVariant StringComboBox::toData(const std::string& key) const {
    return QByteArray(key.data(), static_cast<int>(key.size()));
}

std::string StringComboBox::fromData(const QVariant& stored) const {
    return stored.toByteArray().toStdString();
}

void StringComboBox::emitKeyChanged(const std::string& key) {
    const QPointer<StringComboBox> self(this);
    emit currentKeyChanged(key);
    if (self != nullptr)
        emit currentKeyTextChanged(QString::fromStdString(key));
}

} // namespace NS_QT
