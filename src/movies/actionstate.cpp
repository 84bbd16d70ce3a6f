#include "movies/actionstate.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/log.h"

namespace tirn {

namespace {

using Field = double KeyFrame::*;

constexpr std::array<Field, 3> kRotation = {&KeyFrame::xrot, &KeyFrame::yrot, &KeyFrame::zrot};
constexpr std::array<Field, 3> kScale = {&KeyFrame::xscale, &KeyFrame::yscale, &KeyFrame::zscale};
constexpr std::array<Field, 3> kTranslation = {&KeyFrame::xtrans, &KeyFrame::ytrans, &KeyFrame::ztrans};
constexpr std::array<Field, 3> kLow = {&KeyFrame::xmin, &KeyFrame::ymin, &KeyFrame::zmin};
constexpr std::array<Field, 3> kHigh = {&KeyFrame::xmax, &KeyFrame::ymax, &KeyFrame::zmax};
constexpr std::array<std::vector<double> PaletteValues::*, 4> kTables = {
    &PaletteValues::red, &PaletteValues::green, &PaletteValues::blue, &PaletteValues::alpha};

/// Everything that one share of a frame is made from.
struct Share
{
    const Action& action;
    const KeyFrame& start;
    KeyFrame& work;
    std::int64_t i;
    std::int64_t frames;
    TimePointCounter& counter;

