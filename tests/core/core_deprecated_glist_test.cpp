#include "core_deprecated_glist.h"

#include "check_recorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;

/// Counts the items that are alive.
struct Item {
    explicit Item(int v = 0) : value(v) { ++alive; }
    ~Item() { --alive; }
    Item(const Item&) = delete;
    Item& operator=(const Item&) = delete;

    int value;
    static inline int alive = 0;
};

/// A list whose links a test can break.
struct List : core::GList<Item> {
    Node*& tail() { return d_tail; }
    Node*& secondsLinkBack() { return d_head->next->previous; }

    std::vector<int> values() {
        std::vector<int> all;
        for (const Item* item = first(); item != nullptr; item = next())
            all.push_back(item->value);
        return all;
    }
};

void expectOneCheck(test::CheckRecorder& checks) {
    std::vector<test::FailedCheck> failed = checks.take();
    ASSERT_EQ(failed.size(), 1U);
    failed[0].line = 0;
    EXPECT_EQ(failed[0], (test::FailedCheck{"CHECKF", "core_deprecated_glist.cpp", 0, 0, ""}));
}

TEST(GList, KeepsTheOrderThroughEveryRemoval) {
    Item a(1), b(2), c(3);
    List list;
    EXPECT_EQ(list.first(), nullptr);
    for (Item* item : {&a, &b, &c})
        EXPECT_TRUE(list.append(item));
    EXPECT_THAT(list.values(), ElementsAre(1, 2, 3));
    EXPECT_TRUE(list.remove(&b)); // in the middle
    EXPECT_FALSE(list.remove(&b));
    EXPECT_TRUE(list.remove(&c)); // at the end
    EXPECT_TRUE(list.append(&b));
    EXPECT_TRUE(list.remove(&a)); // at the start
    EXPECT_EQ(list.count(), 1U);
    EXPECT_THAT(list.values(), ElementsAre(2));
    list.clear();
    EXPECT_TRUE(list.empty());
    EXPECT_TRUE(list.append(&c));
    EXPECT_THAT(list.values(), ElementsAre(3));
}

TEST(GList, RemovalDoesNotDisturbTheIteration) {
    Item a(1), b(2), c(3);
    List list;
    for (Item* item : {&a, &b, &c})
        list.append(item);
    EXPECT_EQ(list.first(), &a);
    EXPECT_TRUE(list.remove(&a)); // the current one
    EXPECT_TRUE(list.remove(&b)); // the next one
    EXPECT_EQ(list.next(), &c);
    EXPECT_EQ(list.next(), nullptr);
    EXPECT_EQ(list.next(), nullptr);
}

TEST(GList, OwnsItsItemsOnlyWhenTold) {
    Item borrowed;
    List().append(&borrowed);
    {
        List list;
        list.setOwnsItems(true);
        auto* const removed = new Item;
        list.append(removed);
        list.append(new Item);
        list.remove(removed);
        EXPECT_EQ(Item::alive, 2);
    }
    EXPECT_EQ(Item::alive, 1);
}

TEST(GList, AppendWithoutTailLeavesTheItemToTheCaller) {
    Item refused;
    {
        List list;
        list.setOwnsItems(true);
        list.append(new Item);
        list.tail() = nullptr;
        test::CheckRecorder checks;
        EXPECT_FALSE(list.append(&refused));
        expectOneCheck(checks);
        EXPECT_EQ(list.count(), 1U);
    }
    EXPECT_EQ(Item::alive, 1) << "a list without tail frees what it has, and only that";
}

TEST(GList, IterationEndsWhereLinksContradict) {
    Item a(1), b(2);
    List list;
    list.append(&a);
    list.append(&b);
    test::CheckRecorder checks;
    auto* const tail = std::exchange(list.tail(), nullptr);
    EXPECT_THAT(list.values(), ElementsAre(1));
    expectOneCheck(checks);
    EXPECT_EQ(list.next(), nullptr);

    list.tail() = tail;
    auto* const head = std::exchange(list.secondsLinkBack(), tail);
    EXPECT_THAT(list.values(), ElementsAre());
    expectOneCheck(checks);
    list.secondsLinkBack() = head;
    EXPECT_THAT(list.values(), ElementsAre(1, 2));
}

} // namespace
