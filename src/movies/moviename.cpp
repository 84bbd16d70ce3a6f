#include "movies/moviename.h"

#include <array>

namespace tirn {

namespace {

constexpr std::array<const char*, 5> kExtensions = {".avi", ".png", ".mov", ".raw", ".tif"};
constexpr int kExtensionLength = 4;

} // namespace

QString movieExtension(MovieFormat format) { return kExtensions[static_cast<std::size_t>(format)]; }

QString withoutMovieExtension(const QString& name)
{
    for (const char* extension : kExtensions) {
        if (name.endsWith(QLatin1String(extension)))
            return name.chopped(kExtensionLength);
    }
    return name;
}

QString movieName(const QString& name, MovieFormat format)
{
    return (name.isEmpty() ? QString("tirn0000") : withoutMovieExtension(name)) + movieExtension(format);
}

QString renamedForFormat(const QString& name, MovieFormat format)
{
    return name.isEmpty() ? name : movieName(name, format);
}

} // namespace tirn
