#pragma once

#include <QSpinBox>
#include <QStringList>

#include <algorithm>
#include <cstdint>
#include <set>

namespace NS_QT {

/// A spin box whose editor accepts decimal numbers ("-0.5", "+.5") with or without the
/// suffix, and which can be limited to a set of values.
///
/// Only the part of the set that lies within the range counts. What is typed is not forced
/// into the set: a number outside is logged on INFO and kept, and one that is no integer
/// counts as 0. The arrows, Page Up and Page Down go through the set and stop at its ends.
/// Numbers are shown in plain digits; a prefix is not supported.
///
/// QSpinBox's functions are not virtual: connect to this class's setValue and setRange,
/// since those of a QSpinBox* know nothing of the set. Like any QSpinBox it must not be
/// deleted by a slot that is told of its value; deleteLater() may be called. GUI thread
/// only.
class FractionSpinBox : public QSpinBox {
    Q_OBJECT
    Q_PROPERTY(int value READ value WRITE setValue NOTIFY numberChanged USER true)
    Q_PROPERTY(int minimum READ minimum WRITE setMinimum NOTIFY rangeChanged)
    Q_PROPERTY(int maximum READ maximum WRITE setMaximum NOTIFY rangeChanged)
    Q_PROPERTY(QStringList allowed READ allowedTexts WRITE setAllowedTexts NOTIFY allowedChanged)

public:
    /// With the range 0 to 99.
    explicit FractionSpinBox(QWidget* parent = nullptr);

    /// Empty, the default, means every value of the range.
    const std::set<int32_t>& allowed() const { return d_allowed; }
    /// A current value outside the set is replaced as by setValue. A set without a value in
    /// the range is a failed check, as is a range without one of the set; until they have
    /// one in common, every value of the range is allowed.
    void setAllowed(std::set<int32_t> values);

    /// The same as decimal numbers, for forms; what is no number is left out.
    QStringList allowedTexts() const;
    void setAllowedTexts(const QStringList& values);

    /// What a user may choose, limits included.
    void setRange(int minimum, int maximum);
    void setMinimum(int minimum) { setRange(minimum, std::max(minimum, maximum())); }
    void setMaximum(int maximum) { setRange(std::min(minimum(), maximum), maximum); }

    QValidator::State validate(QString& text, int& position) const override;
    void stepBy(int steps) override;

public Q_SLOTS:
    /// Takes the nearest allowed value, of two the lower; the range bounds it.
    void setValue(int value);

Q_SIGNALS:
    /// With QSpinBox::valueChanged(int); of one form only, as a property has it.
    void numberChanged(int value);
    void rangeChanged(int minimum, int maximum);
    void allowedChanged();

protected:
    int valueFromText(const QString& text) const override;
    QString textFromValue(int value) const override;
    StepEnabled stepEnabled() const override;

private:
    class Choice;

    Choice choice() const;
    void keepWithinChoice();
    QString withoutSuffix(const QString& text) const;

    std::set<int32_t> d_allowed;
};

} // namespace NS_QT
