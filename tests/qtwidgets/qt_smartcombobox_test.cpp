#include "qt_smartcombobox.h"

#include <QCoreApplication>

#include <gmock/gmock.h>

using namespace std::string_literals;

namespace {

using testing::ElementsAre;

// What docs/toolkit.md does not show.
template <typename Combo, typename Key>
void tellsOfItsKeys(const std::vector<Key>& keys) {
    Combo combo;
    std::vector<Key> activated, current;
    QObject::connect(&combo, &Combo::sigKeyActivated, [&](Key key) { activated.push_back(key); });
    QObject::connect(
        &combo, &Combo::sigKeyActivated, &combo, [&](Key key) { activated.push_back(key); },
        Qt::QueuedConnection);
    QObject::connect(&combo, &Combo::currentKeyChanged, [&](Key key) { current.push_back(key); });
    combo.slotActivated(3); // while nothing is current
    combo.addItem("a", keys[0]);
    combo.addItem(QIcon(), "b", keys[1]);
    combo.slotActivated(1); // which is not the current one
    QCoreApplication::processEvents();
    EXPECT_THAT(activated, ElementsAre(Key(), keys[0], Key(), keys[0]));
    combo.setCurrentKey(keys[1]);
    combo.setItemData(0, combo.itemData(1));
    combo.setItemData(1, {});
    combo.setCurrentKey(keys[1]);
    combo.clear();
    EXPECT_THAT(current, ElementsAre(keys[0], keys[1], Key(), keys[1], Key()));
}

TEST(SmartComboBox, TellsOfItsKeys) { tellsOfItsKeys<NS_QT::SmartComboBox, int>({-7, 300}); }

TEST(StringComboBox, TellsOfItsKeys) {
    tellsOfItsKeys<NS_QT::StringComboBox, std::string>({"one", "\xFF with NUL \0 inside"s});
}

} // namespace
