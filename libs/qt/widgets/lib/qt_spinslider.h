#pragma once

#include <QAbstractSlider>

class QSlider;
class QSpinBox;

namespace NS_QT {

/// A slider and a spin box for the same number, kept in step.
///
/// Range, steps, value and tracking are those of this object, with QAbstractSlider's
/// signals; the two children mirror them. While the slider is dragged, isSliderDown() says
/// so, and sliderPressed(), sliderMoved(), sliderReleased() and actionTriggered() are
/// emitted, the last one only then. The spin box takes the keyboard focus, and the slider
/// can be reached from it. Always horizontal: asking for another orientation is a failed
/// check. GUI thread only.
class SpinSlider : public QAbstractSlider {
    Q_OBJECT
    Q_PROPERTY(Qt::Orientation orientation READ orientation WRITE setOrientation DESIGNABLE false)

public:
    /// With the range of QAbstractSlider, 0 to 99.
    explicit SpinSlider(QWidget* parent = nullptr);

    /// Always horizontal.
    Qt::Orientation orientation() const { return Qt::Horizontal; }

    /// For what only one of them has: a suffix, tick marks. Owned by this object; set
    /// range, steps and value here, not there.
    QSpinBox* spinBox() const { return d_spinBox; }
    QSlider* slider() const { return d_slider; }

public Q_SLOTS:
    /// It stays horizontal.
    void setOrientation(Qt::Orientation orientation);
    /// For its two children, whose value it takes.
    void handleSpinChanged();
    void handleSliderChanged();

protected:
    void sliderChange(SliderChange change) override;
    /// Gives this object's accessible name to children that have none of their own.
    void showEvent(QShowEvent* event) override;

private:
    void nameChild(QWidget* child);

    bool d_isCopyingRange = false;
    QString d_givenName;
    QSlider* const d_slider;
    QSpinBox* const d_spinBox;
};

} // namespace NS_QT
