#pragma once

#include <QSpinBox>

#include <cstdint>
#include <set>

namespace NS_QT {

/// A spin box whose editor accepts decimal numbers ("-0.5", "+.5") with or without the
/// suffix, and which can be limited to a set of values.
///
/// What is typed is not forced into the set: a number outside is logged on INFO and
/// kept, and one that is no integer counts as 0. The arrows, Page Up and Page Down go
/// through the set. Numbers are shown in plain digits; a prefix is not supported.
/// GUI thread only.
class FractionSpinBox : public QSpinBox {
    Q_OBJECT

public:
    explicit FractionSpinBox(QWidget* parent = nullptr);

    /// Empty, the default, means every value of the range.
    const std::set<int32_t>& allowed() const { return d_allowed; }
    /// A current value outside the set is replaced as by setValue.
    void setAllowed(std::set<int32_t> values);

    QValidator::State validate(QString& text, int& position) const override;
    void stepBy(int steps) override;

public slots:
    /// Takes the nearest allowed value, of two the lower; the range bounds it.
    void setValue(int value);

protected:
    int valueFromText(const QString& text) const override;
    QString textFromValue(int value) const override;
    StepEnabled stepEnabled() const override;

private:
    QString withoutSuffix(const QString& text) const;

    std::set<int32_t> d_allowed;
};

} // namespace NS_QT
