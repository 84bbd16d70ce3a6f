#pragma once

#include <vector>

#include <QWidget>

#include "palettes/palettelevels.h"

namespace tirn {

/// A histogram with three handles below it: black, middle and white.
class LevelStrip : public QWidget
{
    Q_OBJECT

public:
    explicit LevelStrip(QWidget* parent = nullptr);

    /// Heights by index of a palette.
    void setHistogram(const std::vector<double>& heights);
    void setLevels(const PaletteLevels& levels);
    const PaletteLevels& levels() const { return m_levels; }
    /// Where a handle stands: black, white, or the middle between them, in pixels from the left.
    enum class Handle { Black, White, Middle };
    int placeOf(Handle handle) const;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    void dragBegan();
    void levelsDragged(const tirn::PaletteLevels& levels);
    void dragEnded();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    double lastIndex() const { return static_cast<double>(m_heights.size()) - 1; }
    double indexAt(int x) const;
    double xOf(double index) const;
    int handleHeight() const { return fontMetrics().height() * 2 / 3; }
    void drawHistogram(QPainter& painter, const QRectF& area) const;
    void drawHandle(QPainter& painter, Handle handle) const;

    std::vector<double> m_heights;
    PaletteLevels m_levels;
    Handle m_dragged = Handle::Black;
    bool m_isDragging = false;
};

/// Levels whose handle was moved to an index. Black and white push nothing: they stop beside each other. The
/// middle is where half of the range is reached.
PaletteLevels withHandle(PaletteLevels levels, LevelStrip::Handle handle, double index, int size);
double indexOfHandle(const PaletteLevels& levels, LevelStrip::Handle handle);

} // namespace tirn
