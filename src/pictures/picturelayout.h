#pragma once

#include <optional>

#include <QPoint>
#include <QRect>
#include <QSize>
#include <QStringList>

namespace tirn {

/// What a snapshot shows. The numbers are the positions in the form's list.
enum class Scenario { Single = 0, Channels = 1, Orthographic = 2, Stereo = 3 };

/// The cells of a grid of channels: one for each channel and one for all.
constexpr int gridCells(int channels) { return channels + 1; }

/// The first width and height of a grid of `cells` cells: the rounded square root.
int firstGridSide(int cells);

/// Both sides of the grid for a stack that became current; nothing for one channel, which leaves the grid as
/// it is.
std::optional<int> configuredGridSide(int channels);

/// The other side of a grid of `cells` cells with one side given: the smallest that has room, looked for
/// from the present one.
int otherGridSide(int cells, int side, int present);

/// The items of a cell's list: the channels, "All" and "Off".
QStringList gridItems(int channels);
/// The item that cell k starts with.
int firstGridItem(int cell, int channels);

/// Sides of an orthographic cross beside its main view.
struct CrossSides
{
    bool top = true;
    bool left = true;
    bool right = true;
    bool bottom = true;

    bool operator==(const CrossSides&) const = default;
};

/// One view of a cross: how the volume is turned, which part of its frame is taken and where that goes.
struct CrossView
{
    double rotX = 0;
    double rotY = 0;
    QRect from;
    QPoint to;
};

/// An orthographic cross of frames of one size.
struct CrossLayout
{
    int zThick = 0;
    int yThick = 0;
    /// Where side views lie in their frames, along and across; worked out from the width in both cases.
    int offset = 0;
    QSize canvas;
    CrossSides sides;
    QSize frame;

    /// In the order in which they are taken: top, left, right, bottom as far as wanted, the main view last.
    QList<CrossView> views() const;
};

/// Lays out a cross for frames of `frame` pixels of a stack with `width` x `height` x `depth` voxels.
CrossLayout crossLayout(QSize frame, int width, int height, int depth, const CrossSides& sides);

/// Where the two frames of a stereo pair go: the view turned by minus half the angle, then the other.
struct StereoPlaces
{
    int minus = 0;
    int plus = 0;
};
StereoPlaces stereoPlaces(int frameWidth, bool rightEyeDominant);

} // namespace tirn
