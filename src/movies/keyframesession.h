#pragma once

#include <vector>

#include <QDomDocument>
#include <QDomElement>

#include "movies/keyframe.h"

namespace tirn {

/// The `keyframe` element: view, scale, cut box and time point. Palettes, channels and the stack's index are
/// no part of it.
QDomElement saveKeyFrame(const KeyFrame& frame, QDomDocument& document);

/// Reads a `keyframe` element. What is missing is 0, a scale 1. The cut box is read as whole numbers, so that
/// a side with a fraction becomes 0.
KeyFrame readKeyFrame(const QDomElement& element);

/// The frames of all `keyframe` children, in their order.
std::vector<KeyFrame> readKeyFrames(const QDomElement& parent);

} // namespace tirn
