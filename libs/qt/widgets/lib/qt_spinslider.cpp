#include "qt_spinslider.h"

#include "core_check.h"

#include <QHBoxLayout>
#include <QScopedValueRollback>
#include <QSlider>
#include <QSpinBox>

namespace NS_QT {

SpinSlider::SpinSlider(QWidget* parent)
    : QAbstractSlider(parent),
      d_slider(new QSlider(Qt::Horizontal, this)),
      d_spinBox(new QSpinBox(this)) {
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(d_slider, 1);
    layout->addWidget(d_spinBox);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFocusPolicy(d_spinBox->focusPolicy());
    setFocusProxy(d_spinBox);
    connect(d_slider, SIGNAL(valueChanged(int)), SLOT(handleSliderChanged()));
    connect(d_spinBox, SIGNAL(valueChanged(int)), SLOT(handleSpinChanged()));
    connect(d_slider, &QSlider::sliderPressed, this, [this] {
        d_slider->setTracking(hasTracking());
        setSliderDown(true);
    });
    connect(d_slider, &QSlider::sliderMoved, this, &SpinSlider::setSliderPosition);
    connect(d_slider, &QSlider::sliderReleased, this, [this] { setSliderDown(false); });
}

void SpinSlider::setOrientation(Qt::Orientation orientation) {
    if (orientation != Qt::Horizontal)
        sliderChange(SliderOrientationChange);
}

// A range may bound the children's values before it is announced; then follows the value.
void SpinSlider::handleSpinChanged() {
    if (!d_isCopyingRange)
        setValue(d_spinBox->value());
}

void SpinSlider::handleSliderChanged() {
    if (!d_isCopyingRange)
        setValue(d_slider->value());
}

void SpinSlider::sliderChange(SliderChange change) {
    switch (change) {
    case SliderRangeChange: {
        const QScopedValueRollback guard(d_isCopyingRange, true);
        d_slider->setRange(minimum(), maximum());
        d_spinBox->setRange(minimum(), maximum());
        break;
    }
    case SliderOrientationChange:
        core::raise("STILLTODO", CORE_CHECK_HERE, 0, {});
        break;
    case SliderStepsChange:
        d_slider->setSingleStep(singleStep());
        d_slider->setPageStep(pageStep());
        d_spinBox->setSingleStep(singleStep());
        break;
    case SliderValueChange:
        d_slider->setValue(value());
        if (d_spinBox->value() != value()) // else what is being typed, "01", stays
            d_spinBox->setValue(value());
        break;
    }
}

void SpinSlider::nameChild(QWidget* child) {
    if (child->accessibleName() == d_givenName)
        child->setAccessibleName(accessibleName());
}

void SpinSlider::showEvent(QShowEvent* event) {
    nameChild(d_slider);
    nameChild(d_spinBox);
    d_givenName = accessibleName();
    QAbstractSlider::showEvent(event);
}

} // namespace NS_QT
