#include "core_deprecated_glist.h"

#include "check_recorder.h"

#include <gmock/gmock.h>
#include <memory>

namespace {

using testing::ElementsAre;

/// An item whose copies can be counted.
using Item = std::shared_ptr<int>;

/// A list whose links a test can break.
struct List : core::GList<Item> {
    Node*& tail() { return d_tail; }
    Node*& secondsLinkBack() { return d_head->next->previous; }

    std::vector<Item*> items() {
        std::vector<Item*> all;
        for (Item* item = first(); item != nullptr; item = next())
            all.push_back(item);
        return all;
    }
};

const std::string kCheck = "CHECKF core_deprecated_glist.cpp";

TEST(GList, KeepsOrderAndIterationThroughEveryRemoval) {
    Item a, b, c, d;
    List list;
    for (Item* item : {&a, &b, &c, &d})
        EXPECT_TRUE(list.append(item));
    EXPECT_EQ(list.first(), &a);
    EXPECT_TRUE(list.remove(&a)); // the first and current
    EXPECT_TRUE(list.remove(&b)); // the next
    EXPECT_FALSE(list.remove(&b));
    EXPECT_EQ(list.next(), &c);
    EXPECT_TRUE(list.remove(&d)); // the last
    EXPECT_EQ(list.next(), nullptr);
    EXPECT_TRUE(list.append(&b) && list.append(&a) && list.remove(&b)); // in the middle
    EXPECT_THAT(list.items(), ElementsAre(&c, &a));
    EXPECT_EQ(list.count(), 2U);
}

TEST(GList, AppendWithoutTailLeavesTheItemToTheCaller) {
    const Item counted = std::make_shared<int>();
    Item refused = counted;
    {
        List owner;
        owner.setOwnsItems(true);
        auto* const removed = new Item(counted);
        owner.append(removed);
        owner.append(new Item(counted));
        owner.remove(removed);
        EXPECT_EQ(counted.use_count(), 3);
        owner.tail() = nullptr;
        test::CheckRecorder checks;
        EXPECT_FALSE(owner.append(&refused));
        EXPECT_THAT(checks.takeSites(), ElementsAre(kCheck));
    }
    EXPECT_EQ(counted.use_count(), 2) << "a list without tail frees what it has, and only that";
}

TEST(GList, IterationEndsWhereLinksContradict) {
    Item a, b;
    List list;
    list.append(&a);
    list.append(&b);
    test::CheckRecorder checks;
    auto* const tail = std::exchange(list.tail(), nullptr);
    EXPECT_THAT(list.items(), ElementsAre(&a));
    EXPECT_THAT(checks.takeSites(), ElementsAre(kCheck));
    list.tail() = tail;
    auto* const head = std::exchange(list.secondsLinkBack(), tail);
    EXPECT_THAT(list.items(), ElementsAre());
    EXPECT_THAT(checks.takeSites(), ElementsAre(kCheck));
    list.secondsLinkBack() = head;
}

} // namespace
