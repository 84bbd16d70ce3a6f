#pragma once

#include <QString>

namespace tirn {

/// A number as an attribute of a session: 16 digits, as the toolkit writes one, but with a point in every
/// locale.
inline QString attributeNumber(double value) { return QString::number(value, 'g', 16); }

} // namespace tirn
