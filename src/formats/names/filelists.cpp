#include "formats/names/filelists.h"

#include <algorithm>

#include <QDir>
#include <QFileInfo>

namespace tirn {

namespace {

/// How many characters at the end of a base name may number a channel.
constexpr int kChannelNumberLength = 3;

QString directoryOf(const QString& file) { return QDir::cleanPath(QFileInfo(file).path()); }

QStringList filesLike(const QString& directory, const QString& pattern)
{
    if (pattern.isEmpty())
        return {};
    return QDir(directory).entryList({pattern}, QDir::Files, QDir::Name);
}

QStringList besideFiles(const QString& file, QStringList names)
{
    for (QString& name : names)
        name = besideFile(file, name);
    return names;
}

} // namespace

QString patternOfName(const QString& name)
{
    QString pattern;
    for (const QChar character : name) {
        if (character == QLatin1Char(' '))
            pattern += QLatin1Char('?');
        else if (character == QLatin1Char('['))
            pattern += QLatin1String("[[]");
        else
            pattern += character;
    }
    return pattern;
}

QStringList expandPattern(const QString& pattern)
{
    return filesLike(directoryOf(pattern), patternOfName(QFileInfo(pattern).fileName()));
}

QStringList expandPatternToPaths(const QString& pattern)
{
    return besideFiles(pattern, expandPattern(pattern));
}

QString besideFile(const QString& file, const QString& name)
{
    return QDir::toNativeSeparators(QDir(directoryOf(file)).filePath(name));
}

QStringList siblingChannelFiles(const QString& file)
{
    const QFileInfo info(file);
    QString base = info.completeBaseName();
    for (int i = std::max(0, static_cast<int>(base.size()) - kChannelNumberLength); i < base.size(); ++i) {
        if (base.at(i).isDigit())
            base[i] = QLatin1Char('?');
    }
    const QString pattern = patternOfName(base + QLatin1Char('.') + info.suffix());
    return besideFiles(file, filesLike(directoryOf(file), pattern));
}

int steppedTimePoints(int files, int timeStep)
{
    // A remainder above 1 counts more time points than the files can serve: those take the first file.
    return files / timeStep + files % timeStep;
}

std::vector<QStringList> channelsByTime(const std::vector<QStringList>& channelFiles, int timeStep)
{
    std::vector<QStringList> elements;
    const int timePoints = steppedTimePoints(static_cast<int>(channelFiles.front().size()), timeStep);
    for (int t = 0; t < timePoints; ++t) {
        QStringList element;
        for (const QStringList& files : channelFiles) {
            const qint64 index = static_cast<qint64>(t) * timeStep;
            const bool isServed = t < files.size() && index < files.size();
            element.append(files.at(isServed ? static_cast<int>(index) : 0));
        }
        elements.push_back(element);
    }
    return elements;
}

std::vector<QStringList> filesByTime(const QStringList& files, int timeStep)
{
    std::vector<QStringList> elements;
    for (int i = 0; i < files.size(); i += timeStep)
        elements.push_back({files.at(i)});
    return elements;
}

std::vector<QStringList> everyStepOfGroups(const std::vector<QStringList>& elements, int channels,
                                           int timeStep)
{
    std::vector<QStringList> kept;
    const auto size = static_cast<std::size_t>(std::max(1, channels));
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (i / size % static_cast<std::size_t>(timeStep) == 0)
            kept.push_back(elements[i]);
    }
    return kept;
}

} // namespace tirn
