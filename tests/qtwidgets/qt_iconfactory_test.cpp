#include "qt_iconfactory.h"

#include <gtest/gtest.h>

#include <set>

namespace {

TEST(QT_IconFactory, NumbersEveryTypeAndKeepsTheGaps) {
    using F = QT_IconFactory;
    constexpr int32_t kHighest = 656;
    const core::EnumNames& names = F::typeNames();
    EXPECT_EQ(names.typeName(), "IconType");
    std::set<int32_t> gaps{0, 201, 208, 215, 222, 617, 618, 641, 650, 651, kHighest + 1};
    for (const auto& [first, last] : {std::pair{288, 296}, {426, 428}, {504, 517}, {545, 548}}) {
        for (int32_t value = first; value <= last; ++value)
            gaps.insert(value);
    }
    for (int32_t value = 0; value <= kHighest + 1; ++value) {
        const std::string_view name = names.nameOf(value);
        EXPECT_EQ(name == "Unknown", gaps.contains(value)) << value;
        EXPECT_EQ(names.valueOf(name), gaps.contains(value) ? 0 : value);
    }
    EXPECT_EQ(names.valueOf("QT_IconFactory::VmdRecordingActive"), kHighest);
    EXPECT_EQ((std::vector<int32_t>{F::CameraError, F::IncidentReportOptions, F::ArrowWest}),
              (std::vector<int32_t>{200, 287, 503}));
}

} // namespace
