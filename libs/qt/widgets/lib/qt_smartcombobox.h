#pragma once

#include <QComboBox>

#include <string>

namespace NS_QT {

/// A combo box whose items have numbers: users choose a text, the program learns its key.
/// Several items may have the same key. Items that were added without one have key 0.
///
/// Like any QComboBox it must not be deleted by a slot of its own; deleteLater() may be
/// called. GUI thread only.
class SmartComboBox : public QComboBox {
    Q_OBJECT
    Q_PROPERTY(int currentKey READ currentKey WRITE setCurrentKey NOTIFY currentKeyChanged)

public:
    explicit SmartComboBox(QWidget* parent = nullptr);

    void addItem(const QString& text, int key) { insertItem(count(), {}, text, key); }
    void addItem(const QIcon& icon, const QString& text, int key) {
        insertItem(count(), icon, text, key);
    }
    void insertItem(int index, const QString& text, int key) { insertItem(index, {}, text, key); }
    void insertItem(int index, const QIcon& icon, const QString& text, int key);

    /// 0 for an index that does not exist.
    int key(int index) const;
    /// 0 if no item is current.
    int currentKey() const { return key(currentIndex()); }

public slots:
    /// Makes the first item with that key the current one; nothing if there is none.
    void setCurrentKey(int key);
    void slotActivated(int index);

signals:
    /// The user has chosen an item, maybe the same again; the key is the current item's.
    void sigKeyActivated(int key);
    /// Another key is current, whoever chose it.
    void currentKeyChanged(int key);

private:
    void reportKey();

    int d_reportedKey = 0;
};

/// The same with texts as keys; an item without a key has the empty one.
class StringComboBox : public QComboBox {
    Q_OBJECT

public:
    explicit StringComboBox(QWidget* parent = nullptr);

    void addItem(const QString& text, const std::string& key) {
        insertItem(count(), {}, text, key);
    }
    void addItem(const QIcon& icon, const QString& text, const std::string& key) {
        insertItem(count(), icon, text, key);
    }
    void insertItem(int index, const QString& text, const std::string& key) {
        insertItem(index, {}, text, key);
    }
    void insertItem(int index, const QIcon& icon, const QString& text, const std::string& key);

    std::string key(int index) const;
    std::string currentKey() const { return key(currentIndex()); }

public slots:
    void setCurrentKey(const std::string& key);
    void slotActivated(int index);

signals:
    void sigKeyActivated(std::string key);
    void currentKeyChanged(std::string key);

private:
    void reportKey();

    std::string d_reportedKey;
};

} // namespace NS_QT
