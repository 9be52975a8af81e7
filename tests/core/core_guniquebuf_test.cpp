#include "core_guniquebuf.h"

#include "check_recorder.h"

#include <array>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

using core::GUniqueBuf;
using test::FailedCheck;
using testing::ElementsAre;

constexpr uint32_t kMax = std::numeric_limits<uint32_t>::max();

FailedCheck check(int32_t line, const std::string& message) {
    return {"CHECKF", "core_guniquebuf.cpp", line, 0, message};
}
FailedCheck mallocCheck(const std::string& bytes) {
    return {"CHECKF", "core_guniquebuf_inline.h", 142, 0, "failed mallocing " + bytes + " bytes"};
}

/// Size, headroom, tailroom and capacity.
std::array<uint32_t, 4> shape(const GUniqueBuf& buffer) {
    return {buffer.size(), buffer.headroom(), buffer.tailroom(), buffer.capacity()};
}

std::string content(const GUniqueBuf& buffer) {
    return {reinterpret_cast<const char*>(buffer.data()), buffer.size()};
}

TEST(GUniqueBuf, AllocatesAndDescribesWhatItIsAskedFor) {
    EXPECT_EQ(GUniqueBuf(0, 0, 0).describe(), "nullptr");
    EXPECT_EQ(GUniqueBuf("abc", 0, 0, 0).data(), nullptr);
    EXPECT_THAT(shape(GUniqueBuf(nullptr, 3, 4, 0)), ElementsAre(3, 4, 0, 7));
    EXPECT_EQ(content(GUniqueBuf("abc", 3, 2, 1)), "abc");

    const GUniqueBuf full(10), tailed(10, 0, 6), roomy(10, 4, 6);
    EXPECT_THAT(shape(roomy), ElementsAre(10, 4, 6, 20));
    const auto address = [](const void* p) { return testing::PrintToString(p); };
    EXPECT_EQ(full.describe(), address(full.data()) + ":10");
    EXPECT_EQ(tailed.describe(),
              address(tailed.data()) + ":10 (" + address(tailed.data()) + ":0+10+6)");
    EXPECT_EQ(roomy.describe(),
              address(roomy.data()) + ":10 (" + address(roomy.data() - 4) + ":4+10+6)");
}

TEST(GUniqueBuf, MovingTransfersTheBlock) {
    GUniqueBuf source("abc", 3, 1, 2);
    const std::string description = source.describe();
    GUniqueBuf target(std::move(source));
    EXPECT_EQ(target.describe(), description);
    EXPECT_EQ(source.describe(), "nullptr"); // NOLINT(bugprone-use-after-move,*cplusplus.Move)

    source = GUniqueBuf(5);
    source = std::move(target);
    GUniqueBuf& self = source;
    source = std::move(self);
    EXPECT_EQ(source.describe(), description);
}

TEST(GUniqueBuf, ReserveGrowsWhatIsMissing) {
    // Headroom and tailroom asked of a buffer that has 4 and 6, and what it has then.
    const std::array<uint32_t, 4> cases[] = {
        {0, 0, 4, 6}, {4, 6, 4, 6}, {8, 0, 8, 6}, {8, 9, 8, 9}, {2, 9, 4, 9},
    };
    for (const auto& [head, tail, newHead, newTail] : cases) {
        GUniqueBuf buffer("abc", 3, 4, 6);
        const std::string before = buffer.describe();
        buffer.reserve(head, tail);
        EXPECT_THAT(shape(buffer), ElementsAre(3, newHead, newTail, newHead + 3 + newTail));
        EXPECT_EQ(content(buffer), "abc");
        EXPECT_EQ(buffer.describe() == before, head <= 4 && tail <= 6);
    }
    GUniqueBuf none;
    none.reserve(0, 0);
    EXPECT_EQ(none.describe(), "nullptr");
    none.reserve(0, 4);
    EXPECT_THAT(shape(none), ElementsAre(0, 0, 4, 4));
    none.reserve(3, 0);
    EXPECT_THAT(shape(none), ElementsAre(0, 3, 4, 7));
}

