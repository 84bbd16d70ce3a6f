#pragma once

#include <cstdint>

#include <QString>

namespace tirn {

/// What a picture is written as. The numbers are the positions in the snapshot form's list.
enum class PictureFormat { Png = 0, Raw = 1, Tiff = 2, Printer = 3 };

/// The file that a snapshot takes when none is named.
inline constexpr const char* kFirstPictureName = "tirn0000.tif";

/// ".png", ".raw", ".tif"; empty for a printer.
QString pictureExtension(PictureFormat format);

/// What a file dialog offers for a format. Empty, with a warning, for one that makes no file.
QString pictureFileFilter(PictureFormat format);

/// The name without a picture's extension at its end, and with that of the format.
QString fixedPictureName(const QString& name, const QString& extension);

/// The name of the next picture: the four digits before the extension count up. A name without them gets
/// "0000"; its last four characters are taken for its extension.
QString nextPictureName(const QString& name, const QString& extension);

/// The name of frame `number` of a series: four digits before the ending.
QString numberedPictureName(const QString& name, std::int64_t number);

} // namespace tirn
