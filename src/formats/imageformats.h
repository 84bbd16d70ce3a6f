#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include <QStringList>

#include "image/imageattributes.h"

namespace tirn {

class ImageFile;
class ImageIO;

/// What a writer is given: the voxels of a whole stack and the layers first to last of it, every step-th.
/// Returns the texts of what went wrong, none on success.
using StackWriter = QStringList (*)(const QStringList& names, const ImageAttributes& attributes,
                                    const std::uint8_t* data, int first, int last, int step, bool overwrite);

/// A format as a row: how it is told, what is logged then, who reads it, who writes it.
struct ImageFormat
{
    ImageType type;
    /// True when the file is of this format; null for a type that is never recognised.
    bool (*probe)(const QString& name) = nullptr;
    const char* guessText = nullptr;
    /// Null for a type without a reader.
    std::unique_ptr<ImageIO> (*create)(ImageFile& owner, const QStringList& names) = nullptr;
    /// True when single-channel stacks of this type can be merged into one.
    bool mergeable = false;
    /// Null where the raw writer serves the type.
    StackWriter write = nullptr;
    /// Stands for a writer that only refuses.
    const char* refusal = nullptr;
};

/// All rows, those with a probe in the order in which they are asked: a vendor's TIFF must be told by its
/// name before it counts as a plain one.
std::span<const ImageFormat> imageFormats();

/// The row of a type, null when there is none.
const ImageFormat* findImageFormat(ImageType type);

/// Writes with the type's writer, or the raw one where it has none.
QStringList writeStack(ImageType type, const QStringList& names, const ImageAttributes& attributes,
                       const std::uint8_t* data, int first, int last, int step, bool overwrite);

} // namespace tirn
