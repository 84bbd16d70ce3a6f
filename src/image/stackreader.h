#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include <QStringList>

#include "image/imageattributes.h"

namespace tirn {

class ImageFile;

/// What a stack in memory needs of the files that it comes from.
class StackReader
{
public:
    StackReader() = default;
    virtual ~StackReader() = default;
    StackReader(const StackReader&) = delete;
    StackReader& operator=(const StackReader&) = delete;

    /// Reads layers first to last, inclusive, every step-th, into the owner's stack.
    virtual bool readLayers(int first, int last, int step) = 0;
    /// Base names, and full paths, in the order given.
    virtual QStringList fileNames() const = 0;
    virtual QStringList filePaths() const = 0;
};

// The doors to the files: declared for the stack, which knows no format, and defined where all are known.

/// The reader of the format that the first name is of, which has given the owner its attributes; null for
/// none. Throws std::bad_alloc.
std::unique_ptr<StackReader> openStackReader(ImageFile& owner, const QStringList& names);
/// That of headerless voxels.
std::unique_ptr<StackReader> openRawReader(ImageFile& owner, const QStringList& names,
                                           std::int64_t headerOffset, int x, int y, int z, int channels,
                                           int bitDepth, bool swapBytes);
/// One that merges the channels of a type from files of their own, again at each read; null where the type's
/// stacks cannot be merged.
std::unique_ptr<StackReader> openMergedReader(ImageFile& owner, ImageType type,
                                              const std::vector<QStringList>& channelFiles);
/// destination[i * channels + c] = channel c's sample i, for x * y * z samples.
void mergeChannels(std::span<const std::byte* const> channelBuffers, void* destination,
                   const ImageAttributes& attributes);
/// Writes a whole stack with the type's writer, or the raw one where it has none.
QStringList writeStack(ImageType type, const QStringList& names, const ImageAttributes& attributes,
                       const std::uint8_t* data, bool overwrite);

} // namespace tirn
