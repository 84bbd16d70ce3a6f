#include "movies/movieposes.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tirn {

namespace {

using Angles = std::array<double, 3>;

enum AxisIndex { AxisX = 0, AxisY = 1, AxisZ = 2 };

Angles angles(const KeyFrame& frame) { return {frame.xrot, frame.yrot, frame.zrot}; }

void setAngles(KeyFrame& frame, const Angles& angles)
{
    frame.xrot = angles[AxisX];
    frame.yrot = angles[AxisY];
    frame.zrot = angles[AxisZ];
}

/// How many times as long a movie is that takes its axes one after the other.
int axesInTurn(MovieAxis axis)
{
    switch (axis) {
    case MovieAxis::XThenY:
    case MovieAxis::XThenZ:
    case MovieAxis::YThenZ:
        return 2;
    case MovieAxis::XThenYThenZ:
        return 3;
    default:
        return 1;
    }
}

struct AxisPair
{
    AxisIndex first;
    AxisIndex second;
};

AxisPair axesTogether(MovieAxis axis)
{
    return axis == MovieAxis::XAndY   ? AxisPair{AxisX, AxisY}
           : axis == MovieAxis::XAndZ ? AxisPair{AxisX, AxisZ}
                                      : AxisPair{AxisY, AxisZ};
}

AxisIndex rotatingAxis(MovieAxis axis, std::int64_t f, std::int64_t turn)
{
    switch (axis) {
    case MovieAxis::XThenY:
        return f < turn ? AxisX : AxisY;
    case MovieAxis::XThenZ:
        return f < turn ? AxisX : AxisZ;
    case MovieAxis::YThenZ:
        return f < turn ? AxisY : AxisZ;
    case MovieAxis::XThenYThenZ:
        return f < turn ? AxisX : f < 2 * turn ? AxisY : AxisZ;
    default:
        return static_cast<AxisIndex>(axis);
    }
}

enum class Rocked { Nothing, X, Y, Z, Two };

/// One chain of questions, in which X is asked for first and Z last. So YThenZ never comes to Z and shows
/// nothing in its first period, and with several rotations no later period goes back to X.
Rocked rockedAxis(MovieAxis axis, std::int64_t f, std::int64_t period)
{
    const bool first = f < period;
    switch (axis) {
    case MovieAxis::X:
        return Rocked::X;
    case MovieAxis::Y:
        return Rocked::Y;
    case MovieAxis::Z:
        return Rocked::Z;
    case MovieAxis::XThenY:
        return first ? Rocked::X : Rocked::Y;
    case MovieAxis::XThenZ:
        return first ? Rocked::X : Rocked::Z;
    case MovieAxis::YThenZ:
        return first ? Rocked::Nothing : Rocked::Y;
    case MovieAxis::XThenYThenZ:
        return first ? Rocked::X : f < 2 * period ? Rocked::Y : Rocked::Z;
    default:
        return Rocked::Two;
    }
}

/// The third phase's formula, which the z axis takes for all phases.
double rockedBack(double base, double i, double move, double angle)
{
    return (base + angle) - (i - 3 * move) / move * angle;
}

double rocked(double base, double i, double move, double angle)
{
    if (i < move)
        return base - i / move * angle;
    if (i < 3 * move)
        return (i - move) / move * angle + (base - angle);
    return rockedBack(base, i, move, angle);
}

/// A side of the cut box: low is the smaller one.
double& lowSide(KeyFrame& frame, int axis)
{
    return axis == AxisX ? frame.xmin : axis == AxisY ? frame.ymin : frame.zmin;
}
double& highSide(KeyFrame& frame, int axis)
{
    return axis == AxisX ? frame.xmax : axis == AxisY ? frame.ymax : frame.zmax;
}

std::int64_t atLeastOne(std::int64_t count) { return std::max<std::int64_t>(count, 1); }

} // namespace

std::int64_t movieFrames(const MovieSettings& settings, std::int64_t keyFrames)
{
    const auto product = [](std::int64_t a, std::int64_t b, int axes) {
        return std::max<std::int64_t>(a, 0) * std::max<std::int64_t>(b, 0) * axes;
    };
    switch (settings.type) {
    case MovieType::Custom:
        return std::max<std::int64_t>(keyFrames, 0);
    case MovieType::PassThrough:
        return product(settings.pass.frames, settings.pass.type == PassType::OutAndIn ? 2 : 1, 1);
    case MovieType::Rotation:
        return product(settings.rotation.rotations, settings.rotation.framesPerRotation,
                       axesInTurn(settings.rotation.axis));
    case MovieType::Rocking:
        return product(settings.rocking.rotations, settings.rocking.framesPerMove,
                       4 * axesInTurn(settings.rocking.axis));
    case MovieType::TimeOnly:
        return std::max(settings.timeOnlyFrames, 0);
    }
    return 0;
}

