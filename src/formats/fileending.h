#pragma once

#include <QString>

namespace tirn {

/// True for a name with this ending, in capitals or not.
inline bool hasEnding(const QString& name, const char* ending)
{
    return name.endsWith(QLatin1String(ending), Qt::CaseInsensitive);
}

} // namespace tirn
