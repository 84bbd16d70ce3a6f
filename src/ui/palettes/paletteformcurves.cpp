// The palette editor: formulas, axes, the shown window, and levels.

#include <algorithm>
#include <cmath>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <QStackedWidget>
#include <QToolButton>

#include "base/log.h"
#include "palettes/palettehistogram.h"
#include "palettes/palettelist.h"
#include "ui/palettes/formulagroup.h"
#include "ui/palettes/levelspanel.h"
#include "ui/palettes/paletteform.h"
#include "ui/widgets/floatspinbox.h"

namespace tirn {

namespace {

enum Axis { HistogramAxis, CurveAxis };

} // namespace

/// The palette remembers the numbers of both views.
void PaletteForm::preserveSpinners()
{
    Palette* palette = currentPalette();
    if (palette == nullptr)
        return;
    edit({}, [&](Scene&) {
        if (m_view == PaletteView::Rgb)
            palette->setRgbCurve(m_curveFormula->curve());
        else
            palette->setHsvCurve(m_curveFormula->curve());
    });
}

void PaletteForm::restoreSpinners()
{
    const Palette* palette = currentPalette();
    if (palette == nullptr)
        return;
    m_curveFormula->setOffsetRange(palette->size() - 1);
    m_curveFormula->setCurve(m_view == PaletteView::Rgb ? palette->rgbCurve() : palette->hsvCurve());
}

void PaletteForm::recomputeCurves()
{
    preserveSpinners();
    const PaletteCurve curve = m_curveFormula->curve();
    // The axis has the palette's own units.
    logDebug("regular %f converted %f", curve.offset, curve.offset);
    const bool ramp = m_curveFormula->kind().currentIndex() == kRampType;
    change([&](Palette& edited) { applyFormula(edited, m_view, curve, ramp); });
}

void PaletteForm::changeCurvesPresets(int preset)
{
    if (preset < 0 || preset > kCustomPreset)
        logDebug("unknown axes preset\n");
    PaletteCurve curve = m_curveFormula->curve();
    curve.power = powerOfPreset(preset);
    m_curveFormula->setCurve(curve);
    endStep();
    recomputeCurves();
}

void PaletteForm::changeAxesPresets(int preset)
{
    if (preset < 0 || preset > kCustomPreset)
        logDebug("unknown axes preset\n");
    m_axisFormula->setCurve({0, 1, powerOfPreset(preset)});
    recomputeAxes();
}

void PaletteForm::cboAxisChanged(int axis)
{
    m_axisFormula->setCurve(m_axes[static_cast<std::size_t>(std::clamp(axis, 0, 1))]);
}

void PaletteForm::recomputeAxes()
{
    const int axis = std::clamp(m_axisFormula->kind().currentIndex(), 0, 1);
    m_axes[static_cast<std::size_t>(axis)] = m_axisFormula->curve();
    if (currentPalette() == nullptr)
        return;
    showHistogram();
    if (axis == HistogramAxis)
        return;
    const PaletteCurve& curves = m_axes[CurveAxis];
    for (PalettePage* each : m_pages) {
        each->plot().setValueAxis(-curves.offset, -curves.offset + 255 / curves.scale);
        // The scale of the histogram acts on its axis as well as on its heights.
        each->plot().setCountAxis(highestCount() / m_axes[HistogramAxis].scale, m_levels->isLogarithmic());
        each->plot().replot();
    }
}

void PaletteForm::toggleColorSpace(bool hsv)
{
    preserveSpinners();
    endStep();
    m_view = hsv ? PaletteView::Hsv : PaletteView::Rgb;
    m_stack->setCurrentIndex(hsv ? 1 : 0);
    // The button says where it leads.
    m_colorSpace->setText(hsv ? "RGB" : "HSB");
    restoreSpinners();
    page().showValues();
}

/// Slider, labels, buttons and plots of the part that is shown.
void PaletteForm::showWindow()
{
    const Palette* palette = currentPalette();
    if (palette == nullptr)
        return;
    m_window = fittedWindow(m_window, palette->size());
    const int end = std::min(m_window.start + m_window.span, palette->size() - 1);
    {
        const QSignalBlocker blocker(m_slider);
        m_slider->setRange(0, palette->size() - m_window.span);
        m_slider->setPageStep(std::max(1, m_window.span / 2));
        m_slider->setValue(m_window.start);
    }
    m_least->setText(QString::number(m_window.start));
    m_largest->setText(QString::number(end));
    m_zoomIn->setEnabled(m_window.span > kLeastWindowSpan);
    m_zoomOut->setEnabled(m_window.span < palette->size());
    const int depth = stackDepth();
    for (PalettePage* each : m_pages) {
        each->showPalette(palette, m_window);
        each->plot().setIntensityAxis(toPaletteIndex(m_window.start, palette->depth(), depth),
                                      toPaletteIndex(end, palette->depth(), depth),
                                      depth > 0 && depth != palette->depth());
        each->plot().replot();
    }
}

void PaletteForm::zoomIn()
{
    if (const Palette* palette = currentPalette()) {
        m_window = zoomedIn(m_window, palette->size());
        showWindow();
    }
}

void PaletteForm::zoomOut()
{
    if (const Palette* palette = currentPalette()) {
        m_window = zoomedOut(m_window, palette->size());
        showWindow();
    }
}

void PaletteForm::offsetPalette(int start)
{
    m_window.start = start;
    showWindow();
}

void PaletteForm::zoomAuto()
{
    const Palette* palette = currentPalette();
    const int channel = channelOfSelected();
    if (palette == nullptr || channel < 0)
        return;
    const VoxelArray& array = *currentArray();
    const int lastValue =
        lastStackIndex(array.stack().bitDepth, array.stack().realBitDepth(), m_dim->isChecked());
    m_window = windowOfData(array.channels()[static_cast<std::size_t>(channel)].stats.histogram, lastValue,
                            m_fromLeast->doubleValue(), m_fromLargest->doubleValue(), palette->depth(),
                            stackDepth());
    showWindow();
}

void PaletteForm::toggleSmartBitDepth(bool dim)
{
    const Palette* palette = currentPalette();
    const VoxelArray* array = currentArray();
    if (palette == nullptr || array == nullptr)
        return;
    const int last = lastStackIndex(array->stack().bitDepth, array->stack().realBitDepth(), dim);
    const double reached = fromPaletteIndex(last, palette->depth(), stackDepth());
    // All of the palette where nothing is left out, however few bits a sample has.
    m_window = {0, dim ? static_cast<int>(reached) + 1 : palette->size()};
    showWindow();
}

Palette* PaletteForm::paletteOfChannel(int channel) const
{
    const VoxelArray* array = currentArray();
    if (array == nullptr || channel >= array->channelCount())
        return nullptr;
    const int index = services().model.read([&](const Scene& shown) {
        return shown.current()->channels()[static_cast<std::size_t>(channel)].display.palette;
    });
    const auto& palettes = scene().palettes;
    const bool valid = index >= 0 && index < static_cast<int>(palettes.size());
    return valid ? palettes[static_cast<std::size_t>(index)].get() : nullptr;
}

void PaletteForm::showLevelRows()
{
    std::vector<LevelsPanel::Row> rows;
    const VoxelArray* array = currentArray();
    for (int c = 0; array != nullptr && c < array->channelCount(); ++c) {
        LevelsPanel::Row row;
        row.name = tr("Channel %1").arg(c + 1);
        const Palette* palette = paletteOfChannel(c);
        row.isEnabled = palette != nullptr;
        if (palette != nullptr) {
            row.levels = palette->levels();
            row.counts = countsOnPalette(array->channels()[static_cast<std::size_t>(c)].stats.histogram,
                                         palette->depth(), stackDepth());
            row.intensitiesAnIndex = std::ldexp(1.0, stackDepth() - palette->depth());
        }
        rows.push_back(std::move(row));
    }
    m_levels->setRows(std::move(rows));
}

void PaletteForm::showLevels()
{
    std::vector<PaletteLevels> levels;
    const VoxelArray* array = currentArray();
    for (int c = 0; array != nullptr && c < array->channelCount(); ++c) {
        const Palette* palette = paletteOfChannel(c);
        levels.push_back(palette != nullptr ? palette->levels() : PaletteLevels());
    }
    m_levels->setLevels(levels);
}

void PaletteForm::setLevels(int channel, const PaletteLevels& levels)
{
    if (Palette* palette = paletteOfChannel(channel))
        change(*palette, [&](Palette& edited) { edited.setLevels(levels); });
}

} // namespace tirn
