#include "ui/palettes/paletteplot.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include <QMouseEvent>
#include <qwt_plot_canvas.h>
#include <qwt_plot_layout.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_widget.h>

#include "ui/palettes/plotcolors.h"

namespace tirn {

namespace {

/// Steps that end at the largest value of a palette.
constexpr double kValueStep = 51;
/// One voxel is to be seen.
constexpr double kLeastLogCount = 0.5;

QFont smallFont(const QWidget& widget)
{
    QFont font = widget.font();
    font.setPointSizeF(font.pointSizeF() * 0.85);
    font.setBold(false);
    return font;
}

} // namespace

PalettePlot::PalettePlot(const std::array<CurveStyle, 4>& curves, QWidget* parent)
    : QwtPlot(parent), m_histogram(new QwtPlotCurve(tr("Histogram"))), m_mark(new QwtPlotMarker),
      m_hint(new QwtPlotTextLabel)
{
    setUpCanvas();
    setUpAxes();
    // The plot owns what is attached to it.
    QColor filled = kHistogramColor;
    filled.setAlpha(70);
    m_histogram->setPen(kHistogramColor, 1);
    m_histogram->setBrush(filled);
    m_histogram->setStyle(QwtPlotCurve::Steps);
    m_histogram->setYAxis(yRight);
    m_histogram->setZ(1);
    m_histogram->attach(this);
    m_mark->setLineStyle(QwtPlotMarker::VLine);
    m_mark->setLinePen(kFaintColor, 0, Qt::DotLine);
    m_mark->setZ(2);
    m_mark->attach(this);
    for (std::size_t i = 0; i < curves.size(); ++i) {
        m_curves[i] = new QwtPlotCurve(curves[i].title);
        m_curves[i]->setPen(curves[i].color, 1.5);
        m_curves[i]->setPaintAttribute(QwtPlotCurve::FilterPoints);
        m_curves[i]->setRenderHint(QwtPlotItem::RenderAntialiased);
        m_curves[i]->setZ(3 + static_cast<double>(i));
        m_curves[i]->attach(this);
    }
    m_hint->setZ(10);
    m_hint->attach(this);
}

void PalettePlot::setUpCanvas()
{
    auto* shown = qobject_cast<QwtPlotCanvas*>(canvas());
    shown->setFrameStyle(QFrame::NoFrame);
    shown->setFocusPolicy(Qt::StrongFocus);
    shown->setFocusIndicator(QwtPlotCanvas::NoFocusIndicator);
    shown->setCursor(Qt::CrossCursor);
    shown->setAccessibleName(tr("Curves"));
    shown->installEventFilter(this);
    setCanvasBackground(kPlotBackground);
    plotLayout()->setAlignCanvasToScales(true);
}

void PalettePlot::setUpAxes()
{
    const QFont font = smallFont(*this);
    const auto name = [&](int axis, const QString& title) {
        QwtText text(title);
        text.setFont(font);
        setAxisTitle(axis, text);
        setAxisFont(axis, font);
        // The bar below has to start where the canvas does.
        axisWidget(axis)->setMargin(2);
    };
    name(xBottom, tr("Palette index"));
    name(xTop, tr("Intensity"));
    name(yLeft, tr("Value"));
    name(yRight, tr("Voxels"));
    setValueAxis(0, 255);
    setIndexAxis(0, 255);
}

void PalettePlot::bind(const Palette* palette, PaletteView view)
{
    if (palette == nullptr) {
        for (QwtPlotCurve* each : m_curves)
            each->setSamples(QVector<QPointF>());
        return;
    }
    if (m_indices.size() != static_cast<std::size_t>(palette->size())) {
        m_indices.resize(static_cast<std::size_t>(palette->size()));
        std::iota(m_indices.begin(), m_indices.end(), 0.0);
    }
    const auto arrays = viewArrays(*palette, view);
    for (std::size_t i = 0; i < m_curves.size(); ++i)
        m_curves[i]->setRawSamples(m_indices.data(), arrays[i]->data(), palette->size());
}

void PalettePlot::setHistogram(const std::vector<double>& heights)
{
    QVector<QPointF> points;
    points.reserve(static_cast<int>(heights.size()));
    // A logarithmic axis has no place for 0.
    const double least = m_histogram->baseline();
    for (std::size_t i = 0; i < heights.size(); ++i)
        points.append({static_cast<double>(i), std::max(least, heights[i])});
    m_histogram->setSamples(points);
    enableAxis(yRight, !heights.empty());
}

void PalettePlot::setCountAxis(double top, bool logarithmic)
{
    const bool was = dynamic_cast<const QwtLogScaleEngine*>(axisScaleEngine(yRight)) != nullptr;
    if (logarithmic && !was)
        setAxisScaleEngine(yRight, new QwtLogScaleEngine);
    else if (!logarithmic && was)
        setAxisScaleEngine(yRight, new QwtLinearScaleEngine);
    m_histogram->setBaseline(logarithmic ? kLeastLogCount : 0);
    setAxisScale(yRight, logarithmic ? kLeastLogCount : 0, std::max(top, 1.0));
}

void PalettePlot::setValueAxis(double from, double to)
{
    setAxisScale(yLeft, from, to, from == 0 && to == 255 ? kValueStep : 0);
}

void PalettePlot::setIndexAxis(double from, double to) { setAxisScale(xBottom, from, to); }

void PalettePlot::setIntensityAxis(double from, double to, bool visible)
{
    enableAxis(xTop, visible);
    setAxisScale(xTop, from, to);
}

void PalettePlot::setMarkedIndex(int index) { m_mark->setXValue(index); }

void PalettePlot::setHint(const QString& text)
{
    QwtText shown(text);
    shown.setColor(kFaintColor);
    shown.setRenderFlags(Qt::AlignCenter);
    m_hint->setText(shown);
}

CurvePoint PalettePlot::pointAt(const QPoint& place) const
{
    return {static_cast<int>(std::floor(invTransform(xBottom, place.x()) + 0.5)),
            static_cast<int>(std::floor(invTransform(yLeft, place.y()) + 0.5))};
}

QPoint PalettePlot::placeOf(const CurvePoint& point) const
{
    return {qRound(transform(xBottom, point.x)), qRound(transform(yLeft, point.y))};
}

bool PalettePlot::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        Q_EMIT mousePressed(*static_cast<QMouseEvent*>(event));
        return true;
    case QEvent::MouseMove:
        Q_EMIT mouseMoved(*static_cast<QMouseEvent*>(event));
        return true;
    case QEvent::MouseButtonRelease:
        Q_EMIT mouseReleased(*static_cast<QMouseEvent*>(event));
        return true;
    case QEvent::Move:
    case QEvent::Resize:
        Q_EMIT canvasMoved();
        break;
    default:
        break;
    }
    return QwtPlot::eventFilter(watched, event);
}

} // namespace tirn
