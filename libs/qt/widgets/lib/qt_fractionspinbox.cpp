#include "qt_fractionspinbox.h"

#include "core_log.h"
#include "core_tokenizer.h"

#include <QRegExp>

#include <iterator>
#include <optional>
#include <string>
#include <utility>

namespace NS_QT {
namespace {

bool matches(const char* pattern, const QString& text) {
    return QRegExp(pattern, Qt::CaseSensitive).indexIn(text) >= 0;
}

// The core's numbers have no plus sign.
std::optional<int32_t> integerOf(const std::string& text) {
    const bool hasPlus = text.starts_with('+') && !text.starts_with("+-");
    return core::decimalNumber(hasPlus ? text.substr(1) : text);
}

// Of a set that is not empty; of two values equally near, the lower.
int32_t nearest(const std::set<int32_t>& values, int32_t value) {
    const auto above = values.lower_bound(value);
    if (above == values.begin())
        return *above;
    const int32_t below = *std::prev(above);
    if (above == values.end())
        return below;
    return int64_t{value} - below <= int64_t{*above} - value ? below : *above;
}

// The value so many steps up or down, which need not start in the set; its end at most.
int32_t stepped(const std::set<int32_t>& values, int32_t value, int steps) {
    auto at = steps > 0 ? values.upper_bound(value) : values.lower_bound(value);
    for (; steps > 1 && at != values.end(); --steps)
        ++at;
    for (; steps < 0 && at != values.begin(); ++steps)
        --at;
    return at != values.end() ? *at : *values.rbegin();
}

} // namespace

FractionSpinBox::FractionSpinBox(QWidget* parent) : QSpinBox(parent) {}

void FractionSpinBox::setAllowed(std::set<int32_t> values) {
    d_allowed = std::move(values);
    setValue(value());
}

void FractionSpinBox::setValue(int value) {
    QSpinBox::setValue(d_allowed.empty() ? value : nearest(d_allowed, value));
}

QString FractionSpinBox::withoutSuffix(const QString& text) const {
    return text.endsWith(suffix()) ? text.chopped(suffix().size()) : text;
}

QValidator::State FractionSpinBox::validate(QString& text, int&) const {
    const QString number = withoutSuffix(text);
    if (number.isEmpty())
        return QValidator::Intermediate;
    if (matches("^[-+]?[0-9]*\\.?[0-9]+$", number))
        return QValidator::Acceptable;
    return matches("^[-+]?[0-9]*\\.$", number) ? QValidator::Intermediate : QValidator::Invalid;
}

int FractionSpinBox::valueFromText(const QString& text) const {
    const std::string number = withoutSuffix(text).toStdString();
    const std::optional<int32_t> value = integerOf(number);
    if (value && !d_allowed.empty() && !d_allowed.contains(*value)) {
        core::logFrom(core::kChannelInfo, "QT::FractionSpinBox::valueFromText", "(%s): not in set",
                      number);
    }
    return value.value_or(0);
}

QString FractionSpinBox::textFromValue(int value) const { return QString::number(value); }

void FractionSpinBox::stepBy(int steps) {
    if (d_allowed.empty()) {
        QSpinBox::stepBy(steps);
        return;
    }
    interpretText();
    if (steps != 0)
        QSpinBox::setValue(stepped(d_allowed, value(), steps));
    selectAll();
}

QAbstractSpinBox::StepEnabled FractionSpinBox::stepEnabled() const {
    StepEnabled enabled = QSpinBox::stepEnabled();
    if (!d_allowed.empty()) {
        enabled.setFlag(StepUpEnabled, !isReadOnly() && value() < *d_allowed.rbegin());
        enabled.setFlag(StepDownEnabled, !isReadOnly() && value() > *d_allowed.begin());
    }
    return enabled;
}

} // namespace NS_QT
