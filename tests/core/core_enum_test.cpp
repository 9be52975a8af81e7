#include "core_enum.h"

#include "check_recorder.h"

#include <gmock/gmock.h>

namespace {

using core::EnumNames;
using testing::ElementsAre;

EnumNames colours() { return EnumNames("Colour", -1, "None").add("Red", 1).add("Green", 2); }

TEST(EnumNames, FindsBothWaysOrTheUnknownPair) {
    const EnumNames names = colours();
    EXPECT_EQ(names.valueOf("Green"), 2);
    EXPECT_EQ(names.nameOf(1), "Red");
    for (const char* missing : {"", "green", "Gree", "None"}) {
        EXPECT_EQ(names.valueOf(missing), -1) << missing;
        EXPECT_FALSE(names.contains(missing)) << missing;
    }
    for (const int32_t missing : {-1, 0, 3}) {
        EXPECT_EQ(names.nameOf(missing), "None") << missing;
        EXPECT_FALSE(names.contains(missing)) << missing;
    }
    EXPECT_EQ(names.size(), 2U);
}

TEST(EnumNames, DuplicatesAreReportedAndDropped) {
    test::CheckRecorder checks;
    EnumNames names("IconType", 0, "Unknown");
    names.add("A", 1).add("B", 1).add("A", 2).add("A", 1).add("C", 2).add("B", 3);
    const auto failed = checks.take();
    std::vector<std::string> messages;
    for (const test::FailedCheck& check : failed) {
        EXPECT_EQ(check,
                  (test::FailedCheck{"CHECKF", "core_enum.cpp", check.line, 0, check.message}));
        messages.push_back(check.message);
    }
    EXPECT_THAT(messages,
                ElementsAre("(IconType) - duplicate entry 'B'", "(IconType) - duplicate entry 'A'",
                            "(IconType) - duplicate entry 'A'"));
    EXPECT_EQ(names.size(), 3U);
    EXPECT_EQ(names.valueOf("A"), 1);
    EXPECT_EQ(names.nameOf(1), "A");
    EXPECT_EQ(names.nameOf(2), "C");
    EXPECT_EQ(names.valueOf("B"), 3);
}

TEST(EnumNames, CopiesAreIndependentAndOutliveTheirOrigin) {
    auto first = std::make_unique<EnumNames>(colours());
    EnumNames second = *first;
    std::string blue = "Blue";
    first->add(blue, 3);
    second.reserve(100).add("Grey", 3);
    blue = "gone";
    EXPECT_EQ(first->nameOf(3), "Blue");
    first = std::make_unique<EnumNames>(second);
    EXPECT_EQ(first->nameOf(3), "Grey");
    second = EnumNames("Other", 0, "Unknown");
    EXPECT_EQ(second.size(), 0U);
    EXPECT_EQ(second.typeName(), "Other");
    EXPECT_EQ(first->valueOf("Red"), 1);
}

} // namespace
