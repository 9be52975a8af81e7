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
         {std::array{4U, 6U, 4U, 6U}, {8U, 0U, 8U, 6U}, {2U, 9U, 4U, 9U}}) {
        GUniqueBuf buffer("abc", 3, 4, 6);
        buffer.reserve(head, tail);
        EXPECT_THAT(shape(buffer), ElementsAre(3, newHead, newTail, newHead + 3 + newTail));
        EXPECT_EQ(content(buffer), "abc");
    }
}

TEST(GUniqueBuf, AdjustMovesTheEndOfTheData) {
    GUniqueBuf buffer("abcde", 5, 1, 0);
    const auto adjusted = [&buffer](int32_t delta) {
        buffer.adjust(delta);
        return shape(buffer);
    };
    EXPECT_THAT(adjusted(-2), ElementsAre(3, 1, 2, 6));
    buffer.zeroFill();
    EXPECT_THAT(adjusted(3), ElementsAre(6, 1, 0, 7));
    EXPECT_EQ(content(buffer).substr(0, 3), std::string(3, '\0'));
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
    const FailedCheck tooMuch{"CHECKF", "core_guniquebuf_inline.h", 142, 0,
                              "failed mallocing 12884901885 bytes"};
    EXPECT_THAT(checks.take(),
                ElementsAre(tooMuch, check(387, "4294967298"), check(175, "0,-1"),
                            check(189, before + ", delta=0,-4"), check(75, "43>=core_3")));
}

TEST(GUniqueBuf, WorkPtrAtChecksTheFirstByteOnly) {
    test::CheckRecorder checks;
    GUniqueBuf buffer("abc", 3, 4, 6);
    EXPECT_EQ(buffer.workPtrAt<uint64_t>(2), buffer.data() + 2);
    EXPECT_EQ(buffer.workPtrAt<char>(3), buffer.data() + 3);
    EXPECT_EQ(GUniqueBuf().workPtrAt<char>(0), nullptr);
    EXPECT_THAT(checks.take(),
                ElementsAre(check(75, "3>=core_3"), check(75, "0>=core_0"), check(83, "")));
}

} // namespace
