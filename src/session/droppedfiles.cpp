#include "session/droppedfiles.h"

#include <algorithm>

#include <QDir>
#include <QFileInfo>

#include "base/log.h"
#include "formats/imageformats.h"

namespace tirn {

namespace {

bool endsWithAny(const QString& name, std::initializer_list<const char*> endings)
{
    return std::any_of(endings.begin(), endings.end(), [&name](const char* ending) {
        return name.endsWith(QLatin1String(ending), Qt::CaseInsensitive);
    });
}

/// True for the names of formats with a file for each channel.
bool isNamedAsChannel(const QString& name)
{
    const auto formats = imageFormats();
    return std::any_of(formats.begin(), formats.end(), [&name](const ImageFormat& format) {
        return format.files == StackFiles::PerChannel && format.hasEndingOf(name);
    });
}

bool isReadableDirectory(const QString& name)
{
    const QFileInfo info(name);
    return info.isDir() && info.isReadable();
}

/// Takes the names that satisfy a condition out of a list.
QStringList take(QStringList& names, const std::function<bool(const QString&)>& condition)
{
    const auto rest = std::stable_partition(names.begin(), names.end(),
                                            [&condition](const QString& name) { return !condition(name); });
    QStringList taken(rest, names.end());
    names.erase(rest, names.end());
    return taken;
}

QStringList entriesOf(const QString& directory)
{
    QStringList names;
    for (const QString& entry : QDir(directory).entryList(QDir::Files, QDir::Name))
        names.append(QDir::toNativeSeparators(QDir(directory).filePath(entry)));
    return names;
}

} // namespace

DroppedNames sortDroppedNames(QStringList names)
{
    DroppedNames dropped;
    for (QString& name : names) {
        name = QDir::toNativeSeparators(name);
        logDebug("cleaned string %s", qPrintable(name));
    }
    dropped.isFolder = !names.isEmpty() && isReadableDirectory(names.first());
    if (dropped.isFolder)
        names = entriesOf(names.first()) + names.mid(1);
    const auto session = std::find_if(names.begin(), names.end(),
                                      [](const QString& name) { return endsWithAny(name, {".tir"}); });
    if (session != names.end()) {
        dropped.session = *session;
        return dropped;
    }
    dropped.palettes = take(names, [](const QString& name) {
        return endsWithAny(name, {".map", ".col", ".lut"});
    });
    dropped.others = names;
    return dropped;
}

DroppedFiles sortDroppedFiles(const DroppedNames& sorted, const StackProbe& probe)
{
    DroppedFiles dropped;
    QStringList names = sorted.others;
    ImageAttributes first;
    bool allSinglePages = true;
    dropped.unknown = take(names, [&](const QString& name) {
        const ImageAttributes attributes = probe(name);
        if (attributes.type == ImageType::Unknown)
            return true;
        if (first.type == ImageType::Unknown)
            first = attributes;
        allSinglePages = allSinglePages && imageFormat(attributes.type).files == StackFiles::PerLayer;
        return false;
    });
    if (names.isEmpty())
        return dropped;
    if (sorted.isFolder && allSinglePages && names.size() > 1) {
        dropped.sequence = names.first();
        return dropped;
    }
    if (isNamedAsChannel(names.first())) {
        dropped.files = {names};
        dropped.channels = static_cast<int>(names.size());
        dropped.timePoints = 1;
        return dropped;
    }
    for (const QString& name : names)
        dropped.files.push_back({name});
    dropped.channels = first.channels;
    dropped.timePoints = static_cast<int>(names.size());
    return dropped;
}

} // namespace tirn
