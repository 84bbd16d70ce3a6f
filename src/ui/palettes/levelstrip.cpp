#include "ui/palettes/levelstrip.h"

#include <algorithm>
#include <cmath>

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include "ui/palettes/plotcolors.h"

namespace tirn {

namespace {

constexpr LevelStrip::Handle kHandles[] = {LevelStrip::Handle::Middle, LevelStrip::Handle::Black,
                                           LevelStrip::Handle::White};
const QColor kCutOff(0, 0, 0, 150);

} // namespace

double indexOfHandle(const PaletteLevels& levels, LevelStrip::Handle handle)
{
    switch (handle) {
    case LevelStrip::Handle::Black:
        return levels.black;
    case LevelStrip::Handle::White:
        return levels.white;
    case LevelStrip::Handle::Middle:
        break;
    }
    return levels.black + std::pow(0.5, levels.gamma) * (levels.white - levels.black);
}

PaletteLevels withHandle(PaletteLevels levels, LevelStrip::Handle handle, double index, int size)
{
    switch (handle) {
    case LevelStrip::Handle::Black:
        levels.black = std::min(index, levels.white - 1);
        break;
    case LevelStrip::Handle::White:
        levels.white = std::max(index, levels.black + 1);
        break;
    case LevelStrip::Handle::Middle: {
        const double part = (index - levels.black) / (levels.white - levels.black);
        levels.gamma = std::log(std::clamp(part, 1e-4, 1 - 1e-4)) / std::log(0.5);
        break;
    }
    }
    return usableLevels(levels, size);
}

LevelStrip::LevelStrip(QWidget* parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setToolTip(tr("Drag the handles: black, the middle, white."));
    setCursor(Qt::SizeHorCursor);
}

QSize LevelStrip::sizeHint() const
{
    return {fontMetrics().averageCharWidth() * 30, fontMetrics().height() * 3};
}

void LevelStrip::setHistogram(const std::vector<double>& heights)
{
    m_heights = heights;
    update();
}

void LevelStrip::setLevels(const PaletteLevels& levels)
{
    m_levels = levels;
    update();
}

double LevelStrip::xOf(double index) const
{
    const double margin = handleHeight() / 2.0;
    return margin + index / std::max(lastIndex(), 1.0) * (width() - 2 * margin);
}

double LevelStrip::indexAt(int x) const
{
    const double margin = handleHeight() / 2.0;
    return (x - margin) / std::max(width() - 2 * margin, 1.0) * lastIndex();
}

int LevelStrip::placeOf(Handle handle) const { return qRound(xOf(indexOfHandle(m_levels, handle))); }

void LevelStrip::drawHistogram(QPainter& painter, const QRectF& area) const
{
    const double top = m_heights.empty() ? 0 : *std::max_element(m_heights.begin(), m_heights.end());
    if (top <= 0)
        return;
    QPainterPath shape(QPointF(xOf(0), area.bottom()));
    // One step a pixel, as high as the highest of the indices that fall into it.
    const double first = xOf(0);
    double highest = 0;
    double pixel = first;
    for (std::size_t i = 0; i < m_heights.size(); ++i) {
        highest = std::max(highest, m_heights[i]);
        const double x = xOf(static_cast<double>(i));
        if (x < pixel && i + 1 < m_heights.size())
            continue;
        shape.lineTo(x, area.bottom() - highest / top * area.height());
        highest = 0;
        pixel = x + 1;
    }
    shape.lineTo(xOf(lastIndex()), area.bottom());
    QColor filled = kHistogramColor;
    filled.setAlpha(150);
    painter.fillPath(shape, filled);
}

void LevelStrip::drawHandle(QPainter& painter, Handle handle) const
{
    const double x = xOf(indexOfHandle(m_levels, handle));
    const double half = handleHeight() / 2.0;
    const double top = height() - handleHeight();
    const QColor inside = handle == Handle::Black   ? QColor(Qt::black)
                          : handle == Handle::White ? QColor(Qt::white)
                                                    : QColor(128, 128, 128);
    painter.setPen(QPen(palette().color(QPalette::WindowText), 1));
    painter.setBrush(inside);
    painter.drawPolygon(QPolygonF(
        {QPointF(x, top), QPointF(x - half + 0.5, height() - 1), QPointF(x + half - 0.5, height() - 1)}));
}

void LevelStrip::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area(xOf(0), 0, xOf(lastIndex()) - xOf(0), height() - handleHeight());
    painter.fillRect(area, kPlotBackground);
    drawHistogram(painter, area);
    const double black = xOf(m_levels.black);
    const double white = xOf(m_levels.white);
    painter.fillRect(QRectF(area.left(), 0, black - area.left(), area.height()), kCutOff);
    painter.fillRect(QRectF(white, 0, area.right() - white, area.height()), kCutOff);
    for (const Handle handle : kHandles)
        drawHandle(painter, handle);
}

void LevelStrip::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || m_heights.empty())
        return;
    const auto distance = [&](Handle handle) { return std::abs(placeOf(handle) - event->pos().x()); };
    m_dragged = *std::min_element(std::begin(kHandles), std::end(kHandles),
                                  [&](Handle a, Handle b) { return distance(a) < distance(b); });
    m_isDragging = true;
    Q_EMIT dragBegan();
}

void LevelStrip::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_isDragging)
        return;
    setLevels(withHandle(m_levels, m_dragged, indexAt(event->pos().x()), static_cast<int>(m_heights.size())));
    Q_EMIT levelsDragged(m_levels);
}

void LevelStrip::mouseReleaseEvent(QMouseEvent* /*event*/)
{
    if (std::exchange(m_isDragging, false))
        Q_EMIT dragEnded();
}

} // namespace tirn
