#include "qt_spinslider.h"

#include "core_check.h"

#include <QHBoxLayout>
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
}

void SpinSlider::handleSpinChanged() { setValue(d_spinBox->value()); }
void SpinSlider::handleSliderChanged() { setValue(d_slider->value()); }

void SpinSlider::sliderChange(SliderChange change) {
    switch (change) {
    case SliderRangeChange:
        d_slider->setRange(minimum(), maximum());
        d_spinBox->setRange(minimum(), maximum());
        break;
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
        d_spinBox->setValue(value());
        break;
    }
}

void SpinSlider::showEvent(QShowEvent* event) {
    d_slider->setAccessibleName(accessibleName());
    d_spinBox->setAccessibleName(accessibleName());
    QAbstractSlider::showEvent(event);
}

} // namespace NS_QT
