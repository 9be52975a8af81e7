#include "core_guniquebuf.h"

#include "check_recorder.h"

#include <array>
#include <gmock/gmock.h>
#include <stdexcept>

namespace {

using core::GUniqueBuf;
using test::FailedCheck;
using testing::ElementsAre;

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
    EXPECT_EQ(GUniqueBuf("abc", 0, 0, 0).describe(), "nullptr");
    EXPECT_THAT(shape(GUniqueBuf(nullptr, 3, 4, 0)), ElementsAre(3, 4, 0, 7));

    GUniqueBuf source("abc", 3, 1, 2);
    const std::string description = source.describe();
    GUniqueBuf target(std::move(source));
    EXPECT_EQ(target.describe(), description);
    EXPECT_EQ(source.describe(), "nullptr"); // NOLINT(bugprone-use-after-move,*cplusplus.Move)
    source = GUniqueBuf(5);
    source = std::move(target);
    EXPECT_EQ(source.describe(), description);
    EXPECT_EQ(content(source), "abc");
}

TEST(GUniqueBuf, ReserveGrowsWhatIsMissing) {
    // Headroom and tailroom asked of a buffer that has 4 and 6, and what it has then.
    const std::array<uint32_t, 4> cases[] = {
        {4, 6, 4, 6}, {8, 0, 8, 6}, {8, 9, 8, 9}, {2, 9, 4, 9}};
    for (const auto& [head, tail, newHead, newTail] : cases) {
        GUniqueBuf buffer("abc", 3, 4, 6);
        const std::string before = buffer.describe();
        buffer.reserve(head, tail);
        EXPECT_THAT(shape(buffer), ElementsAre(3, newHead, newTail, newHead + 3 + newTail));
        EXPECT_EQ(content(buffer), "abc");
        EXPECT_EQ(buffer.describe() == before, head <= 4 && tail <= 6);
    }
    GUniqueBuf none;
    none.reserve(0, 4);
    EXPECT_THAT(shape(none), ElementsAre(0, 0, 4, 4));
}

TEST(GUniqueBuf, AdjustMovesTheEndOfTheData) {
    GUniqueBuf buffer("abcde", 5, 1, 0);
    const auto adjusted = [&buffer](int32_t delta) {
        buffer.adjust(delta);
        return shape(buffer);
    };
    EXPECT_THAT(adjusted(-2), ElementsAre(3, 1, 2, 6));
    buffer.zeroFill();
    EXPECT_THAT(adjusted(2), ElementsAre(5, 1, 0, 6));
    EXPECT_EQ(content(buffer), std::string("\0\0\0de", 5));
    EXPECT_THAT(adjusted(1), ElementsAre(6, 1, 0, 7));
}

FailedCheck check(int32_t line, const std::string& message) {
    return {"CHECKF", "core_guniquebuf.cpp", line, 0, message};
}
/// The operation throws `what` whether or not its failed check is reported, and changes nothing.
template <typename Operation>
void expectRefused(GUniqueBuf& buffer, const FailedCheck& failed, const std::string& what,
                   Operation operation) {
    const std::string before = buffer.describe();
    for (const int32_t level : {0, -1}) {
        const test::ScopedAssertionLevel scope(level);
        test::CheckRecorder checks;
        try {
            operation(buffer);
            ADD_FAILURE() << "nothing thrown";
        } catch (const std::exception& exception) {
            EXPECT_EQ(exception.what(), what);
        }
        EXPECT_EQ(checks.take(), level < 0 ? std::vector<FailedCheck>{} : std::vector{failed});
        EXPECT_EQ(buffer.describe(), before);
    }
}

TEST(GUniqueBuf, RefusalsChangeNothing) {
    GUniqueBuf none, some("abc", 3, 0, 0);
    const FailedCheck tooMuch{"CHECKF", "core_guniquebuf_inline.h", 142, 0,
                              "failed mallocing 12884901885 bytes"};
    const std::string noMemory = "std::bad_alloc", adjust = "GUniqueBuf:adjust";
    expectRefused(none, tooMuch, noMemory, [](auto&) { GUniqueBuf(kMax, kMax, kMax); });
    expectRefused(some, check(387, "4294967298"), noMemory, [](auto& b) { b.reserve(0, kMax); });
    expectRefused(none, check(175, "0,-1"), adjust, [](auto& b) { b.adjust(-1); });
    expectRefused(some, check(189, some.describe() + ", delta=0,-4"), adjust,
                  [](auto& b) { b.adjust(-4); });
    expectRefused(some, check(75, "43>=core_3"), "GUniqueBuf:workPtrAt",
                  [](auto& b) { b.template workPtrAt<char>(43); });
}

TEST(GUniqueBuf, WorkPtrAtChecksTheFirstByteOnly) {
    test::CheckRecorder checks;
    GUniqueBuf buffer("abc", 3, 4, 6);
    EXPECT_EQ(buffer.workPtrAt<uint64_t>(2), buffer.data() + 2);
    EXPECT_TRUE(checks.take().empty());
    EXPECT_EQ(buffer.workPtrAt<char>(3), buffer.data() + 3);
    EXPECT_EQ(GUniqueBuf().workPtrAt<char>(0), nullptr);
    EXPECT_THAT(checks.take(),
                ElementsAre(check(75, "3>=core_3"), check(75, "0>=core_0"), check(83, "")));
}

} // namespace
