#include "ui/palettes/levelspanel.h"

#include <cmath>

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>

#include "palettes/palettehistogram.h"
#include "ui/palettes/levelstrip.h"
#include "ui/widgets/floatspinbox.h"

namespace tirn {

namespace {

enum Column { NameColumn, StripColumn, BlackColumn, WhiteColumn, GammaColumn, AutoColumn };

} // namespace

LevelsPanel::LevelsPanel(QWidget* parent)
    : QWidget(parent), m_grid(new QGridLayout), m_logarithmic(new QCheckBox(tr("Logarithmic"), this)),
      m_none(new QLabel(tr("Levels need a stack."), this))
{
    m_logarithmic->setObjectName("chkLogHistogram");
    m_logarithmic->setToolTip(tr("Rare intensities can be seen beside frequent ones."));
    m_logarithmic->setChecked(true);
    m_grid->setColumnStretch(StripColumn, 1);
    const char* const titles[] = {"Black", "White", "Gamma"};
    for (int i = 0; i < 3; ++i)
        m_grid->addWidget(new QLabel(tr(titles[i]), this), 0, BlackColumn + i);
    m_grid->addWidget(m_logarithmic, 0, StripColumn);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(m_grid);
    layout->addWidget(m_none);
    layout->addStretch(1);
    connect(m_logarithmic, &QCheckBox::toggled, this, [this] {
        showHistograms();
        Q_EMIT scaleChanged();
    });
}

bool LevelsPanel::isLogarithmic() const { return m_logarithmic->isChecked(); }

void LevelsPanel::makeRow(int channel)
{
    const auto name = [channel](const char* kind) { return QString("%1%2").arg(kind).arg(channel); };
    Widgets made = {new QLabel(this),   new LevelStrip(this),   new QSpinBox(this),
                    new QSpinBox(this), new FloatSpinBox(this), new QToolButton(this)};
    made.strip->setObjectName(name("strip"));
    made.black->setObjectName(name("spnBlack"));
    made.black->setToolTip(tr("What is not brighter than this gets the first colour."));
    made.white->setObjectName(name("spnWhite"));
    made.white->setToolTip(tr("What is brighter than this gets the last colour."));
    made.gamma->setObjectName(name("fspnGamma"));
    made.gamma->setToolTip(tr("Above 1 the middle becomes brighter."));
    made.gamma->setDoubleLineStep(0.01);
    made.gamma->setSingleStep(10);
    made.gamma->setDoubleRange(kLeastGamma, kLargestGamma);
    auto* automatic = static_cast<QToolButton*>(made.automatic);
    automatic->setObjectName(name("btnAutoLevels"));
    automatic->setText(tr("Auto"));
    automatic->setFocusPolicy(Qt::StrongFocus);
    automatic->setToolTip(tr("Cut off 0.35 % of the voxels at each end."));
    const auto index = static_cast<std::size_t>(channel);
    connect(automatic, &QToolButton::clicked, this, [this, channel] { Q_EMIT autoRequested(channel); });
    for (QSpinBox* spin : {made.black, made.white}) {
        // Half a number would push the other one away.
        spin->setKeyboardTracking(false);
        connect(spin, qOverload<int>(&QSpinBox::valueChanged), this, [this, index] { readNumbers(index); });
    }
    connect(made.gamma, &FloatSpinBox::doubleValueChanged, this, [this, index] { readNumbers(index); });
    connect(made.strip, &LevelStrip::dragBegan, this, &LevelsPanel::dragBegan);
    connect(made.strip, &LevelStrip::dragEnded, this, &LevelsPanel::dragEnded);
    connect(made.strip, &LevelStrip::levelsDragged, this,
            [this, channel](const PaletteLevels& levels) { Q_EMIT levelsChanged(channel, levels); });
    QWidget* const columns[] = {made.name, made.strip, made.black, made.white, made.gamma, made.automatic};
    for (int column = 0; column <= AutoColumn; ++column)
        m_grid->addWidget(columns[column], channel + 1, column);
    m_widgets.push_back(made);
}

void LevelsPanel::setRows(std::vector<Row> rows)
{
    m_rows = std::move(rows);
    const std::size_t made = m_widgets.size();
    while (m_widgets.size() < m_rows.size())
        makeRow(static_cast<int>(m_widgets.size()));
    for (std::size_t i = 0; i < m_widgets.size(); ++i) {
        const Widgets& row = m_widgets[i];
        for (QWidget* each : std::initializer_list<QWidget*>{row.name, row.strip, row.black, row.white,
                                                             row.gamma, row.automatic})
            each->setVisible(i < m_rows.size());
    }
    for (std::size_t i = 0; i < m_rows.size(); ++i)
        showRow(i);
    m_none->setVisible(m_rows.empty());
    if (m_widgets.size() > made)
        Q_EMIT rowsMade();
}

void LevelsPanel::showRow(std::size_t channel)
{
    const Row& row = m_rows[channel];
    const Widgets& widgets = m_widgets[channel];
    widgets.name->setText(row.name);
    for (QWidget* each : std::initializer_list<QWidget*>{widgets.strip, widgets.black, widgets.white,
                                                         widgets.gamma, widgets.automatic})
        each->setEnabled(row.isEnabled);
    const double last = static_cast<double>(row.counts.size()) - 1;
    for (QSpinBox* spin : {widgets.black, widgets.white}) {
        const QSignalBlocker blocker(spin);
        spin->setRange(0, static_cast<int>(std::ceil(last * row.intensitiesAnIndex)));
    }
    widgets.strip->setHistogram(histogramHeights(
        row.counts, {}, isLogarithmic() ? HistogramScale::Logarithm : HistogramScale::Formula));
    showNumbers(channel);
}

void LevelsPanel::showNumbers(std::size_t channel)
{
    const Row& row = m_rows[channel];
    const Widgets& widgets = m_widgets[channel];
    const QSignalBlocker blockers[] = {QSignalBlocker(widgets.black), QSignalBlocker(widgets.white),
                                       QSignalBlocker(widgets.gamma)};
    widgets.strip->setLevels(row.levels);
    widgets.black->setValue(qRound(row.levels.black * row.intensitiesAnIndex));
    widgets.white->setValue(qRound(row.levels.white * row.intensitiesAnIndex));
    widgets.gamma->setDoubleValue(row.levels.gamma);
}

/// What a spin box does not show differently stays as exact as it was.
void LevelsPanel::readNumbers(std::size_t channel)
{
    const Row& row = m_rows[channel];
    const Widgets& widgets = m_widgets[channel];
    PaletteLevels levels = row.levels;
    const auto read = [&](const QSpinBox* spin, double& level) {
        if (spin->value() != qRound(level * row.intensitiesAnIndex))
            level = spin->value() / row.intensitiesAnIndex;
    };
    read(widgets.black, levels.black);
    read(widgets.white, levels.white);
    levels.gamma = widgets.gamma->doubleValue();
    Q_EMIT levelsChanged(static_cast<int>(channel),
                         usableLevels(levels, static_cast<int>(row.counts.size())));
}

void LevelsPanel::setLevels(const std::vector<PaletteLevels>& levels)
{
    for (std::size_t i = 0; i < std::min(levels.size(), m_rows.size()); ++i) {
        m_rows[i].levels = levels[i];
        showNumbers(i);
    }
}

void LevelsPanel::showHistograms()
{
    for (std::size_t i = 0; i < m_rows.size(); ++i)
        showRow(i);
}

} // namespace tirn
