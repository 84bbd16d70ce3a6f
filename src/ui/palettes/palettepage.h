#pragma once

#include "palettes/palettewindow.h"
#include "ui/palettes/paletteplot.h"

class QCheckBox;

namespace tirn {

class FloatSpinBox;
class PaletteBarWidget;

/// One view of a palette: its plot with the bars of colour and opacity below, and the numbers and edit boxes
/// of its four curves beside. It shows; what its widgets ask for is done by the form.
class PalettePage : public QWidget
{
    Q_OBJECT

public:
    PalettePage(PaletteView view, QWidget* parent);

    PaletteView view() const { return m_view; }
    PalettePlot& plot() const { return *m_plot; }
    PaletteBarWidget& bar() const { return *m_bar; }
    FloatSpinBox& indexSpin() const { return *m_index; }
    FloatSpinBox& valueSpin(std::size_t curve) const { return *m_values[curve]; }
    QCheckBox& editBox(std::size_t curve) const { return *m_edits[curve]; }

    int index() const;
    std::array<bool, 4> flags() const;

    /// Takes another palette, null for none, over part of the index axis.
    void showPalette(const Palette* palette, const PaletteWindow& window);
    /// The values at the index, bars and curves. Sends no signals.
    void showValues();
    void setBarShown(bool shown);

Q_SIGNALS:
    void indexChanged(double index);
    void colorChanged(double value);
    void editBoxClicked();

private:
    void buildNumbers();
    void fitBars();

    PaletteView m_view;
    const Palette* m_palette = nullptr;
    PaletteWindow m_window;
    PalettePlot* m_plot;
    QWidget* m_bars;
    PaletteBarWidget* m_bar;
    PaletteBarWidget* m_opacityBar;
    FloatSpinBox* m_index;
    std::array<FloatSpinBox*, 4> m_values;
    std::array<QCheckBox*, 4> m_edits;
};

} // namespace tirn
