#include "qt_smartcombobox.h"

#include <QByteArray>
#include <QVariant>

namespace NS_QT {
namespace {

// Bytes rather than a QString, so that every key comes back as it was.
QVariant stored(const std::string& key) {
    return QByteArray(key.data(), static_cast<int>(key.size()));
}

} // namespace

SmartComboBox::SmartComboBox(QWidget* parent) : QComboBox(parent) {
    connect(this, SIGNAL(activated(int)), SLOT(slotActivated(int)));
    connect(this, qOverload<int>(&QComboBox::currentIndexChanged), this, &SmartComboBox::reportKey);
}

void SmartComboBox::insertItem(int index, const QIcon& icon, const QString& text, int key) {
    QComboBox::insertItem(index, icon, text, key);
}

int SmartComboBox::key(int index) const { return itemData(index).toInt(); }

void SmartComboBox::setCurrentKey(int key) {
    if (const int index = findData(key); index >= 0)
        setCurrentIndex(index);
}

void SmartComboBox::slotActivated(int) { emit sigKeyActivated(currentKey()); }

void SmartComboBox::reportKey() {
    if (d_reportedKey == currentKey())
        return;
    d_reportedKey = currentKey();
    emit currentKeyChanged(d_reportedKey);
}

StringComboBox::StringComboBox(QWidget* parent) : QComboBox(parent) {
    qRegisterMetaType<std::string>("std::string"); // for queued connections
    connect(this, SIGNAL(activated(int)), SLOT(slotActivated(int)));
    connect(this, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &StringComboBox::reportKey);
}

void StringComboBox::insertItem(int index, const QIcon& icon, const QString& text,
                                const std::string& key) {
    QComboBox::insertItem(index, icon, text, stored(key));
}

std::string StringComboBox::key(int index) const {
    return itemData(index).toByteArray().toStdString();
}

void StringComboBox::setCurrentKey(const std::string& key) {
    if (const int index = findData(stored(key)); index >= 0)
        setCurrentIndex(index);
}

void StringComboBox::slotActivated(int) { emit sigKeyActivated(currentKey()); }

void StringComboBox::reportKey() {
    if (d_reportedKey == currentKey())
        return;
    d_reportedKey = currentKey();
    emit currentKeyChanged(d_reportedKey);
}

} // namespace NS_QT
