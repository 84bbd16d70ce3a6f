#pragma once

#include <QString>

namespace tirn {

/// The formats of a movie's output; the numbers are the positions in the form's list. Quicktime is not
/// written.
enum class MovieFormat { Avi = 0, Png = 1, Quicktime = 2, Raw = 3, Tiff = 4 };

/// ".avi", ".png", ".mov", ".raw", ".tif".
QString movieExtension(MovieFormat format);

/// The name without the extension of a movie format, where it has one.
QString withoutMovieExtension(const QString& name);

/// The name with the format's extension in place of that of any movie format; "tirn0000" for an empty name.
QString movieName(const QString& name, MovieFormat format);

/// The same with an empty name left empty, for a name that is still being chosen.
QString renamedForFormat(const QString& name, MovieFormat format);

} // namespace tirn
