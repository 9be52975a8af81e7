#include "qt_fractionspinbox.h"

#include "play.h"
#include "testing_checkrecorder.h"
#include "testing_logrecorder.h"

#include <gmock/gmock.h>
#include <limits>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kLowest = std::numeric_limits<int>::min();
constexpr int kHighest = std::numeric_limits<int>::max();

struct TestedBox : NS_QT::FractionSpinBox {
    using FractionSpinBox::valueFromText;
};

TEST(FractionSpinBox, JudgesWhatIsTyped) {
    constexpr auto kInvalid = QValidator::Invalid;
    constexpr auto kPartial = QValidator::Intermediate;
    constexpr auto kGood = QValidator::Acceptable;
    const struct {
        const char *suffix, *text;
        QValidator::State state;
    } rows[] = {
        {"", "-0.5", kGood},      {"", "+.5", kGood},           {"", "3.", kPartial},
        {"", "+.", kPartial},     {"", "", kPartial},           {"", "-", kInvalid},
        {"", "1.2.3", kInvalid},  {"", " 1", kInvalid},         {"", "1 km", kInvalid},
        {" km", "2.5 km", kGood}, {" km", "2.5", kGood},        {" km", " km", kPartial},
        {" km", "2 k", kInvalid}, {" km", "2 km km", kInvalid},
    };
    for (const auto& row : rows) {
        NS_QT::FractionSpinBox box;
        box.setSuffix(row.suffix);
        QString text = row.text;
        int position = 0;
        EXPECT_EQ(box.validate(text, position), row.state) << row.text << " with" << row.suffix;
        EXPECT_EQ(text, row.text);
    }
}

TEST(FractionSpinBox, TakesTheNearestAllowedValueWithinTheRange) {
    const std::set<int32_t> few{10, 20, 40};
    const struct {
        std::set<int32_t> allowed;
        int minimum, maximum, given, taken;
    } rows[] = {
        {few, 0, 99, 15, 10}, {few, 0, 99, 16, 20},
        {few, 0, 99, 30, 20}, {few, 0, 99, 20, 20},
        {few, 0, 99, 5, 10},  {few, 0, 99, 50, 40},
        {few, 0, 39, 39, 20}, {few, 0, 40, 39, 40},
        {few, 20, 99, 5, 20}, {{kLowest, kHighest}, kLowest, kHighest, 0, kHighest},
    };
    test::CheckRecorder checks;
    for (const auto& row : rows) {
        SCOPED_TRACE("row " + std::to_string(&row - rows));
        NS_QT::FractionSpinBox box;
        box.setRange(row.minimum, row.maximum);
        box.setValue(row.given);
        box.setAllowed(row.allowed);
        EXPECT_EQ(box.value(), row.taken) << "which it had before";
        box.setProperty("value", row.given);
        EXPECT_EQ(box.value(), row.taken);
    }
    NS_QT::FractionSpinBox box;
    box.setAllowed(few);
    box.setValue(40);
    box.setMaximum(39);
    EXPECT_EQ(box.value(), 20);
    EXPECT_THAT(checks.takeSites(), IsEmpty());
    box.setMinimum(30);
    box.setAllowed({1});
    EXPECT_THAT(checks.takeSites(),
                ElementsAre("CHECKF qt_fractionspinbox.cpp", "CHECKF qt_fractionspinbox.cpp"));
    box.setValue(37);
    EXPECT_EQ(box.value(), 37) << "every value while there is none in common";
}

TEST(FractionSpinBox, StepsThroughTheAllowedValues) {
    NS_QT::FractionSpinBox box;
    box.setAllowed({10, 20, 40, 80});
    const struct {
        int from;
        const char* key;
        int to;
    } rows[] = {{40, "Down", 20}, {40, "Up", 80},     {80, "Up", 80}, {20, "PgUp", 80},
                {10, "Down", 10}, {80, "PgDown", 10}, {30, "Up", 40}, {30, "Down", 20}};
    for (const auto& row : rows) {
        box.QSpinBox::setValue(row.from); // which may be one that is not allowed
        test::play(box, row.key);
        EXPECT_EQ(box.value(), row.to) << row.from << " with key " << row.key;
    }
}

TEST(FractionSpinBox, WhatIsTypedIsKeptAndReportedIfNotInTheSet) {
    test::LogRecorder log{core::kChannelInfo};
    TestedBox box;
    box.setSuffix(" km");
    box.setAllowed({10, 20});
    EXPECT_EQ(box.valueFromText("20 km"), 20);
    EXPECT_EQ(box.valueFromText("2.5 km"), 0);
    EXPECT_EQ(box.valueFromText("99999999999"), 0);
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_EQ(box.valueFromText("+15 km"), 15);
    EXPECT_THAT(log.take(),
                ElementsAre("INFO QT::FractionSpinBox::valueFromText(+15): not in set"));
    box.selectAll();
    QTest::keyClicks(&box, "17");
    EXPECT_EQ(box.text(), "17 km");
    EXPECT_EQ(box.value(), 17);
}

} // namespace
