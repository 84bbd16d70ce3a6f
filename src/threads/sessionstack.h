#pragma once

#include <QDomElement>

#include "threads/loaddescription.h"
#include "threads/loadsurroundings.h"

namespace tirn {

/// Reads the `stack` element of a session into a description; file names are relative to the current
/// directory. False, with an empty list of files, when channels or time points are missing or a missing file
/// found no other one.
bool readSessionStack(const QDomElement& stack, LoadDescription& description, CurveTextures* textures,
                      const MissingFileQuestion& fixMissingFile);

} // namespace tirn
