#pragma once

#include <QDomDocument>
#include <QDomElement>

#include "depth/zcurve.h"

namespace tirn {

/// The `ZCurve` element of a session: each multiplier in 6 digits and a newline.
QDomElement saveCurveToSession(const ZCurve& curve, QDomDocument& document);

/// The curve of a `ZCurve` element for a stack of so many slices. Slices that the element does not name have
/// 1.0, multipliers past the last slice are left out.
ZCurve readSessionCurve(const QDomElement& element, int slices, CurveTextures* textures = nullptr);

} // namespace tirn
