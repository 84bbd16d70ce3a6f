#pragma once

#include <array>

#include <QDomElement>
#include <QSize>

#include "scene/viewstate.h"

namespace tirn {

// How a session keeps the view, in two elements. Reading takes attributes that are missing from the defaults,
// leaves what a missing child would say as it is, and bounds what the view cannot be.

/// The texts of the modes and of the focal points in sessions and lists, in the order of their numbers.
extern const std::array<const char*, 5> kRenderModeTexts;
extern const std::array<const char*, 3> kFocalPointTexts;

/// The focal lengths that the focal points stand for are 1, 2 and 3; any other belongs to the nearest.
int focalPointOf(double focalLength);
double focalLengthOf(int focalPoint);

/// How far apart the eyes may stand, and how far a volume may be moved, in drawing units.
inline constexpr double kMostEyeSeparation = 1;
inline constexpr double kMostTranslation = 100;

struct SessionWindow
{
    QSize size;
    bool preservesRatio = false;

    bool operator==(const SessionWindow&) const = default;
};

/// Pose, colours, bounding box and scale bar.
void writeView(QDomElement& element, const ViewState& view, const SessionWindow& window);
void readView(const QDomElement& element, ViewState& view, SessionWindow& window);

/// Blending and stereo. Reading does not take over the mode's projection.
void writeRendering(QDomElement& element, const ViewState& view);
void readRendering(const QDomElement& element, ViewState& view);

} // namespace tirn
