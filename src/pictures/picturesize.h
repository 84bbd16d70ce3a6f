#pragma once

#include <QSize>
#include <QString>

namespace tirn {

/// The unit of a picture's side. The numbers are the positions in the form's lists.
enum class SizeUnit { Length = 0, Pixels = 1 };

/// The unit of a resolution, and of the lengths beside it.
enum class ResolutionUnit { Centimetres = 0, Inches = 1 };

/// The side of every printed picture, in pixels.
inline constexpr int kPrintedSide = 2048;

/// "cm" or "inches": what lengths are called.
QString lengthUnitName(ResolutionUnit unit);

/// The resolution that the writers get, in dots per inch: centimetres are divided by 2.54 and rounded down.
int dotsPerInch(int resolution, ResolutionUnit unit);

/// A side in pixels from the number that stands in the form; a resolution is in pixels a unit of length.
int pixelsOf(double side, SizeUnit unit, int resolution, bool printed = false);
/// The number that stands in the form for a side in pixels.
double sideOf(int pixels, SizeUnit unit, int resolution);

/// How the form's number box of a side is set up.
struct SideBox
{
    double minimum = 1;
    double step = 1;
    double value = 1;

    bool operator==(const SideBox&) const = default;
};
/// The box after its unit has changed. Pixels are rounded to whole ones.
SideBox convertedSide(double value, SizeUnit from, SizeUnit to, int resolution);

/// Whether a picture of this size, with 32 bits a pixel, is smaller than the machine's memory.
bool fitsMemory(QSize size);

/// The factor by which overlays grow with a picture: the longer side over 512.
double overlayScale(QSize size);
/// The same in whole numbers and never below 1, as snapshots of the window take it.
double snapshotOverlayScale(QSize size);

} // namespace tirn
