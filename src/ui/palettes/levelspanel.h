#pragma once

#include <vector>

#include <QWidget>

#include "palettes/palettelevels.h"

class QCheckBox;
class QGridLayout;
class QLabel;
class QSpinBox;

namespace tirn {

class FloatSpinBox;
class LevelStrip;

/// Black, white and gamma for each channel of a volume. It shows; what its widgets ask for is done by the
/// form.
class LevelsPanel : public QWidget
{
    Q_OBJECT

public:
    /// What a row shows. Levels are in the palette's units, the numbers beside them in those of the stack.
    struct Row
    {
        QString name;
        std::vector<double> counts;
        PaletteLevels levels;
        /// How many of the stack's intensities an index stands for.
        double intensitiesAnIndex = 1;
        bool isEnabled = true;
    };

    explicit LevelsPanel(QWidget* parent);

    void setRows(std::vector<Row> rows);
    /// Other levels in the rows that there are.
    void setLevels(const std::vector<PaletteLevels>& levels);
    bool isLogarithmic() const;

Q_SIGNALS:
    /// A handle was taken: what follows, up to the end, is one step.
    void dragBegan();
    void dragEnded();
    void levelsChanged(int channel, const tirn::PaletteLevels& levels);
    void autoRequested(int channel);
    void scaleChanged();
    /// Rows have spin boxes that were not there before.
    void rowsMade();

private:
    struct Widgets
    {
        QLabel* name;
        LevelStrip* strip;
        QSpinBox* black;
        QSpinBox* white;
        FloatSpinBox* gamma;
        QWidget* automatic;
    };
    void makeRow(int channel);
    void showRow(std::size_t channel);
    void showNumbers(std::size_t channel);
    void readNumbers(std::size_t channel);
    void showHistograms();

    QGridLayout* m_grid;
    QCheckBox* m_logarithmic;
    QLabel* m_none;
    std::vector<Row> m_rows;
    std::vector<Widgets> m_widgets;
};

} // namespace tirn
