#pragma once

#include <QAbstractSlider>

class QSlider;
class QSpinBox;

namespace NS_QT {

/// A slider and a spin box for the same number, kept in step.
///
/// Range, steps and value are those of this object, with QAbstractSlider's signals; the
/// two children mirror them. The spin box takes the keyboard focus, and the slider can be
/// reached from it. Always horizontal: asking for another orientation is a failed check.
/// GUI thread only.
class SpinSlider : public QAbstractSlider {
    Q_OBJECT

public:
    explicit SpinSlider(QWidget* parent = nullptr);

    /// For what only one of them has: a suffix, tick marks. Owned by this object; set
    /// range, steps and value here, not there.
    QSpinBox* spinBox() const { return d_spinBox; }
    QSlider* slider() const { return d_slider; }

public slots:
    void handleSpinChanged();
    void handleSliderChanged();

protected:
    void sliderChange(SliderChange change) override;
    /// Gives the children this object's accessible name.
    void showEvent(QShowEvent* event) override;

private:
    QSlider* const d_slider;
    QSpinBox* const d_spinBox;
};

} // namespace NS_QT