TEST(GUniqueBuf, AdjustMovesTheEndOfTheData) {
    GUniqueBuf buffer;
    buffer.adjust(0);
    EXPECT_EQ(buffer.describe(), "nullptr");
    buffer.adjust(5);
    EXPECT_THAT(shape(buffer), ElementsAre(5, 0, 0, 5));

    buffer = GUniqueBuf("abcde", 5, 1, 0);
    buffer.adjust(-2);
    EXPECT_THAT(shape(buffer), ElementsAre(3, 1, 2, 6));
    buffer.zeroFill();
    buffer.adjust(2);
    EXPECT_EQ(content(buffer), std::string("\0\0\0de", 5));
    buffer.adjust(1);
    EXPECT_THAT(shape(buffer), ElementsAre(6, 1, 0, 7));
    buffer.adjust(-6);
    EXPECT_THAT(shape(buffer), ElementsAre(0, 1, 6, 7));
}

// clang-format off
TEST(GUniqueBuf, RefusalsChangeNothing) {
    const struct {
        int line;
        uint32_t size; // 0: without a block
        std::function<void(GUniqueBuf&)> operation;
        FailedCheck failed;
        std::string what;
    } cases[] = {
        {__LINE__, 0, [](auto&) { GUniqueBuf(kMax, kMax, kMax); }, mallocCheck("12884901885"), "std::bad_alloc"},
        {__LINE__, 0, [](auto&) { GUniqueBuf("a", 1, kMax, 0); }, mallocCheck("4294967296"), "std::bad_alloc"},
        {__LINE__, 3, [](auto& b) { b.reserve(kMax, 0); }, mallocCheck("4294967298"), "std::bad_alloc"},
        {__LINE__, 3, [](auto& b) { b.reserve(0, kMax); }, check(387, "4294967298"), "std::bad_alloc"},
        {__LINE__, 0, [](auto& b) { b.adjust(-1); }, check(175, "0,-1"), "GUniqueBuf:adjust"},
        {__LINE__, 3, [](auto& b) { b.adjust(-4); }, check(189, "BUFFER, delta=0,-4"), "GUniqueBuf:adjust"},
        {__LINE__, 3, [](auto& b) { b.template workPtrAt<char>(43); }, check(75, "43>=core_3"), "GUniqueBuf:workPtrAt"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE("row at line " + std::to_string(c.line));
        GUniqueBuf buffer("abc", c.size, 0, 0);
        const std::string before = buffer.describe();
        FailedCheck failed = c.failed;
        if (const size_t at = failed.message.find("BUFFER"); at != std::string::npos)
            failed.message.replace(at, 6, before);
        for (const int32_t level : {0, -1}) {
            const test::ScopedAssertionLevel scope(level);
            test::CheckRecorder checks;
            try {
                c.operation(buffer);
                ADD_FAILURE() << "nothing thrown";
            } catch (const std::exception& exception) {
                EXPECT_EQ(exception.what(), c.what);
            }
            EXPECT_EQ(checks.take(), level < 0 ? std::vector<FailedCheck>{} : std::vector{failed});
            EXPECT_EQ(buffer.describe(), before);
        }
    }
}
// clang-format on

TEST(GUniqueBuf, WorkPtrAtChecksTheFirstByteOnly) {
    test::CheckRecorder checks;
    GUniqueBuf buffer("abc", 3, 4, 6);
    EXPECT_EQ(buffer.workPtrAt<uint64_t>(2), buffer.data() + 2);
    EXPECT_THAT(checks.take(), testing::IsEmpty());
    EXPECT_EQ(buffer.workPtrAt<char>(3), buffer.data() + 3);
    EXPECT_THAT(checks.take(), ElementsAre(check(75, "3>=core_3")));
    EXPECT_EQ(GUniqueBuf().workPtrAt<char>(0), nullptr);
    EXPECT_THAT(checks.take(), ElementsAre(check(75, "0>=core_0"), check(83, "")));
}

} // namespace
