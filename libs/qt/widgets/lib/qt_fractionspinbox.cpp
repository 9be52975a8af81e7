#include "qt_fractionspinbox.h"

#include "core_check.h"
#include "core_log.h"
#include "core_tokenizer.h"

#include <QPointer>
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

} // namespace

// The allowed values that lie within the range.
class FractionSpinBox::Choice {
public:
    Choice(const std::set<int32_t>& values, int32_t minimum, int32_t maximum)
        : d_begin(values.lower_bound(minimum)), d_end(values.upper_bound(maximum)) {}

    bool empty() const { return d_begin == d_end; }
    int32_t lowest() const { return *d_begin; }
    int32_t highest() const { return *std::prev(d_end); }

    // Of two values equally near, the lower.
    int32_t nearest(int32_t value) const {
        const auto above = std::lower_bound(d_begin, d_end, value);
        if (above == d_begin)
            return lowest();
        const int32_t below = *std::prev(above);
        if (above == d_end)
            return below;
        return int64_t{value} - below <= int64_t{*above} - value ? below : *above;
    }

    // So many steps up or down, from a value that need not be one of them.
    int32_t stepped(int32_t value, int steps) const {
        auto at = steps > 0 ? std::upper_bound(d_begin, d_end, value)
                            : std::lower_bound(d_begin, d_end, value);
        for (; steps > 1 && at != d_end; --steps)
            ++at;
        for (; steps < 0 && at != d_begin; ++steps)
            --at;
        return at != d_end ? *at : highest();
    }

private:
    std::set<int32_t>::const_iterator d_begin;
    std::set<int32_t>::const_iterator d_end;
};

FractionSpinBox::FractionSpinBox(QWidget* parent) : QSpinBox(parent) {
    connect(this, qOverload<int>(&QSpinBox::valueChanged), this, &FractionSpinBox::numberChanged);
}

FractionSpinBox::Choice FractionSpinBox::choice() const {
    return {d_allowed, minimum(), maximum()};
}

void FractionSpinBox::keepWithinChoice() {
    CHECKF(d_allowed.empty() || !choice().empty(), "no allowed value lies within the range");
    setValue(value());
}

void FractionSpinBox::setAllowed(std::set<int32_t> values) {
    if (d_allowed == values)
        return;
    d_allowed = std::move(values);
    const QPointer<FractionSpinBox> self(this);
    keepWithinChoice();
    if (self != nullptr)
        emit allowedChanged();
}

QStringList FractionSpinBox::allowedTexts() const {
    QStringList texts;
    for (const int32_t value : d_allowed)
        texts << QString::number(value);
    return texts;
}

void FractionSpinBox::setAllowedTexts(const QStringList& texts) {
    std::set<int32_t> values;
    for (const QString& text : texts) {
        if (const auto value = integerOf(text.trimmed().toStdString()))
            values.insert(*value);
    }
    setAllowed(std::move(values));
}

void FractionSpinBox::setRange(int minimum, int maximum) {
    const std::pair before(this->minimum(), this->maximum());
    const QPointer<FractionSpinBox> self(this);
    QSpinBox::setRange(minimum, maximum);
    if (self == nullptr || before == std::pair(this->minimum(), this->maximum()))
        return;
    keepWithinChoice();
    if (self != nullptr)
        emit rangeChanged(this->minimum(), this->maximum());
}

void FractionSpinBox::setValue(int value) {
    const Choice values = choice();
    QSpinBox::setValue(values.empty() ? value : values.nearest(value));
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
    if (choice().empty()) {
        QSpinBox::stepBy(steps);
        return;
    }
    const QPointer<FractionSpinBox> self(this);
    interpretText();
    if (self != nullptr && steps != 0)
        QSpinBox::setValue(choice().stepped(value(), steps));
    if (self != nullptr)
        selectAll();
}

QAbstractSpinBox::StepEnabled FractionSpinBox::stepEnabled() const {
    StepEnabled enabled = QSpinBox::stepEnabled();
    if (const Choice values = choice(); !values.empty()) {
        enabled.setFlag(StepUpEnabled, !isReadOnly() && value() < values.highest());
        enabled.setFlag(StepDownEnabled, !isReadOnly() && value() > values.lowest());
    }
    return enabled;
}

} // namespace NS_QT
