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

/// The files of one stack.
enum class StackFiles {
    One,
    PerChannel,
    PerLayer,
    DataSet, ///< a text, which finds the pictures itself
};

/// What the form that opens stacks does with a file.
enum class OpenPage {
    None,
    Siblings,    ///< a row for each channel, filled with the files beside it
    OneFile,     ///< the page for a file with all channels
    ByChannels,  ///< one channel: a row for each file; several: as OneFile
    DataSet,     ///< the page for a stack of many pictures
    Layer,       ///< none: a layer by itself is no stack
    Description, ///< none: the voxels are in other files
};

/// The file filters that name a format; flags.
enum FilterUse : unsigned { InOpenFilter = 1, InExportFilter = 2, InChannelFilter = 4 };

/// A format as a row: what it is called, how it is told, what is logged then, who reads it, who writes it,
/// and what the rest of the program must know of its files.
struct ImageFormat
{
    ImageType type;
    const char* name;
    /// What a user types for it where it can be written; null where nobody can ask for it.
    const char* word = nullptr;
    /// Its name in file filters.
    const char* filterName = nullptr;
    /// With blanks between, the one that is added to names first.
    const char* endings = "";
    unsigned filters = 0;
    StackFiles files = StackFiles::One;
    OpenPage page = OpenPage::None;
    /// True when the file is of this format; null for a type that is never recognised.
    bool (*probe)(const QString& name) = nullptr;
    const char* guessText = nullptr;
    /// Null for a type without a reader.
    std::unique_ptr<ImageIO> (*create)(ImageFile& owner, const QStringList& names) = nullptr;
    /// True when single-channel stacks of this type can be merged into one.
    bool mergeable = false;
    /// Null where the raw writer serves the type.
    StackWriter write = nullptr;
    /// The files that the writer makes of one name for so many channels or layers; null for the name itself.
    QStringList (*writtenFiles)(const QString& name, int count) = nullptr;
    /// Stands for a writer that only refuses.
    const char* refusal = nullptr;

    QStringList endingList() const;
    /// True for a name with one of the endings, in capitals or not.
    bool hasEndingOf(const QString& fileName) const;
    /// How many files a stack is written to.
    int fileCount(const ImageAttributes& attributes) const;
    /// The files that a stack is written to under a name.
    QStringList filesOf(const QString& fileName, const ImageAttributes& attributes) const;
};

/// All rows, those with a probe in the order in which they are asked: a vendor's TIFF must be told by its
/// name before it counts as a plain one. The last is that of raw voxels.
std::span<const ImageFormat> imageFormats();

/// The row of a type, that of raw voxels where there is none.
const ImageFormat& imageFormat(ImageType type);

/// The row of the formats for export whose ending a file name has, in capitals or not; null for none.
const ImageFormat* exportFormatOfEnding(const QString& fileName);
/// The row that a file name asks for: the last one where its ending is no one's.
const ImageFormat& exportFormat(const QString& fileName);
/// The row that a filter of a file dialog names, the last one for a filter of others.
const ImageFormat& exportFormatOfFilter(const QString& filter);
/// A name that ends like one format, ending like the other.
QString withOtherEnding(const QString& fileName, const ImageFormat& from, const ImageFormat& to);

} // namespace tirn
