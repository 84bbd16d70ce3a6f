#pragma once

#include <array>

#include <QGroupBox>

#include "palettes/palette.h"

class QComboBox;
class QHBoxLayout;

namespace tirn {

class FloatSpinBox;

/// The numbers of a formula: what it is for, scale, power and offset, and presets of the power.
class FormulaGroup : public QGroupBox
{
    Q_OBJECT

public:
    /// Object names are "cbo" + `kind`, "fspn" + `prefix` + "Scale" and so on.
    FormulaGroup(const QString& title, const QString& kind, const QString& prefix, QWidget* parent);

    QComboBox& kind() const { return *m_kind; }
    PaletteCurve curve() const;
    /// Sends no signals.
    void setCurve(const PaletteCurve& curve);
    void setOffsetRange(double largest);
    /// Only the offset counts.
    void setOffsetOnly(bool only);
    std::array<FloatSpinBox*, 3> spins() const { return {m_scale, m_power, m_offset}; }

Q_SIGNALS:
    /// A number was changed by the user.
    void curveChanged();
    void presetChosen(int preset);

private:
    /// One from `step` on, in steps of it.
    FloatSpinBox* addSpin(const QString& name, const QString& label, double largest, double step);

    QComboBox* m_kind;
    QComboBox* m_presets;
    QHBoxLayout* m_spins;
    FloatSpinBox* m_scale;
    FloatSpinBox* m_power;
    FloatSpinBox* m_offset;
};

/// The power of a preset, by its place in the list; 1 for all that is not there.
double powerOfPreset(int preset);
constexpr int kCustomPreset = 5;

} // namespace tirn
