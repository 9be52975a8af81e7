#include "qt_smartcombobox.h"

#include <QTest>

#include <gmock/gmock.h>

using namespace std::string_literals;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

template <typename Combo, typename Key>
void reportsKeys(const std::vector<Key>& keys) {
    Combo combo;
    std::vector<Key> activated;
    std::vector<Key> current;
    QObject::connect(&combo, &Combo::sigKeyActivated, [&](Key key) { activated.push_back(key); });
    QObject::connect(&combo, &Combo::currentKeyChanged, [&](Key key) { current.push_back(key); });
    combo.slotActivated(3);
    EXPECT_THAT(std::exchange(activated, {}), ElementsAre(Key())) << "nothing is current";

    combo.addItem("b", keys[1]);
    combo.addItem(QIcon(), "c", keys[2]);
    combo.insertItem(0, "a", keys[0]);
    combo.setCurrentKey(keys[2]);
    EXPECT_EQ(combo.currentText(), "c");
    combo.setCurrentKey(Key());
    EXPECT_EQ(combo.currentKey(), keys[2]) << "the same without such a key";
    combo.addItem("without");
    combo.setCurrentKey(Key());
    EXPECT_EQ(combo.currentText(), "without");
    combo.setItemData(3, combo.itemData(2)); // of the current item
    EXPECT_THAT(activated, IsEmpty()) << "nobody chose";

    combo.setCurrentIndex(2);
    QTest::keyClick(&combo, Qt::Key_Up);
    combo.slotActivated(0);
    EXPECT_THAT(activated, ElementsAre(keys[1], keys[1])) << "the current one, whatever the index";
    combo.clear();
    EXPECT_THAT(current, ElementsAre(keys[1], keys[2], Key(), keys[2], keys[1], Key()));
}

TEST(SmartComboBox, ReportsNumbers) { reportsKeys<NS_QT::SmartComboBox, int>({-7, 300, 5}); }

TEST(StringComboBox, ReportsTexts) {
    reportsKeys<NS_QT::StringComboBox, std::string>({"one", "\xFF with NUL \0 inside"s, "three"});
}

TEST(StringComboBox, ConnectsThroughTheQueue) {
    NS_QT::StringComboBox combo;
    combo.addItem("a", "key");
    std::string queued;
    QObject::connect(
        &combo, &NS_QT::StringComboBox::sigKeyActivated, &combo,
        [&queued](const std::string& key) { queued = key; }, Qt::QueuedConnection);
    combo.slotActivated(0);
    QCoreApplication::processEvents();
    EXPECT_EQ(queued, "key");
}

} // namespace
