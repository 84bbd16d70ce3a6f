#pragma once

#include <optional>

#include <QStringList>

#include "image/rawlayout.h"

namespace tirn {

/// Offset, size, depth and byte order of a headerless file, as numbers in a row.
QStringList rawLayoutTexts(const RawLayout& raw);
/// Nothing for what is no layout.
std::optional<RawLayout> rawLayoutOf(const QStringList& texts);

} // namespace tirn
