// Enumerations, fixed-point numbers, buffers and lists.

#include "core_deprecated_glist.h"
#include "core_enum.h"
#include "core_fixedpoint.h"
#include "core_guniquebuf.h"
#include "core_varargs.h"
#include "testing_checkrecorder.h"
#include "testing_matchers.h"

#include <array>
#include <gmock/gmock.h>
#include <memory>
#include <stdexcept>

namespace {

using core::EnumNames;
using core::fixedPointText;
using core::GUniqueBuf;
using test::FailedCheck;
using testing::ElementsAre;

TEST(EnumNames, FindsBothWaysOrTheUnknownPairAndReportsDuplicates) {
    test::CheckRecorder checks;
    std::string red = "Red";
    auto first = std::make_unique<EnumNames>("Colour", -1, "None");
    EnumNames names = first->add(red, 1);
    red = "gone";
    names.add("Green", 2).add("Green", 1).add("Green", 3).add("Blue", 2).add("Blue", 3);
    EXPECT_FALSE(first->contains("Green"));
    first.reset();
    EXPECT_EQ(names.size(), 3U);
    EXPECT_EQ(names.nameOf(1), "Red");
    EXPECT_EQ(names.nameOf(2), "Green");
    EXPECT_EQ(names.valueOf("Green"), 2);
    EXPECT_EQ(names.valueOf("Blue"), 3);
    for (const char* missing : {"", "green", "Gree", "None"})
        EXPECT_TRUE(names.valueOf(missing) == -1 && !names.contains(missing)) << missing;
    for (const int32_t missing : {-1, 0, 4})
        EXPECT_TRUE(names.nameOf(missing) == "None" && !names.contains(missing)) << missing;
    const auto duplicate = [](const char* name) {
        return testing::FieldsAre("CHECKF", "core_enum.cpp", testing::_, 0,
                                  core::format("(Colour) - duplicate entry '%s'", name));
    };
    EXPECT_THAT(checks.take(),
                ElementsAre(duplicate("Green"), duplicate("Green"), duplicate("Blue")));
}

TEST(FixedPoint, Text) {
    EXPECT_EQ(fixedPointText(INT64_MIN, 0), "-9223372036854775808");
    EXPECT_EQ(fixedPointText(-50, 3), "-0.050");
    EXPECT_EQ(fixedPointText(INT64_MIN, 19), "-0.9223372036854775808");
    // From here on the power of ten has lost its upper digits.
    EXPECT_EQ(fixedPointText(INT64_MAX, 20), "1.01457092405402533887");
    EXPECT_EQ(fixedPointText(INT64_MIN, 64), "-0." + std::string(45, '0') + "9223372036854775808");

    EXPECT_THAT([] { EXPECT_EQ(fixedPointText(12345, 65), "0.0"); },
                test::FailsCheck({"core_fixedpoint.cpp", 28}, ""));
}

constexpr uint32_t kMax = UINT32_MAX;

/// Size, headroom, tailroom and capacity.
std::array<uint32_t, 4> shape(const GUniqueBuf& buffer) {
    return {buffer.size(), buffer.headroom(), buffer.tailroom(), buffer.capacity()};
}

std::string content(const GUniqueBuf& buffer) {
    return {reinterpret_cast<const char*>(buffer.data()), buffer.size()};
}

TEST(GUniqueBuf, DescribesItsBlockAndMovesIt) {
    const auto address = [](const void* p) { return testing::PrintToString(p); };
    const GUniqueBuf full(10), roomy(10, 4, 6);
    const std::string block = address(roomy.data() - 4);
    EXPECT_EQ(full.describe(), address(full.data()) + ":10");
    EXPECT_EQ(roomy.describe(), address(roomy.data()) + ":10 (" + block + ":4+10+6)");
    EXPECT_THAT(shape(GUniqueBuf(nullptr, 3, 4, 0)), ElementsAre(3, 4, 0, 7));

    GUniqueBuf source("abc", 3, 1, 2);
    const std::string description = source.describe();
    GUniqueBuf target(std::move(source));
    EXPECT_EQ(target.describe(), description);
    EXPECT_EQ(source.describe(), "nullptr"); // NOLINT(bugprone-use-after-move,*cplusplus.Move)
    source = std::move(target);
    EXPECT_EQ(source.describe(), description);
    EXPECT_EQ(content(source), "abc");
}

TEST(GUniqueBuf, ReserveGrowsWhatIsMissing) {
    // Headroom and tailroom asked of a buffer that has 4 and 6, and what it has then.
    for (const auto& [head, tail, newHead, newTail] :
         {std::array{4U, 6U, 4U, 6U}, {8U, 0U, 8U, 6U}, {2U, 9U, 4U, 9U}, {8U, 9U, 8U, 9U}}) {
        GUniqueBuf buffer("abc", 3, 4, 6);
        buffer.reserve(head, tail);
        EXPECT_THAT(shape(buffer), ElementsAre(3, newHead, newTail, newHead + 3 + newTail));
        EXPECT_EQ(content(buffer), "abc");
    }
}

TEST(GUniqueBuf, AdjustMovesTheEndOfTheData) {
    const auto adjusted = [](GUniqueBuf& buffer, int32_t delta) {
        buffer.adjust(delta);
        return shape(buffer);
    };
    GUniqueBuf buffer("abcde", 5, 1, 0);
    EXPECT_THAT(adjusted(buffer, -2), ElementsAre(3, 1, 2, 6));
    buffer.zeroFill();
    EXPECT_THAT(adjusted(buffer, 3), ElementsAre(6, 1, 0, 7));
    EXPECT_EQ(content(buffer).substr(0, 3), std::string(3, '\0'));
    EXPECT_THAT(adjusted(buffer, -6), ElementsAre(0, 1, 6, 7));
    GUniqueBuf empty;
    EXPECT_THAT(adjusted(empty, 4), ElementsAre(4, 0, 0, 4));
    EXPECT_THAT(adjusted(empty, 1), ElementsAre(5, 0, 0, 5));
}

FailedCheck check(int32_t line, const std::string& message) {
    return {"CHECKF", "core_guniquebuf.cpp", line, 0, message};
}
auto outOfRange(const char* what) { return testing::ThrowsMessage<std::out_of_range>(what); }

TEST(GUniqueBuf, RefusalsChangeNothing) {
    GUniqueBuf none, some("abc", 3, 0, 0);
    const std::string before = some.describe();
    test::CheckRecorder checks;
    for (const int32_t level : {-1, 0}) { // thrown, whether or not it is reported
        const test::ScopedAssertionLevel scope(level);
        EXPECT_THROW(GUniqueBuf(kMax, kMax, kMax), std::bad_alloc);
        EXPECT_THROW(some.reserve(0, kMax), std::bad_alloc);
        EXPECT_THAT([&] { none.adjust(-1); }, outOfRange("GUniqueBuf:adjust"));
        EXPECT_THAT([&] { some.adjust(-4); }, outOfRange("GUniqueBuf:adjust"));
        EXPECT_THAT([&] { some.workPtrAt<char>(43); }, outOfRange("GUniqueBuf:workPtrAt"));
    }
    EXPECT_EQ(some.describe(), before);
    EXPECT_EQ(none.describe(), "nullptr");
    // Of what is asked for, the first byte must be there, or the end.
    EXPECT_EQ(some.workPtrAt<uint64_t>(2), some.data() + 2);
    EXPECT_EQ(some.workPtrAt<char>(3), some.data() + 3);
    EXPECT_EQ(none.workPtrAt<char>(0), nullptr);
    const FailedCheck tooMuch{"CHECKF", "core_guniquebuf_inline.h", 142, 0,
                              "failed mallocing 12884901885 bytes"};
    EXPECT_THAT(checks.take(),
                ElementsAre(tooMuch, check(387, "4294967298"), check(175, "0,-1"),
                            check(189, before + ", delta=0,-4"), check(75, "43>=core_3"),
                            check(75, "3>=core_3"), check(75, "0>=core_0"), check(83, "")));
}

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

TEST(GList, ReportsBrokenLinksAndFreesWhatItOwns) {
    const Item counted = std::make_shared<int>();
    Item refused = counted;
    test::CheckRecorder checks;
    {
        List owner;
        owner.setOwnsItems(true);
        for (int i = 0; i < 3; ++i)
            owner.append(new Item(counted));
        owner.remove(owner.first());
        EXPECT_EQ(counted.use_count(), 4);
        auto* const tail = std::exchange(owner.tail(), nullptr);
        EXPECT_THAT(owner.items(), testing::SizeIs(1)) << "all but the last";
        EXPECT_FALSE(owner.append(&refused)) << "which stays the caller's";
        owner.tail() = owner.secondsLinkBack() = tail;
        EXPECT_THAT(owner.items(), testing::IsEmpty());
    }
    EXPECT_EQ(counted.use_count(), 2);
    EXPECT_THAT(
        checks.takeSites(),
        testing::AllOf(testing::SizeIs(3), testing::Each("CHECKF core_deprecated_glist.cpp")));
}

} // namespace
