#include "pages.h"
#include "pictures.h"
#include "qt_fractionspinbox.h"
#include "qt_smartcombobox.h"
#include "qt_spinslider.h"
#include "states.h"

#include <QSlider>
#include <QSpinBox>

namespace gallery {
namespace {

NS_QT::SpinSlider* makeSpinSlider(const Report& report, int value) {
    auto* const slider = new NS_QT::SpinSlider;
    slider->setAccessibleName("Volume");
    slider->setRange(0, 50);
    slider->setValue(value);
    QObject::connect(slider, &QAbstractSlider::valueChanged, slider, [report](int changed) {
        report(QString("SpinSlider: valueChanged(%1)").arg(changed));
    });
    return slider;
}

NS_QT::SpinSlider* makeTickedSlider(const Report& report) {
    NS_QT::SpinSlider* const slider = makeSpinSlider(report, 30);
    slider->setSingleStep(5);
    slider->slider()->setTickPosition(QSlider::TicksBelow);
    slider->slider()->setTickInterval(10);
    slider->spinBox()->setSuffix(" %");
    return slider;
}

NS_QT::FractionSpinBox* makeFractionBox(const Report& report, std::set<int32_t> allowed) {
    auto* const box = new NS_QT::FractionSpinBox;
    box->setSuffix(" m");
    box->setAllowed(std::move(allowed));
    QObject::connect(box, qOverload<int>(&QSpinBox::valueChanged), box, [report](int value) {
        report(QString("FractionSpinBox: valueChanged(%1)").arg(value));
    });
    return box;
}

NS_QT::SmartComboBox* makeSmartCombo(const Report& report) {
    auto* const combo = new NS_QT::SmartComboBox;
    combo->addItem(makeIcon(Picture::Camera), "Camera", 100);
    combo->addItem(makeIcon(Picture::Monitor), "Monitor", 200);
    combo->addItem(makeIcon(Picture::Bell), "Alarm", 300);
    QObject::connect(combo, &NS_QT::SmartComboBox::sigKeyActivated, combo, [report](int key) {
        report(QString("SmartComboBox: sigKeyActivated(%1)").arg(key));
    });
    return combo;
}

NS_QT::StringComboBox* makeStringCombo(const Report& report) {
    auto* const combo = new NS_QT::StringComboBox;
    combo->addItem("English", "en");
    combo->addItem("Deutsch", "de");
    combo->addItem("Français", "fr");
    QObject::connect(combo, &NS_QT::StringComboBox::sigKeyActivated, combo,
                     [report](const std::string& key) {
                         report(QString("StringComboBox: sigKeyActivated(\"%1\")")
                                    .arg(QString::fromStdString(key)));
                     });
    return combo;
}

} // namespace

QWidget* makeInputsPage(const Report& report) {
    auto* const page = new QWidget;
    NS_QT::WidgetBuilder builder(page);
    const NS_QT::VBoxScope column(builder);
    addGroup(builder, "SpinSlider", [&](NS_QT::WidgetBuilder& group) {
        addStates(group, "Plain", [&] { return makeSpinSlider(report, 15); });
        addStates(group, "With tick marks", [&] { return makeTickedSlider(report); });
    });
    addGroup(builder, "FractionSpinBox", [&](NS_QT::WidgetBuilder& group) {
        addStates(group, "Any value", [&] { return makeFractionBox(report, {}); });
        addStates(group, "10, 20 or 40", [&] { return makeFractionBox(report, {10, 20, 40}); });
    });
    addGroup(builder, "SmartComboBox, StringComboBox", [&](NS_QT::WidgetBuilder& group) {
        addStates(group, "Numbers as keys", [&] { return makeSmartCombo(report); });
        addStates(group, "Texts as keys", [&] { return makeStringCombo(report); });
    });
    builder.addStretch(1);
    return page;
}

} // namespace gallery
