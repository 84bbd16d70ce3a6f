#include "pictures/picturelayout.h"

#include <algorithm>
#include <cmath>

namespace tirn {

namespace {

constexpr int kStripMargin = 10;
constexpr int kSideGap = 5;
/// The rows between the main view and one above or below it, its margin included.
constexpr int kRowGap = kStripMargin + kSideGap;

} // namespace

int firstGridSide(int cells) { return static_cast<int>(std::floor(std::sqrt(cells) + 0.5)); }

std::optional<int> configuredGridSide(int channels)
{
    return channels == 1 ? std::nullopt : std::optional(firstGridSide(gridCells(channels)));
}

int otherGridSide(int cells, int side, int present)
{
    const int given = std::max(1, side);
    int other = std::max(1, present);
    while (other > 1 && given * other > cells)
        --other;
    while (given * other < cells)
        ++other;
    return other;
}

QStringList gridItems(int channels)
{
    QStringList items;
    for (int c = 0; c < channels; ++c)
        items.append(QString::number(c));
    return items << "All"
                 << "Off";
}

int firstGridItem(int cell, int channels) { return std::min(cell, channels + 1); }

CrossLayout crossLayout(QSize frame, int width, int height, int depth, const CrossSides& sides)
{
    const double share = static_cast<double>(depth) / std::max({1, width, height});
    CrossLayout layout;
    layout.sides = sides;
    layout.frame = frame;
    layout.zThick = static_cast<int>(std::floor(share * frame.width())) + kStripMargin;
    layout.yThick = static_cast<int>(std::floor(share * frame.height()));
    layout.zThick = std::min(layout.zThick, frame.width());
    // A strip higher than the frame is wide makes the other one as thick as the frame is high.
    if (layout.yThick + kStripMargin > frame.width())
        layout.zThick = frame.height();
    layout.offset = (frame.width() - layout.zThick) / 2;
    layout.canvas = {frame.width() + (layout.zThick + kSideGap) * (int{sides.left} + int{sides.right}),
                     frame.height() + (layout.yThick + kRowGap) * (int{sides.top} + int{sides.bottom})};
    return layout;
}

QList<CrossView> CrossLayout::views() const
{
    const int left = sides.left ? zThick + kSideGap : 0;
    const int top = sides.top ? yThick + kRowGap : 0;
    const QRect across(0, offset, frame.width(), yThick + kStripMargin);
    const QRect along(offset, 0, zThick, frame.height());
    QList<CrossView> all;
    if (sides.top)
        all.append({90, 0, across, {left, 0}});
    if (sides.left)
        all.append({0, 90, along, {0, top}});
    if (sides.right)
        all.append({0, -90, along, {left + kSideGap + frame.width(), top}});
    if (sides.bottom)
        all.append({-90, 0, across, {left, top + kSideGap + frame.height()}});
    all.append({0, 0, QRect(QPoint(0, 0), frame), {left, top}});
    return all;
}

StereoPlaces stereoPlaces(int frameWidth, bool rightEyeDominant)
{
    return rightEyeDominant ? StereoPlaces{0, frameWidth} : StereoPlaces{frameWidth, 0};
}

} // namespace tirn
