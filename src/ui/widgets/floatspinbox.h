#pragma once

#include <algorithm>
#include <optional>

#include <QSpinBox>

namespace tirn {

/// A spin box over doubles: its integer value times a line step.
///
/// A number that was set stays exactly what it was until it is edited; one that is typed goes to the next
/// multiple of the line step. Numbers are shown and read in the widget's locale.
class FloatSpinBox : public QSpinBox
{
    Q_OBJECT

public:
    explicit FloatSpinBox(QWidget* parent = nullptr);

    double doubleValue() const;
    double doubleMinValue() const { return m_minimum; }
    double doubleMaxValue() const { return m_maximum; }
    double doubleLineStep() const { return m_lineStep; }

    /// An upper limit below the lower one becomes the lower one.
    void setDoubleRange(double minimum, double maximum);
    void setDoubleMinValue(double minimum) { setDoubleRange(minimum, std::max(minimum, m_maximum)); }
    void setDoubleMaxValue(double maximum) { setDoubleRange(std::min(maximum, m_minimum), maximum); }
    /// What one of the integer stands for: how finely numbers are told apart, and what an arrow adds while
    /// `singleStep` is 1. Must be above 0. Limits and number stay.
    void setDoubleLineStep(double step);

    /// True, without keyboard tracking, from the first key of a text to the moment at which it counts.
    bool isBeingTyped() const { return m_isBeingTyped; }

public Q_SLOTS:
    void setDoubleValue(double number);

Q_SIGNALS:
    void doubleValueChanged(double number);

protected:
    QString textFromValue(int value) const override;
    int valueFromText(const QString& text) const override;
    QValidator::State validate(QString& text, int& position) const override;

private:
    int nearestStep(double number) const;
    double numberAt(int value) const;
    int decimals() const;
    QString bareText(const QString& text) const;
    void useIntegers(double number);
    void textEdited();
    void textCounts();
    void forgetGiven();

    double m_minimum = 0;
    double m_maximum = 99;
    double m_lineStep = 1;
    /// The number set from outside, which counts while the integer is the one next to it.
    std::optional<double> m_given;
    bool m_isBeingTyped = false;
};

} // namespace tirn
