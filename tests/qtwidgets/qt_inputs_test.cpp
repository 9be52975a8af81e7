#include "play.h"
#include "qt_fractionspinbox.h"
#include "qt_smartcombobox.h"
#include "qt_spinslider.h"
#include "testing_checkrecorder.h"
#include "testing_logrecorder.h"

#include <QSlider>
#include <QSpinBox>

#include <gmock/gmock.h>
#include <tuple>

namespace {

using testing::ElementsAre;

TEST(SpinSlider, KeepsItsPartsInStepAndTellsOfItsDragging) {
    NS_QT::SpinSlider both;
    test::Heard heard(both);
    const auto expectAll = [&](int value, const char* said) {
        EXPECT_EQ(both.value(), value);
        EXPECT_EQ(both.slider()->value(), value);
        EXPECT_EQ(both.spinBox()->value(), value);
        EXPECT_EQ(heard.take(), said);
    };
    both.setRange(10, 1000);
    EXPECT_EQ(both.spinBox()->minimum(), 10);
    EXPECT_EQ(both.spinBox()->maximum(), 1000);
    expectAll(10, "rangeChanged 10 1000, valueChanged 10");
    both.setSingleStep(7);
    both.setPageStep(70);
    test::play(*both.slider(), "Up PgUp");
    expectAll(87, "valueChanged 17, valueChanged 87");
    test::play(*both.spinBox(), "Up");
    expectAll(94, "valueChanged 94");
    test::play(*both.slider(), "End");
    expectAll(1000, "valueChanged 1000");
    both.slider()->setSliderDown(true);
    EXPECT_TRUE(both.isSliderDown());
    both.slider()->setSliderPosition(20);
    both.slider()->setSliderDown(false);
    expectAll(20, "sliderPressed, sliderMoved 20, actionTriggered 7, valueChanged 20, "
                  "sliderReleased");
    both.setTracking(false);
    both.slider()->setSliderDown(true);
    both.slider()->setSliderPosition(30);
    both.slider()->setSliderDown(false);
    expectAll(30, "sliderPressed, sliderMoved 30, sliderReleased, actionTriggered 7, "
                  "valueChanged 30");
    test::CheckRecorder checks;
    both.setProperty("orientation", Qt::Vertical);
    EXPECT_THAT(checks.takeSites(), ElementsAre("STILLTODO qt_spinslider.cpp"));
    EXPECT_EQ(both.orientation(), Qt::Horizontal);
}

TEST(SpinSlider, TakesTheFocusInItsSpinBox) {
    NS_QT::SpinSlider both;
    both.setAccessibleName("Volume");
    both.slider()->setAccessibleName("Drag");
    both.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&both));
    both.setFocus();
    EXPECT_EQ(QApplication::focusWidget(), both.spinBox());
    EXPECT_EQ(both.spinBox()->accessibleName(), "Volume");
    EXPECT_EQ(both.slider()->accessibleName(), "Drag");
    both.spinBox()->selectAll();
    QTest::keyClicks(both.spinBox(), "01");
    EXPECT_EQ(both.spinBox()->text(), "01") << "as it is typed";
}

TEST(FractionSpinBox, JudgesWhatIsTyped) {
    using enum QValidator::State;
    const std::tuple<const char*, const char*, QValidator::State> rows[] = {
        {"", "-0.5", Acceptable},      {"", "+.5", Acceptable},     {"", "3.", Intermediate},
        {"", "+.", Intermediate},      {"", "", Intermediate},      {"", "-", Invalid},
        {"", "1.2.3", Invalid},        {"", " 1", Invalid},         {"", "1 km", Invalid},
        {" km", "2.5 km", Acceptable}, {" km", "2.5", Acceptable},  {" km", " km", Intermediate},
        {" km", "2 k", Invalid},       {" km", "2 km km", Invalid},
    };
    for (const auto& [suffix, typed, state] : rows) {
        NS_QT::FractionSpinBox box;
        box.setSuffix(suffix);
        QString text = typed;
        int position = 0;
        EXPECT_EQ(box.validate(text, position), state) << typed << " with" << suffix;
    }
}

TEST(FractionSpinBox, TakesTheNearestAllowedValueWithinTheRange) {
    const std::tuple<int, int, int, int> rows[] = {
        // the range, a value and what it becomes
        {0, 99, 15, 10}, {0, 99, 16, 20}, {0, 99, 30, 20}, {0, 99, 20, 20}, {0, 99, 5, 10},
        {0, 99, 50, 40}, {0, 39, 39, 20}, {0, 40, 39, 40}, {20, 99, 5, 20},
    };
    NS_QT::FractionSpinBox box;
    for (const auto& [minimum, maximum, given, taken] : rows) {
        box.setAllowed({});
        box.setRange(minimum, maximum);
        box.setValue(given);
        box.setAllowed({10, 20, 40});
        EXPECT_EQ(box.value(), taken) << given << ", which it had before";
        box.setProperty("value", given);
        EXPECT_EQ(box.value(), taken) << given;
    }
    box.setValue(40);
    box.setMaximum(39);
    EXPECT_EQ(box.value(), 20);
    test::CheckRecorder checks;
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
    const std::tuple<int, const char*, int> rows[] = {
        {40, "Down", 20}, {40, "Up", 80},     {80, "Up", 80}, {20, "PgUp", 80},
        {10, "Down", 10}, {80, "PgDown", 10}, {30, "Up", 40}, {30, "Down", 20}};
    for (const auto& [from, key, to] : rows) {
        box.QSpinBox::setValue(from); // which may be one that is not allowed
        test::play(box, key);
        EXPECT_EQ(box.value(), to) << from << " with key " << key;
    }
}

struct TestedBox : NS_QT::FractionSpinBox {
    using FractionSpinBox::valueFromText;
};

TEST(FractionSpinBox, WhatIsTypedIsKeptAndReportedIfNotInTheSet) {
    test::LogRecorder log{core::kChannelInfo};
    TestedBox box;
    box.setSuffix(" km");
    box.setAllowed({10, 20});
    const std::pair<const char*, int> rows[] = {
        {"20 km", 20}, {"2.5 km", 0}, {"99999999999", 0}, {"+15 km", 15}};
    for (const auto& [text, value] : rows)
        EXPECT_EQ(box.valueFromText(text), value) << text;
    EXPECT_THAT(log.take(),
                ElementsAre("INFO QT::FractionSpinBox::valueFromText(+15): not in set"));
    box.selectAll();
    QTest::keyClicks(&box, "17");
    EXPECT_EQ(box.text(), "17 km");
    EXPECT_EQ(box.value(), 17);
}

// What docs/toolkit.md does not show.
TEST(SmartComboBox, TellsOfItsKeys) {
    NS_QT::SmartComboBox combo;
    std::vector<int> told;
    const auto note = [&](int key) { told.push_back(key); };
    QObject::connect(&combo, &NS_QT::SmartComboBox::sigKeyActivated, note);
    QObject::connect(&combo, &NS_QT::SmartComboBox::currentKeyChanged, note);
    combo.slotActivated(3); // while nothing is current
    combo.addItem("a", -7);
    combo.addItem(QIcon(), "b", 300);
    combo.slotActivated(1); // which is not the current one
    combo.setCurrentKey(300);
    combo.setItemData(0, 300);
    combo.setItemData(1, {});
    combo.setCurrentKey(300);
    combo.clear();
    EXPECT_THAT(told, ElementsAre(0, -7, -7, 300, 0, 300, 0));
}

} // namespace
