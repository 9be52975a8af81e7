#include "core_enum.h"

#include "check_recorder.h"

#include <gmock/gmock.h>

namespace {

using core::EnumNames;
using testing::ElementsAre;

TEST(EnumNames, FindsBothWaysOrTheUnknownPair) {
    const EnumNames names = EnumNames("Colour", -1, "None").add("Red", 1).add("Green", 2);
    EXPECT_EQ(names.valueOf("Green"), 2);
    EXPECT_EQ(names.nameOf(1), "Red");
    for (const char* missing : {"", "green", "Gree", "None"})
        EXPECT_TRUE(names.valueOf(missing) == -1 && !names.contains(missing)) << missing;
    for (const int32_t missing : {-1, 0, 3})
        EXPECT_TRUE(names.nameOf(missing) == "None" && !names.contains(missing)) << missing;
}

TEST(EnumNames, DuplicatesAreReportedAndDropped) {
    test::CheckRecorder checks;
    EnumNames names("IconType", 0, "Unknown");
    names.add("A", 1).add("B", 1).add("A", 2).add("C", 2).add("B", 3);
    std::vector<std::string> messages;
    for (const test::FailedCheck& check : checks.take())
        messages.push_back(check.condition + ' ' + check.file + ' ' + check.message);
    const std::string start = "CHECKF core_enum.cpp (IconType) - duplicate entry ";
    EXPECT_THAT(messages, ElementsAre(start + "'B'", start + "'A'"));
    EXPECT_EQ(names.size(), 3U);
    EXPECT_EQ(names.nameOf(1), "A");
    EXPECT_EQ(names.valueOf("C"), 2);
    EXPECT_EQ(names.valueOf("B"), 3);
}

TEST(EnumNames, CopiesAreIndependentAndOutliveTheirOrigin) {
    std::string blue = "Blue";
    auto first = std::make_unique<EnumNames>("Colour", -1, "None");
    EnumNames second = first->add(blue, 3);
    blue = "gone";
    second.reserve(100).add("Grey", 4);
    EXPECT_FALSE(first->contains("Grey"));
    first.reset();
    EXPECT_EQ(second.nameOf(3), "Blue");
    EXPECT_EQ(second.nameOf(4), "Grey");
}

} // namespace
