#include "qt_iconfactory.h"

#include <gmock/gmock.h>

#include <set>

namespace {

constexpr int32_t kHighest = 656;

TEST(QT_IconFactory, NamesEveryTypeButTheGaps) {
    const core::EnumNames& names = QT_IconFactory::typeNames();
    EXPECT_EQ(names.typeName(), "IconType");
    std::set<int32_t> gaps;
    for (int32_t value = 0; value <= kHighest + 1; ++value) {
        const std::string_view name = names.nameOf(value);
        if (name == "Unknown")
            gaps.insert(value);
        else
            EXPECT_EQ(names.valueOf(name), value);
    }
    std::set<int32_t> expected{0, 201, 208, 215, 222, 617, 618, 641, 650, 651, kHighest + 1};
    for (const auto& [first, last] : {std::pair{288, 296}, {426, 428}, {504, 517}, {545, 548}}) {
        for (int32_t value = first; value <= last; ++value)
            expected.insert(value);
    }
    EXPECT_EQ(gaps, expected);
    EXPECT_EQ(names.valueOf("Unknown"), 0);
    EXPECT_EQ(names.valueOf("Tick"), 0) << "without the class";
}

TEST(QT_IconFactory, NumbersNeverChange) {
    using F = QT_IconFactory;
    EXPECT_EQ(F::CameraError, 200);
    EXPECT_EQ(F::IncidentReportOptions, 287);
    EXPECT_EQ(F::ArrowWest, 503);
    EXPECT_EQ(F::VmdRecordingActive, kHighest);
    EXPECT_EQ(F::typeNames().nameOf(1), "QT_IconFactory::Tick");
    EXPECT_EQ(F::typeNames().valueOf("QT_IconFactory::VmdRecordingActive"), kHighest);
}

} // namespace
