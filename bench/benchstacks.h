#pragma once

#include <cstdint>
#include <memory>

#include <QString>
#include <QStringList>

#include "image/imagefile.h"

namespace tirn::bench {

/// A stack with the look of a confocal one: dark noise with brighter blobs, values below `limit`.
std::unique_ptr<ImageFile> confocalStack(int x, int y, int z, int channels, int bitDepth, int limit);

/// Noise over the whole range below `limit`.
std::unique_ptr<ImageFile> noiseStack(int x, int y, int z, int channels, int bitDepth, int limit);

/// Bio-Rad files of such a stack, one a channel, kept for the run and in the page cache.
QStringList picFiles(int x, int y, int z, int channels, int bitDepth);

} // namespace tirn::bench
