#pragma once

#include <QComboBox>
#include <QIcon>
#include <QPointer>

#include <concepts>

namespace NS_QT {

/// What the combo boxes whose items have keys share, whatever a key is. Subclasses name
/// their signals, and say how an item's data holds its key. An item's key is its user data,
/// Qt::UserRole; setItemData changes it.
template <typename Key>
class KeyComboBox : public QComboBox {
public:
    using QComboBox::addItem;
    using QComboBox::insertItem;

    /// Items as those of QComboBox, with a key each.
    template <std::convertible_to<Key> K>
    void addItem(const QString& text, const K& key) {
        insertItem(count(), QIcon(), text, key);
    }
    template <std::convertible_to<Key> K>
    void addItem(const QIcon& icon, const QString& text, const K& key) {
        insertItem(count(), icon, text, key);
    }
    template <std::convertible_to<Key> K>
    void insertItem(int index, const QString& text, const K& key) {
        insertItem(index, QIcon(), text, key);
    }
    template <std::convertible_to<Key> K>
    void insertItem(int index, const QIcon& icon, const QString& text, const K& key) {
        QComboBox::insertItem(index, icon, text, toData(Key(key)));
    }

    /// The empty key, 0 or "", for an index that does not exist and an item without one.
    Key key(int index) const { return fromData(itemData(index)); }
    /// The same if no item is current.
    Key currentKey() const { return key(currentIndex()); }

protected:
    /// Without items.
    explicit KeyComboBox(QWidget* parent) : QComboBox(parent) {
        connect(this, qOverload<int>(&QComboBox::currentIndexChanged), this, [this] { report(); });
        watchModel();
    }

    /// How a key is kept by Qt, and read from there.
    virtual QVariant toData(const Key& key) const = 0;
    virtual Key fromData(const QVariant& stored) const = 0;
    /// Tells of another current key.
    virtual void emitKeyChanged(const Key& key) = 0;

    /// Makes the item with the key the current one.
    void selectKey(const Key& key) {
        int index = 0;
        while (index < count() && this->key(index) != key)
            ++index;
        if (index < count())
            setCurrentIndex(index);
    }

private:
    // An application may replace the model, which Qt tells by another current item.
    void watchModel() {
        if (d_model == model())
            return;
        if (d_model != nullptr)
            disconnect(d_model, &QAbstractItemModel::dataChanged, this, nullptr);
        d_model = model();
        connect(d_model, &QAbstractItemModel::dataChanged, this, [this] { report(); });
    }

    void report() {
        watchModel();
        if (d_reported == currentKey())
            return;
        d_reported = currentKey();
        emitKeyChanged(d_reported);
    }

    QPointer<QAbstractItemModel> d_model;
    Key d_reported{};
};

} // namespace NS_QT
