#pragma once

#include <functional>
#include <vector>

#include <QImage>

#include "pictures/picturelayout.h"
#include "scene/scene.h"

namespace tirn {

/// Takes composites of several pictures of one scene. What a composite changes of scene and view for its
/// pictures is as before when it returns.
///
/// `capture` gives a picture of the scene as it is, of `frame` pixels; a null picture ends the composite,
/// which then is null, too.
struct SnapshotSource
{
    Scene& scene;
    QSize frame;
    std::function<QImage()> capture;
    /// Turns the view to angles in degrees, whatever it was before.
    std::function<void(double x, double y, double z)> rotate;
};

/// A grid of pictures, row by row, on black: an item below the number of channels shows that channel alone,
/// the next one all of them, any other leaves its cell black.
QImage channelGrid(const SnapshotSource& source, QSize grid, const std::vector<int>& items);

/// Two pictures side by side, turned by half an angle about y to either side.
QImage stereoPair(const SnapshotSource& source, double angle, bool rightEyeDominant);

/// The view along z with the views along the other axes around it, on white.
QImage orthographicCross(const SnapshotSource& source, const CrossSides& sides);

} // namespace tirn
