#pragma once

#include <QStringList>

namespace tirn {

/// True for a name with this ending, in capitals or not.
inline bool hasEnding(const QString& name, const char* ending)
{
    return name.endsWith(QLatin1String(ending), Qt::CaseInsensitive);
}

/// The name, with the ending where it has none.
inline QString withEnding(const QString& name, const char* ending)
{
    return hasEnding(name, ending) ? name : name + QLatin1String(ending);
}

/// Names made of one: "_", a letter, a number and the ending in place of an ending that is there.
inline QStringList numberedFiles(QString name, const char* ending, char letter, int digits, int count)
{
    if (hasEnding(name, ending))
        name.chop(static_cast<int>(qstrlen(ending)));
    QStringList names;
    for (int i = 0; i < count; ++i)
        names.append(name + QString::asprintf("_%c%.*d%s", letter, digits, i, ending));
    return names;
}

} // namespace tirn
