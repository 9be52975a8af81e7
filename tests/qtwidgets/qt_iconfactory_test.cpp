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
    std::set<int32_t> expected{0, kHighest + 1};
    using Run = std::pair<int32_t, int32_t>;
    for (const auto& [first, last] : {Run{201, 201},
                                      {208, 208},
                                      {215, 215},
                                      {222, 222},
                                      {288, 296},
                                      {426, 428},
                                      {504, 517},
                                      {545, 548},
                                      {617, 618},
                                      {641, 641},
                                      {650, 651}}) {
        for (int32_t value = first; value <= last; ++value)
            expected.insert(value);
    }
    EXPECT_EQ(gaps, expected);
    EXPECT_EQ(names.valueOf("Unknown"), 0);
    EXPECT_EQ(names.valueOf("Tick"), 0) << "without the class";
}

// One name of each stretch between gaps.
TEST(QT_IconFactory, NumbersNeverChange) {
    using F = QT_IconFactory;
    const struct {
        F::IconType type;
        int32_t value;
        std::string_view name;
    } rows[] = {
        {F::Tick, 1, "QT_IconFactory::Tick"},
        {F::CameraError, 200, "QT_IconFactory::CameraError"},
        {F::CameraNetworkDown, 207, "QT_IconFactory::CameraNetworkDown"},
        {F::CameraPtzAction, 214, "QT_IconFactory::CameraPtzAction"},
        {F::CameraPtzNetworkDown, 221, "QT_IconFactory::CameraPtzNetworkDown"},
        {F::IncidentReportOptions, 287, "QT_IconFactory::IncidentReportOptions"},
        {F::LayoutRestore, 425, "QT_IconFactory::LayoutRestore"},
        {F::ArrowWest, 503, "QT_IconFactory::ArrowWest"},
        {F::AccessRights, 544, "QT_IconFactory::AccessRights"},
        {F::PingException, 616, "QT_IconFactory::PingException"},
        {F::Plugin, 640, "QT_IconFactory::Plugin"},
        {F::UsbButton, 649, "QT_IconFactory::UsbButton"},
        {F::VmdRecordingActive, 656, "QT_IconFactory::VmdRecordingActive"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.type, row.value) << row.name;
        EXPECT_EQ(QT_IconFactory::typeNames().nameOf(row.value), row.name);
    }
}

} // namespace
