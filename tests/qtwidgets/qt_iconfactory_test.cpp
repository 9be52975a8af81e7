#include "qt_iconfactory.h"

#include <gmock/gmock.h>

#include <set>

namespace {

constexpr int32_t kHighest = 656;

TEST(QT_IconFactory, NamesEveryTypeButTheGaps) {
    const core::EnumNames& names = QT_IconFactory::typeNames();
    EXPECT_EQ(names.typeName(), "IconType");
    EXPECT_EQ(names.size(), 617U);
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

// The last one before each gap.
TEST(QT_IconFactory, NumbersNeverChange) {
    using F = QT_IconFactory;
    const std::pair<F::IconType, int32_t> rows[] = {{F::CameraError, 200},
                                                    {F::CameraNetworkDown, 207},
                                                    {F::CameraPtzAction, 214},
                                                    {F::CameraPtzNetworkDown, 221},
                                                    {F::IncidentReportOptions, 287},
                                                    {F::LayoutRestore, 425},
                                                    {F::ArrowWest, 503},
                                                    {F::AccessRights, 544},
                                                    {F::PingException, 616},
                                                    {F::Plugin, 640},
                                                    {F::UsbButton, 649},
                                                    {F::VmdRecordingActive, 656}};
    for (const auto& [type, value] : rows)
        EXPECT_EQ(type, value);
    EXPECT_EQ(F::typeNames().nameOf(1), "QT_IconFactory::Tick");
    EXPECT_EQ(F::typeNames().valueOf("QT_IconFactory::VmdRecordingActive"), kHighest);
}

} // namespace
