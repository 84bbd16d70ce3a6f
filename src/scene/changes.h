#pragma once

#include <QFlags>

namespace tirn {

/// What of a scene a change touches.
enum class Change : unsigned {
    Stacks = 1,      ///< the list of volumes, or which of them is current
    Voxels = 2,      ///< the data of a volume, or what is known of them
    TimePoint = 4,   ///< the time point that is shown
    Cut = 8,         ///< a cut box
    Scale = 16,      ///< a volume's scale
    Channels = 32,   ///< palettes and states that channels show
    Palettes = 64,   ///< the list of palettes, or a name in it
    Colours = 128,   ///< the values of a palette
    Curves = 256,    ///< depth curves
    Pose = 512,      ///< rotation and translation of the view
    Look = 1024,     ///< the rest of the view: mode, colours, labels, surfaces
    Playback = 2048, ///< which volume plays, and how fast
    Settings = 4096, ///< the preferences, and what was opened last
    Ruler = 8192,    ///< what is measured in the picture
};
Q_DECLARE_FLAGS(Changes, Change)
Q_DECLARE_OPERATORS_FOR_FLAGS(Changes)

/// A form that is told of this learns of everything.
inline constexpr Changes kAllChanges(QFlag(0x3fff));

} // namespace tirn