    bool isFinal() const { return i == frames; }
    /// i and N as numbers; a time frame without frames is at its end.
    double at() const { return frames > 0 ? static_cast<double>(i) : 1.0; }
    double of() const { return frames > 0 ? static_cast<double>(frames) : 1.0; }
    std::array<double, 3> xyz() const { return {action.x, action.y, action.z}; }
};

/// The whole part of a number for a log line, whatever the number is.
int whole(double value)
{
    return std::isfinite(value) ? static_cast<int>(std::clamp(value, -2147483648.0, 2147483647.0)) : 0;
}

void rotate(const Share& s)
{
    for (std::size_t axis = 0; axis < 3; ++axis)
        s.work.*kRotation[axis] = s.start.*kRotation[axis] + s.xyz()[axis] * 360 * s.at() / s.of();
    logDebug("rotate %d %d %d", whole(s.work.xrot), whole(s.work.yrot), whole(s.work.zrot));
}

void scale(const Share& s)
{
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double from = s.start.*kScale[axis];
        s.work.*kScale[axis] = from + (s.xyz()[axis] - from) * s.at() / s.of();
    }
}

void translate(const Share& s)
{
    for (std::size_t axis = 0; axis < 3; ++axis)
        s.work.*kTranslation[axis] = s.start.*kTranslation[axis] + s.at() * s.xyz()[axis] / s.of();
}

const PaletteValues* paletteAt(const std::vector<PaletteValues>& palettes, int index)
{
    return index >= 0 && static_cast<std::size_t>(index) < palettes.size()
               ? &palettes[static_cast<std::size_t>(index)]
               : nullptr;
}

/// Gives each entry of the four tables of `target` what `value` makes of the entry of `from`, and of that of
/// `to`, which has no more entries than are there.
template <class Value>
void fillTables(PaletteValues& target, const PaletteValues& from, const PaletteValues& to, Value value)
{
    for (const auto table : kTables) {
        const std::size_t entries =
            std::min({(target.*table).size(), (from.*table).size(), (to.*table).size()});
        for (std::size_t e = 0; e < entries; ++e)
            (target.*table)[e] = value((from.*table)[e], (to.*table)[e]);
    }
}

void fade(const Share& s, PaletteAction action, PaletteValues& target, const PaletteValues& from,
          const PaletteValues* after)
{
    const double n = s.of();
    const double i = s.at();
    if (action == PaletteAction::FadeIn) {
        fillTables(target, from, from, [=](double t, double) { return std::floor(i * t / n + 0.5); });
    } else if (action == PaletteAction::FadeOut) {
        fillTables(target, from, from, [=](double t, double) { return std::floor((n - i) * t / n + 0.5); });
    } else if (after != nullptr) {
        fillTables(target, from, *after, [=](double t, double a) {
            const double mixed = std::floor(i * a / n + (n - i) * t / n + 0.5);
            return mixed >= 255 ? 255 : mixed;
        });
    }
}

/// The share of one channel. Fades take their table from the start of the time frame, not from the frame
/// before.
void changePalette(const Share& s, PaletteAction action, int afterIndex, ChannelDisplay& channel)
{
    const bool atAnEnd = s.i == 0 || s.isFinal();
    const PaletteValues* from = paletteAt(s.start.palettes, channel.palette);
    const PaletteValues* after = paletteAt(s.start.palettes, afterIndex);
    const bool hasTables = from != nullptr && paletteAt(s.work.palettes, channel.palette) != nullptr;
    switch (action) {
    case PaletteAction::None:
        break;
    case PaletteAction::ChangeTo:
        channel.state = ChannelState::Shown;
        if (atAnEnd && hasTables && after != nullptr)
            fillTables(s.work.palettes[static_cast<std::size_t>(channel.palette)], *after, *after,
                       [](double a, double) { return a; });
        break;
    case PaletteAction::Off:
        channel.state = ChannelState::Hidden;
        break;
    case PaletteAction::FadeIn:
    case PaletteAction::FadeOut:
    case PaletteAction::FadeTo:
        channel.state = ChannelState::Shown;
        if (hasTables)
            fade(s, action, s.work.palettes[static_cast<std::size_t>(channel.palette)], *from, after);
        break;
    case PaletteAction::FlashOnOff:
        channel.state = ChannelState::FlashOn;
        break;
    case PaletteAction::FlashTo:
        if (atAnEnd) {
            channel.state = ChannelState::PaletteSwap;
            channel.alternatePalette = afterIndex;
        }
        break;
    }
}

void changePalettes(const Share& s)
{
    const std::size_t channels = std::min(s.action.paletteActions.size(), s.action.paletteAfter.size());
    for (std::size_t c = 0; c < channels; ++c) {
        const auto action = static_cast<PaletteAction>(s.action.paletteActions[c]);
        if (c < s.work.channels.size())
            changePalette(s, action, s.action.paletteAfter[c], s.work.channels[c]);
        else if (action == PaletteAction::Off)
            logDebug("no channels!");
    }
}

void passThrough(const Share& s)
{
    constexpr std::array<std::array<double, 3>, 3> views = {{{0, -90, 0}, {-90, 0, 0}, {0, 0, 0}}};
    const std::size_t axis = s.action.z == 1.0 ? 2 : s.action.y == 1.0 ? 1 : 0;
    if (s.isFinal()) {
        // The high side stays where a single plane has left it.
        for (std::size_t a = 0; a < 3; ++a) {
            s.work.*kRotation[a] = s.start.*kRotation[a];
            s.work.*kLow[a] = s.start.*kLow[a];
        }
        return;
    }
    for (std::size_t a = 0; a < 3; ++a)
        s.work.*kRotation[a] = views[axis][a];
    const double low = s.start.*kLow[axis];
    const double high = s.start.*kHigh[axis];
    const double distance = std::trunc(high - low);
    const auto slices = [distance](std::int64_t done, std::int64_t of) {
        return std::floor(static_cast<double>(done) / static_cast<double>(of) * distance + 0.5);
    };
    double& side = s.work.*kLow[axis];
    const std::int64_t out = s.frames / 2 + s.frames % 2;
    switch (s.action.passType) {
    case PassType::TopToBottom:
        side = low + slices(s.i, s.frames);
        break;
    case PassType::BottomToTop:
        side = high - slices(s.i, s.frames);
        break;
    case PassType::OutAndIn:
        // Goes on from the far side, while a movie of that kind alone comes back the way that it went.
        side = s.i < out ? low + slices(s.i, out) : high - slices(s.i - out, s.frames - out);
        break;
    case PassType::SinglePlane:
        side = s.work.*kHigh[axis] = low + slices(s.i, s.frames);
        break;
    }
}

double swing(double base, double angle, std::int64_t r, std::int64_t n)
{
    const std::int64_t quarter = n / 4;
    const std::int64_t middle = n - 2 * quarter;
    const auto place = static_cast<double>(r);
    const auto q = static_cast<double>(quarter);
    if (r < quarter)
        return base - place / q * angle;
    if (r < quarter + middle)
        return 2 * (place - q) / static_cast<double>(middle) * angle + (base - angle);
    return (angle + base) - (place - static_cast<double>(n - quarter)) / q * angle;
}

void rock(const Share& s)
{
    const std::int64_t swings = s.action.rotations;
    const std::int64_t n = swings > 0 ? s.frames / swings : 0;
    // Frames behind the last whole swing stand still.
    if (n < 1 || s.i > swings * n)
        return;
    for (std::size_t axis = 0; axis < 3; ++axis)
        s.work.*kRotation[axis] = swing(s.start.*kRotation[axis], s.xyz()[axis], s.i % n, n);
}

void replay(const Share& s)
{
    if (s.i >= 0 && s.i < static_cast<std::int64_t>(s.action.keyFrames.size()))
        replayKeyFrame(s.action.keyFrames[static_cast<std::size_t>(s.i)], s.work);
    else
        logWarning("Trying to load non-existant keyframe!!!!");
}

void passTime(const Share& s)
{
    const Action& a = s.action;
    std::int64_t point = a.start != -1 ? a.start : s.start.timepoint;
    if (s.isFinal() && a.end != -1) {
        point = a.end;
    } else if (a.framesPerTimePoint > 0) {
        point += s.counter / a.framesPerTimePoint;
        if (s.isFinal())
            s.counter %= a.framesPerTimePoint;
        else
            ++s.counter;
    }
    s.work.timepoint = static_cast<int>(std::clamp<std::int64_t>(point, INT32_MIN, INT32_MAX));
    if (s.i != 0 && a.end != -1 && s.work.timepoint == a.end)
        s.counter = 0;
}

void apply(const Share& s)
{
    switch (s.action.type) {
    case ActionType::Rotation:
        return rotate(s);
    case ActionType::Scale:
        return scale(s);
    case ActionType::Translation:
        return translate(s);
    case ActionType::Palette:
        return changePalettes(s);
    case ActionType::PassThrough:
        return passThrough(s);
    case ActionType::Rocking:
        return rock(s);
    case ActionType::Custom:
        return replay(s);
    case ActionType::TimePoints:
        return passTime(s);
    }
}

} // namespace

void applyAction(const Action& action, const KeyFrame& start, KeyFrame& work, const FramePlace& place,
                 TimePointCounter& counter)
{
    apply({action, start, work, place.i, place.frames, counter});
}

void applyFinal(const Action& action, const KeyFrame& start, KeyFrame& work, std::int64_t frames,
                TimePointCounter& counter)
{
    if (action.type != ActionType::Rocking)
        return apply({action, start, work, frames, frames, counter});
    for (const Field field : kRotation)
        work.*field = start.*field;
}

} // namespace tirn
