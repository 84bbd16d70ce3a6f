#include "ui/palettes/palettebarwidget.h"

#include <algorithm>
#include <cmath>

#include <QImage>
#include <QPainter>

namespace tirn {

namespace {

const QColor kEmpty(233, 236, 216);

int shownValue(const std::vector<double>& table, double place)
{
    return static_cast<int>(std::clamp(blendedEntry(table, place), 0.0, 255.0));
}

} // namespace

double blendedEntry(const std::vector<double>& table, double place)
{
    if (table.empty())
        return 0;
    const double inside = std::clamp(place, 0.0, static_cast<double>(table.size() - 1));
    const auto below = static_cast<std::size_t>(inside);
    const std::size_t above = std::min(below + 1, table.size() - 1);
    return std::floor(table[below] + (inside - static_cast<double>(below)) * (table[above] - table[below]));
}

PaletteBarWidget::PaletteBarWidget(QWidget* parent) : QWidget(parent)
{
    setFixedHeight(kHeight);
    setMinimumWidth(kLeastWidth);
    setAttribute(Qt::WA_OpaquePaintEvent);
    fill(kEmpty);
}

void PaletteBarWidget::show(const std::function<QRgb(double)>& colorAt)
{
    const int columns = std::max(2, static_cast<int>(width() * devicePixelRatioF()));
    m_columns.resize(static_cast<std::size_t>(columns));
    for (int i = 0; i < columns; ++i)
        m_columns[static_cast<std::size_t>(i)] = colorAt(static_cast<double>(i) / (columns - 1));
    update();
}

void PaletteBarWidget::fill(const QColor& color)
{
    show([rgb = color.rgb()](double) { return rgb; });
}

void PaletteBarWidget::setEmpty() { fill(kEmpty); }

void PaletteBarWidget::setRange(const Palette& palette, double from, double to)
{
    show([&](double part) {
        const double place = from + part * (to - from);
        return qRgb(shownValue(palette.red(), place), shownValue(palette.green(), place),
                    shownValue(palette.blue(), place));
    });
}

void PaletteBarWidget::setRangeWhite(const Palette& palette, double from, double to)
{
    show([&](double part) {
        const int grey = shownValue(palette.alpha(), from + part * (to - from));
        return qRgb(grey, grey, grey);
    });
}

void PaletteBarWidget::paintEvent(QPaintEvent* /*event*/)
{
    QImage row(static_cast<int>(m_columns.size()), 1, QImage::Format_RGB32);
    std::copy(m_columns.begin(), m_columns.end(), reinterpret_cast<QRgb*>(row.bits()));
    QPainter(this).drawImage(rect(), row);
}

void PaletteBarWidget::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    Q_EMIT resized();
}

} // namespace tirn
