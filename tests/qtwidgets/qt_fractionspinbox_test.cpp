#include "qt_fractionspinbox.h"

#include "check_recorder.h"
#include "log_recorder.h"

#include <QLineEdit>
#include <QTest>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TestedBox : public NS_QT::FractionSpinBox {
public:
    using FractionSpinBox::lineEdit;
    using FractionSpinBox::valueFromText;

    void type(const char* text) {
        selectAll();
        QTest::keyClicks(this, text);
        QTest::keyClick(this, Qt::Key_Return);
    }
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

TEST(FractionSpinBox, TakesTheNearestAllowedValue) {
    NS_QT::FractionSpinBox box;
    box.setRange(-2147483647 - 1, 2147483647);
    box.setValue(33);
    box.setAllowed({10, 20, 40});
    EXPECT_EQ(box.value(), 40) << "which it had before";
    const std::pair<int, int> rows[] = {{15, 10}, {16, 20}, {30, 20}, {20, 20}, {5, 10}, {50, 40}};
    for (const auto& [given, taken] : rows) {
        box.setValue(given);
        EXPECT_EQ(box.value(), taken) << given;
    }
    box.setAllowed({-2147483647 - 1, 2147483647});
    box.setValue(0);
    EXPECT_EQ(box.value(), 2147483647);
}

TEST(FractionSpinBox, CountsTheSetWithinTheRange) {
    test::CheckRecorder checks;
    NS_QT::FractionSpinBox box;
    box.setAllowed({10, 20, 400});
    box.setProperty("value", 99);
    EXPECT_EQ(box.value(), 20);
    box.setRange(0, 500);
    box.setValue(350);
    EXPECT_EQ(box.value(), 400);
    box.setMaximum(399);
    EXPECT_EQ(box.value(), 20);
    EXPECT_THAT(checks.takeSites(), IsEmpty());
    box.setMinimum(30);
    box.setAllowed({1});
    EXPECT_THAT(checks.takeSites(),
                ElementsAre("CHECKF qt_fractionspinbox.cpp", "CHECKF qt_fractionspinbox.cpp"));
    box.setValue(77);
    EXPECT_EQ(box.value(), 77) << "every value while there is none in common";
}

TEST(FractionSpinBox, StepsThroughTheAllowedValues) {
    TestedBox box;
    box.setAllowed({10, 20, 40, 80});
    const struct {
        int from;
        Qt::Key key;
        int to;
    } rows[] = {{40, Qt::Key_Down, 20},   {40, Qt::Key_Up, 80},       {80, Qt::Key_Up, 80},
                {20, Qt::Key_PageUp, 80}, {80, Qt::Key_PageDown, 10}, {30, Qt::Key_Up, 40},
                {30, Qt::Key_Down, 20}};
    for (const auto& row : rows) {
        box.QSpinBox::setValue(row.from); // which may be one that is not allowed
        QTest::keyClick(&box, row.key);
        EXPECT_EQ(box.value(), row.to) << row.from << " with key " << row.key;
    }
}

TEST(FractionSpinBox, WhatIsTypedIsKeptAndReportedIfNotInTheSet) {
    test::LogRecorder log{core::kChannelInfo};
    TestedBox box;
    box.setSuffix(" km");
    box.type("15");
    EXPECT_EQ(box.value(), 15);
    box.setAllowed({10, 20});
    EXPECT_EQ(box.valueFromText("20 km"), 20);
    EXPECT_EQ(box.valueFromText("2.5 km"), 0);
    EXPECT_EQ(box.valueFromText("99999999999"), 0);
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_EQ(box.valueFromText("+15 km"), 15);
    EXPECT_THAT(log.take(),
                ElementsAre("INFO QT::FractionSpinBox::valueFromText(+15): not in set"));
    box.type("17");
    EXPECT_EQ(box.lineEdit()->text(), "17 km");
}

} // namespace
