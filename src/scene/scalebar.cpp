#include "scene/scalebar.h"

#include <cmath>

namespace tirn {

namespace {

constexpr double kMicronsAMillimetre = 1000;
constexpr double kNanometresAMicron = 1000;
/// What a quotient may be too small by rounding alone.
constexpr double kSlack = 1e-9;

/// How many of the volume's units a projection unit spans in the plane through the volume's middle.
double unitsSpanned(const ViewState& view)
{
    if (!isStereo(view.renderMode))
        return 1;
    const double toMiddle = -dot(view.camera.vpos, normalize(view.camera.vdir));
    // The top of a perspective has the tangent of half its angle.
    return toMiddle > 0 ? toMiddle / perspectiveMatrix(kStereoAngle, 1, 1, 2)[5] : 1;
}

} // namespace

ScaleBarLabel scaleBarLabel(double barSize, int maxPow, double voxelSizeX, double scaleX)
{
    if (!(voxelSizeX > 0) || scaleX == 0)
        return {0, "unknown", false};
    const double length = maxPow * (barSize / 2) * voxelSizeX / scaleX;
    const bool whole = length - std::floor(length) < 0.1;
    return {length, QString::asprintf(whole ? "%.0f" : "%.1f", length) + QStringLiteral(" \u00b5m"), true};
}

double roundLength(double most)
{
    const double decade = std::pow(10, std::floor(std::log10(most) + kSlack));
    for (const double digit : {5, 2}) {
        if (digit * decade <= most * (1 + kSlack))
            return digit * decade;
    }
    return decade;
}

QString lengthText(double microns)
{
    const auto text = [](double number, const char* unit) {
        return QString::number(number, 'g', 10) + QString::fromUtf8(unit);
    };
    if (microns < 1)
        return text(microns * kNanometresAMicron, " nm");
    return microns < kMicronsAMillimetre ? text(microns, " \u00b5m")
                                         : text(microns / kMicronsAMillimetre, " mm");
}

ScaleBar scaleBarOf(const ViewState& view, int maxPow, double voxelSizeX, double scaleX)
{
    ScaleBar bar = {view.scaleBarSize, scaleBarLabel(view.scaleBarSize, maxPow, voxelSizeX, scaleX)};
    if (!view.roundScaleBar || !(bar.label.length > 0))
        return bar;
    const double most = bar.label.length * unitsSpanned(view);
    bar.label.length = roundLength(most);
    bar.label.text = lengthText(bar.label.length);
    bar.size *= bar.label.length / most;
    return bar;
}

} // namespace tirn
