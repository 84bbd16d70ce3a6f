#pragma once

#include <array>
#include <vector>

#include <QColor>
#include <qwt_plot.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_marker.h>
#include <qwt_plot_textlabel.h>

#include "palettes/palettestrokes.h"

namespace tirn {

/// Curves of a palette over the histogram of the voxels that look it up.
///
/// The curves are drawn from the palette's own arrays: `bind` has to be called again, with null before it
/// goes, when the palette is another one.
class PalettePlot : public QwtPlot
{
    Q_OBJECT

public:
    struct CurveStyle
    {
        QString title;
        QColor color;
    };

    PalettePlot(const std::array<CurveStyle, 4>& curves, QWidget* parent);

    void bind(const Palette* palette, PaletteView view);
    /// The top of the axis of the histogram, and heights by index; none takes the histogram away.
    void setCountAxis(double top, bool logarithmic);
    void setHistogram(const std::vector<double>& heights);
    void setValueAxis(double from, double to);
    /// The part of the index axis that is shown, and what the stack's own scale reads there; no scale is
    /// shown where it is the same.
    void setIndexAxis(double from, double to);
    void setIntensityAxis(double from, double to, bool visible);
    void setMarkedIndex(int index);
    /// A line of advice in the middle; empty for none.
    void setHint(const QString& text);

    const QwtPlotCurve& curve(std::size_t i) const { return *m_curves[i]; }
    const QwtPlotCurve& histogram() const { return *m_histogram; }
    /// The nearest index and value to a place on the canvas, in range or not.
    CurvePoint pointAt(const QPoint& place) const;
    QPoint placeOf(const CurvePoint& point) const;

Q_SIGNALS:
    void mousePressed(const QMouseEvent& event);
    void mouseMoved(const QMouseEvent& event);
    void mouseReleased(const QMouseEvent& event);
    /// The canvas lies elsewhere in the plot than before.
    void canvasMoved();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void setUpCanvas();
    void setUpAxes();

    std::vector<double> m_indices;
    std::array<QwtPlotCurve*, 4> m_curves;
    QwtPlotCurve* m_histogram;
    QwtPlotMarker* m_mark;
    QwtPlotTextLabel* m_hint;
};

} // namespace tirn
