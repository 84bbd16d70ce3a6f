#include "ui/widgets/floatspinbox.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <QDoubleValidator>
#include <QLineEdit>
#include <QSignalBlocker>

namespace tirn {

namespace {

/// Integers stay far enough from their ends for a step beyond.
constexpr double kMostSteps = 1e9;
constexpr int kMostDecimals = 10;
/// How far a quotient may be from a whole number by rounding alone.
constexpr double kSlack = 1e-6;

int boundedInteger(double value) { return static_cast<int>(std::clamp(value, -kMostSteps, kMostSteps)); }

} // namespace

FloatSpinBox::FloatSpinBox(QWidget* parent) : QSpinBox(parent)
{
    connect(this, qOverload<int>(&QSpinBox::valueChanged), this, [this] {
        m_isBeingTyped = false;
        Q_EMIT doubleValueChanged(doubleValue());
    });
    connect(lineEdit(), &QLineEdit::textEdited, this, &FloatSpinBox::textEdited);
    connect(this, &QSpinBox::editingFinished, this, &FloatSpinBox::textCounts);
}

double FloatSpinBox::doubleValue() const { return numberAt(value()); }

double FloatSpinBox::numberAt(int value) const
{
    if (m_given && nearestStep(*m_given) == value)
        return std::clamp(*m_given, m_minimum, m_maximum);
    // Dividing by a whole number gives the double next to the decimal fraction, which a product need not.
    const double perUnit = std::round(1 / m_lineStep);
    const bool isWhole = perUnit >= 1 && std::abs(1 / m_lineStep - perUnit) < kSlack;
    const double number = isWhole ? value / perUnit : value * m_lineStep;
    return std::clamp(number, m_minimum, m_maximum);
}

int FloatSpinBox::nearestStep(double number) const
{
    return std::clamp(boundedInteger(std::round(number / m_lineStep)), minimum(), maximum());
}

void FloatSpinBox::setDoubleRange(double minimum, double maximum)
{
    if (!std::isfinite(minimum) || !std::isfinite(maximum))
        return;
    const double number = doubleValue();
    m_minimum = minimum;
    m_maximum = std::max(minimum, maximum);
    useIntegers(number);
}

void FloatSpinBox::setDoubleLineStep(double step)
{
    if (!std::isfinite(step) || step <= 0)
        return;
    const double number = doubleValue();
    m_lineStep = step;
    useIntegers(number);
}

/// The integers' range reaches both limits, even where they are no multiples of the step.
void FloatSpinBox::useIntegers(double number)
{
    {
        const QSignalBlocker blocker(this);
        setRange(boundedInteger(std::floor(m_minimum / m_lineStep + kSlack)),
                 boundedInteger(std::ceil(m_maximum / m_lineStep - kSlack)));
        setDoubleValue(number);
    }
    if (doubleValue() != number)
        Q_EMIT doubleValueChanged(doubleValue());
}

void FloatSpinBox::setDoubleValue(double number)
{
    if (!std::isfinite(number))
        return;
    const double before = doubleValue();
    const int integerBefore = value();
    m_given = std::clamp(number, m_minimum, m_maximum);
    const int integer = nearestStep(*m_given);
    setValue(integer);
    if (integer != integerBefore)
        return;
    if (specialValueText().isEmpty() || integer != minimum())
        lineEdit()->setText(prefix() + textFromValue(integer) + suffix());
    if (doubleValue() != before)
        Q_EMIT doubleValueChanged(doubleValue());
}

void FloatSpinBox::textEdited()
{
    m_isBeingTyped = true;
    if (keyboardTracking())
        forgetGiven();
}

void FloatSpinBox::textCounts()
{
    if (std::exchange(m_isBeingTyped, false))
        forgetGiven();
}

void FloatSpinBox::forgetGiven()
{
    const double before = doubleValue();
    m_given.reset();
    if (doubleValue() != before)
        Q_EMIT doubleValueChanged(doubleValue());
}

/// As many as the line step has.
int FloatSpinBox::decimals() const
{
    double shifted = m_lineStep;
    int count = 0;
    while (count < kMostDecimals && std::abs(shifted - std::round(shifted)) > kSlack * shifted) {
        shifted *= 10;
        ++count;
    }
    return count;
}

QString FloatSpinBox::textFromValue(int value) const
{
    QLocale plain = locale();
    plain.setNumberOptions(QLocale::OmitGroupSeparator);
    return plain.toString(numberAt(value), 'f', decimals());
}

QString FloatSpinBox::bareText(const QString& text) const
{
    QString bare = text;
    if (bare.startsWith(prefix()))
        bare.remove(0, prefix().size());
    if (bare.endsWith(suffix()))
        bare.chop(suffix().size());
    return bare.trimmed();
}

int FloatSpinBox::valueFromText(const QString& text) const
{
    if (!specialValueText().isEmpty() && text == specialValueText())
        return minimum();
    bool isNumber = false;
    const double number = locale().toDouble(bareText(text), &isNumber);
    return isNumber ? nearestStep(number) : value();
}

QValidator::State FloatSpinBox::validate(QString& text, int& position) const
{
    if (!specialValueText().isEmpty() && text == specialValueText())
        return QValidator::Acceptable;
    QDoubleValidator validator(m_minimum, m_maximum, decimals(), nullptr);
    validator.setNotation(QDoubleValidator::StandardNotation);
    QLocale plain = locale();
    plain.setNumberOptions(QLocale::RejectGroupSeparator);
    validator.setLocale(plain);
    QString bare = bareText(text);
    return validator.validate(bare, position);
}

} // namespace tirn
