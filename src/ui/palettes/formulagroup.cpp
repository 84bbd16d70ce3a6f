#include "ui/palettes/formulagroup.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "ui/widgets/floatspinbox.h"

namespace tirn {

namespace {

struct Preset
{
    const char* text;
    double power;
};

constexpr Preset kPresets[] = {{"Cube Root", 0.333333}, {"Square Root", 0.5}, {"Linear", 1},
                               {"Square", 2},           {"Cube", 3},          {"Custom", 1}};
constexpr double kFineStep = 0.01;
constexpr int kFineStepsAtOnce = 10;
constexpr double kLargestScale = 1000;
constexpr double kLargestPower = 100;

} // namespace

double powerOfPreset(int preset)
{
    return preset >= 0 && preset <= kCustomPreset ? kPresets[preset].power : 1;
}

FormulaGroup::FormulaGroup(const QString& title, const QString& kind, const QString& prefix, QWidget* parent)
    : QGroupBox(title, parent), m_kind(new QComboBox(this)), m_presets(new QComboBox(this)),
      m_spins(new QHBoxLayout)
{
    m_kind->setObjectName("cbo" + kind);
    m_presets->setObjectName("cbo" + prefix + "Presets");
    for (const Preset& preset : kPresets)
        m_presets->addItem(tr(preset.text));
    m_presets->setCurrentIndex(2);
    auto* lists = new QHBoxLayout;
    lists->addWidget(m_kind, 1);
    lists->addWidget(m_presets, 1);
    m_scale = addSpin("fspn" + prefix + "Scale", tr("Scale"), kLargestScale, kFineStep);
    m_power = addSpin("fspn" + prefix + "Power", tr("Power"), kLargestPower, kFineStep);
    m_offset = addSpin("fspn" + prefix + "Offset", tr("Offset"), 1, 1);
    setOffsetRange(255);
    m_scale->setSingleStep(kFineStepsAtOnce);
    m_power->setSingleStep(kFineStepsAtOnce);
    setCurve({});
    auto* rows = new QVBoxLayout(this);
    rows->addLayout(lists);
    rows->addLayout(m_spins);
    rows->addStretch(1);
    connect(m_presets, qOverload<int>(&QComboBox::activated), this, &FormulaGroup::presetChosen);
}

FloatSpinBox* FormulaGroup::addSpin(const QString& name, const QString& label, double largest, double step)
{
    auto* spin = new FloatSpinBox(this);
    auto* text = new QLabel(label, this);
    spin->setObjectName(name);
    spin->setDoubleLineStep(step);
    spin->setDoubleRange(step, largest);
    text->setBuddy(spin);
    m_spins->addWidget(text);
    m_spins->addWidget(spin, 1);
    connect(spin, &FloatSpinBox::doubleValueChanged, this, [this] {
        const QSignalBlocker blocker(m_presets);
        m_presets->setCurrentIndex(kCustomPreset);
        Q_EMIT curveChanged();
    });
    return spin;
}

PaletteCurve FormulaGroup::curve() const
{
    return {m_offset->doubleValue(), m_scale->doubleValue(), m_power->doubleValue()};
}

void FormulaGroup::setCurve(const PaletteCurve& curve)
{
    const QSignalBlocker blockers[] = {QSignalBlocker(m_scale), QSignalBlocker(m_power),
                                       QSignalBlocker(m_offset)};
    m_scale->setDoubleValue(curve.scale);
    m_power->setDoubleValue(curve.power);
    m_offset->setDoubleValue(curve.offset);
}

void FormulaGroup::setOffsetRange(double largest)
{
    const QSignalBlocker blocker(m_offset);
    m_offset->setDoubleRange(-largest, largest);
}

void FormulaGroup::setOffsetOnly(bool only)
{
    for (QWidget* each : std::initializer_list<QWidget*>{m_scale, m_power, m_presets})
        each->setEnabled(!only);
}

} // namespace tirn