void poseRotation(const RotationSettings& settings, const KeyFrame& start, std::int64_t f, KeyFrame& pose)
{
    const Angles base = settings.useOrientation ? angles(start) : Angles{};
    const std::int64_t turn = std::int64_t{settings.rotations} * settings.framesPerRotation;
    const double angle =
        static_cast<double>(f) * 360.0 / static_cast<double>(atLeastOne(settings.framesPerRotation));
    Angles turned = base;
    if (settings.axis >= MovieAxis::XAndY) {
        // Both axes take the angle of x, the second one, too.
        const AxisPair pair = axesTogether(settings.axis);
        turned[pair.first] = turned[pair.second] = base[AxisX] + angle;
    } else {
        turned[rotatingAxis(settings.axis, f, turn)] += angle;
    }
    setAngles(pose, turned);
}

void poseRocking(const RockingSettings& settings, const KeyFrame& start, std::int64_t f, std::int64_t total,
                 KeyFrame& pose)
{
    const Angles base = settings.useOrientation ? angles(start) : Angles{};
    const std::int64_t period =
        atLeastOne(total / atLeastOne(std::int64_t{axesInTurn(settings.axis)} * settings.rotations));
    const auto i = static_cast<double>(f % period);
    const auto move = static_cast<double>(atLeastOne(settings.framesPerMove));
    const double angle = settings.angle;
    Angles turned = base;
    switch (rockedAxis(settings.axis, f, period)) {
    case Rocked::Nothing:
        return;
    case Rocked::X:
        turned[AxisX] = rocked(base[AxisX], i, move, angle);
        break;
    case Rocked::Y:
        turned[AxisY] = rocked(base[AxisY], i, move, angle);
        break;
    case Rocked::Z:
        turned[AxisZ] = rockedBack(base[AxisZ], i, move, angle);
        break;
    case Rocked::Two:
        for (const AxisIndex axis : {axesTogether(settings.axis).first, axesTogether(settings.axis).second})
            turned[axis] = rocked(base[axis], i, move, angle);
        break;
    }
    setAngles(pose, turned);
}

void posePassThrough(const PassSettings& settings, const KeyFrame& start, std::int64_t f, std::int64_t total,
                     KeyFrame& pose)
{
    constexpr std::array<Angles, 3> views = {Angles{0, -90, 0}, Angles{-90, 0, 0}, Angles{0, 0, 0}};
    const int axis = std::clamp(settings.axis, 0, 2);
    if (!settings.useOrientation)
        setAngles(pose, views[static_cast<std::size_t>(axis)]);

    KeyFrame saved = start;
    const double low = lowSide(saved, axis);
    const double high = highSide(saved, axis);
    const double distance = std::trunc(high - low);
    const auto slices = [distance](std::int64_t done, std::int64_t of) {
        const double part = static_cast<double>(done) / static_cast<double>(atLeastOne(of));
        return std::floor(part * distance + 0.5);
    };
    const std::int64_t out = total / 2 + total % 2;
    switch (settings.type) {
    case PassType::TopToBottom:
        lowSide(pose, axis) = low + slices(f, total);
        break;
    case PassType::BottomToTop:
        lowSide(pose, axis) = high - slices(f, total);
        break;
    case PassType::OutAndIn:
        // Comes back the way that it went; the movie of time frames goes on from the far side instead.
        lowSide(pose, axis) = low + (f < out ? slices(f, out) : slices(total - f, total - out));
        break;
    case PassType::SinglePlane:
        lowSide(pose, axis) = highSide(pose, axis) = low + slices(f, total);
        break;
    }
}

void poseCustom(std::span<const KeyFrame> frames, std::int64_t f, KeyFrame& pose)
{
    if (f >= 0 && f < static_cast<std::int64_t>(frames.size()))
        replayKeyFrame(frames[static_cast<std::size_t>(f)], pose);
}

void poseMovie(const MovieSettings& settings, const KeyFrame& start, std::span<const KeyFrame> frames,
               std::int64_t f, std::int64_t total, KeyFrame& pose)
{
    switch (settings.type) {
    case MovieType::Custom:
        return poseCustom(frames, f, pose);
    case MovieType::PassThrough:
        return posePassThrough(settings.pass, start, f, total, pose);
    case MovieType::Rotation:
        return poseRotation(settings.rotation, start, f, pose);
    case MovieType::Rocking:
        return poseRocking(settings.rocking, start, f, total, pose);
    case MovieType::TimeOnly:
        return;
    }
}

std::int64_t framesPerFlash(int flashMilliseconds)
{
    return atLeastOne(static_cast<std::int64_t>(std::floor(flashMilliseconds / 1000.0 * 15.0 + 0.5)));
}

void countFrame(std::int64_t f, int flashMilliseconds, KeyFrame& pose)
{
    if (f % framesPerFlash(flashMilliseconds) != 0)
        return;
    turnFlashes(pose.channels);
    rotateFlash(pose.channels);
}

} // namespace tirn
