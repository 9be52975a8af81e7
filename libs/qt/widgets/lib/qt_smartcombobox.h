#pragma once

#include "qt_keycombobox.h"

#include <string>

namespace NS_QT {

/// A combo box whose items have numbers: users choose a text, the program learns its key.
/// Several items may have the same key. Items that were added without one have key 0.
///
/// Like any QComboBox it must not be deleted by a slot of its own; deleteLater() may be
/// called. GUI thread only.
class SmartComboBox : public KeyComboBox<int> {
    Q_OBJECT
    Q_PROPERTY(int currentKey READ currentKey WRITE setCurrentKey NOTIFY currentKeyChanged)

public:
    /// Without items.
    explicit SmartComboBox(QWidget* parent = nullptr);

public Q_SLOTS:
    /// Makes the first item with that key the current one; nothing if there is none.
    void setCurrentKey(int key) { selectKey(key); }
    /// For Qt's `activated`, which it follows by sigKeyActivated.
    void slotActivated(int index);

Q_SIGNALS:
    /// The user has chosen an item, maybe the same again; the key is the current item's.
    void sigKeyActivated(int key);
    /// Another key is current, whoever chose or changed it.
    void currentKeyChanged(int key);

protected:
    QVariant toData(const int& key) const override { return key; }
    int fromData(const QVariant& stored) const override { return stored.toInt(); }
    void emitKeyChanged(const int& key) override { Q_EMIT currentKeyChanged(key); }
};

/// The same with texts as keys; an item without a key has the empty one.
class StringComboBox : public KeyComboBox<std::string> {
    Q_OBJECT
    /// The key as UTF-8.
    Q_PROPERTY(
        QString currentKey READ currentKeyText WRITE setCurrentKeyText NOTIFY currentKeyTextChanged)

public:
    explicit StringComboBox(QWidget* parent = nullptr);

    /// The key as Qt's properties have it.
    QString currentKeyText() const { return QString::fromStdString(currentKey()); }
    void setCurrentKeyText(const QString& key) { setCurrentKey(key.toStdString()); }

public Q_SLOTS:
    /// As those of SmartComboBox.
    void setCurrentKey(const std::string& key) { selectKey(key); }
    /// For Qt's `activated`, which it follows by sigKeyActivated.
    void slotActivated(int index);

Q_SIGNALS:
    /// As those of SmartComboBox.
    void sigKeyActivated(std::string key);
    void currentKeyChanged(std::string key);
    void currentKeyTextChanged(const QString& key);

protected:
    QVariant toData(const std::string& key) const override;
    std::string fromData(const QVariant& stored) const override;
    void emitKeyChanged(const std::string& key) override;
};

} // namespace NS_QT
