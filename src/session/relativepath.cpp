#include "session/relativepath.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

namespace tirn {

namespace {

/// "/", "C:" of "C:/data", "//server" of a network path.
QString rootOf(const QString& path)
{
    if (path.startsWith("//"))
        return path.left(path.indexOf('/', 2)).toLower();
    return path.startsWith('/') ? QString("/") : path.section('/', 0, 0).toLower();
}

} // namespace

QString relativeDirectory(const QString& directory, const QString& baseDir)
{
    if (rootOf(directory) != rootOf(baseDir))
        return directory.endsWith('/') ? directory : directory + '/';
    if (directory == baseDir)
        return {};

    const QStringList to = directory.split('/', Qt::SkipEmptyParts);
    const QStringList from = baseDir.split('/', Qt::SkipEmptyParts);
    qsizetype common = 0;
    while (common < to.size() && common < from.size() && to[common] == from[common])
        ++common;
    QString path = QString("../").repeated(static_cast<int>(from.size() - common));
    for (qsizetype i = common; i < to.size(); ++i)
        path += to[i] + '/';
    return path;
}

QString relativePath(const QString& file, const QString& baseDir)
{
    const QFileInfo info(file);
    const QString directory = relativeDirectory(QDir::cleanPath(info.absolutePath()),
                                                QDir::cleanPath(QDir(baseDir).absolutePath()));
    return QDir::toNativeSeparators(directory + info.fileName());
}

} // namespace tirn
