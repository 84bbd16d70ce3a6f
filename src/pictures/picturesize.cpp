#include "pictures/picturesize.h"

#include <algorithm>
#include <cmath>

#include <unistd.h>

#include "base/checkedsize.h"

namespace tirn {

namespace {

/// The longer side of a picture whose overlays are drawn at their own size.
constexpr int kPlainSide = 512;

double factorOf(SizeUnit unit, int resolution) { return unit == SizeUnit::Length ? resolution : 1.0; }

} // namespace

QString lengthUnitName(ResolutionUnit unit)
{
    return unit == ResolutionUnit::Centimetres ? QStringLiteral("cm") : QStringLiteral("inches");
}

int dotsPerInch(int resolution, ResolutionUnit unit)
{
    return unit == ResolutionUnit::Centimetres ? static_cast<int>(std::floor(resolution / 2.54)) : resolution;
}

int pixelsOf(double side, SizeUnit unit, int resolution, bool printed)
{
    return printed ? kPrintedSide : static_cast<int>(std::floor(side * factorOf(unit, resolution)));
}

double sideOf(int pixels, SizeUnit unit, int resolution) { return pixels / factorOf(unit, resolution); }

SideBox convertedSide(double value, SizeUnit from, SizeUnit to, int resolution)
{
    const double pixels = value * factorOf(from, resolution);
    if (to == SizeUnit::Length)
        return {0.01, 0.01, pixels * (1.0 / resolution)};
    return {1, 1, std::floor(pixels + 0.5)};
}

bool fitsMemory(QSize size)
{
    const auto pages = static_cast<std::int64_t>(sysconf(_SC_PHYS_PAGES));
    const std::optional<std::int64_t> memory = checkedProduct({pages, sysconf(_SC_PAGESIZE)});
    const std::optional<std::int64_t> bytes = checkedProduct({size.width(), size.height(), 4});
    return bytes && memory && *bytes < *memory;
}

double overlayScale(QSize size)
{
    return static_cast<double>(std::max(size.width(), size.height())) / kPlainSide;
}

double snapshotOverlayScale(QSize size)
{
    return std::max(1, std::max(size.width(), size.height()) / kPlainSide);
}

} // namespace tirn
