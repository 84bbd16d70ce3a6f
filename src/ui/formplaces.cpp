#include "ui/formplaces.h"

#include <algorithm>
#include <limits>

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>

namespace tirn {

namespace {

std::int64_t coveredArea(const QRect& form, const std::vector<QRect>& taken)
{
    std::int64_t area = 0;
    for (const QRect& each : taken) {
        const QRect both = form & each;
        area += std::int64_t{both.width()} * both.height();
    }
    return area;
}

/// Places along a side: where the form begins, and just before and behind what stands there.
std::vector<QPoint> placesAlong(const QRect& mainFrame, const QSize& form, const QRect& screen,
                                const std::vector<QRect>& taken, FormSide side)
{
    const QPoint first = formPosition(mainFrame, form, screen, side);
    const bool isUpright = side == FormSide::Left || side == FormSide::Right;
    std::vector<QPoint> places = {first};
    const auto add = [&](int x, int y) {
        places.push_back(onScreen(isUpright ? QPoint(first.x(), y) : QPoint(x, first.y()), form, screen));
    };
    for (const QRect& each : taken) {
        add(each.right() + 1, each.bottom() + 1);
        add(each.left() - form.width(), each.top() - form.height());
    }
    return places;
}

/// Places anywhere that touch what stands there.
std::vector<QPoint> placesBetween(const QSize& form, const QRect& screen, const std::vector<QRect>& taken)
{
    std::vector<QPoint> places;
    for (const QRect& a : taken) {
        for (const QRect& b : taken) {
            for (const int x : {a.left(), a.right() + 1, a.left() - form.width()}) {
                for (const int y : {b.top(), b.bottom() + 1, b.top() - form.height()})
                    places.push_back(onScreen({x, y}, form, screen));
            }
        }
    }
    return places;
}

} // namespace

QPoint onScreen(QPoint corner, const QSize& form, const QRect& screen)
{
    const int right = screen.x() + screen.width() - form.width();
    const int bottom = screen.y() + screen.height() - form.height();
    return {std::max(screen.x(), std::min(corner.x(), right)),
            std::max(screen.y(), std::min(corner.y(), bottom))};
}

QPoint formPosition(const QRect& mainFrame, const QSize& form, const QRect& screen, FormSide side)
{
    QPoint corner = mainFrame.topLeft();
    switch (side) {
    case FormSide::Left:
        corner.setX(mainFrame.left() - form.width());
        break;
    case FormSide::Right:
        corner.setX(mainFrame.left() + mainFrame.width());
        break;
    case FormSide::Above:
        corner.setY(mainFrame.top() - form.height());
        break;
    case FormSide::Below:
        corner.setY(mainFrame.top() + mainFrame.height());
        break;
    }
    return onScreen(corner, form, screen);
}

QPoint freeFormPosition(const QRect& mainFrame, const QSize& form, const QRect& screen,
                        const std::vector<QRect>& taken, FormSide side)
{
    QPoint best = formPosition(mainFrame, form, screen, side);
    std::int64_t least = std::numeric_limits<std::int64_t>::max();
    // Of places that are as good, the first one counts.
    const auto consider = [&](const std::vector<QPoint>& places) {
        for (const QPoint& place : places) {
            const std::int64_t area = coveredArea({place, form}, taken);
            if (area < least) {
                least = area;
                best = place;
            }
        }
    };
    for (const FormSide each : {side, FormSide::Left, FormSide::Right, FormSide::Below, FormSide::Above})
        consider(placesAlong(mainFrame, form, screen, taken, each));
    consider(placesBetween(form, screen, taken));
    return best;
}

QRect screenOf(const QWidget& window)
{
    const QWindow* handle = window.windowHandle();
    const QScreen* screen = handle != nullptr ? handle->screen() : QGuiApplication::primaryScreen();
    return screen->availableGeometry();
}

QPoint firstWindowPosition(const QSize& desktop, int side)
{
    const int width = desktop.width() > 2 * desktop.height() ? desktop.width() / 2 : desktop.width();
    return {(width - side) / 2, (desktop.height() - side) / 2};
}

} // namespace tirn
