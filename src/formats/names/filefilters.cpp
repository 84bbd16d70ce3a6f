#include "formats/names/filefilters.h"

#include <algorithm>

#include "formats/imageformats.h"

namespace tirn {

namespace {

/// The endings as patterns, with blanks between.
QString patterns(const QStringList& endings)
{
    QStringList all;
    for (const QString& ending : endings)
        all.append(QLatin1Char('*') + ending);
    return all.join(' ');
}

QString filterOf(const QString& name, const QStringList& endings)
{
    return name + QLatin1String(" (") + patterns(endings) + QLatin1Char(')');
}

/// Of a row: as often as it names them where files are opened, each once elsewhere.
QStringList endingsOf(const ImageFormat& format, FilterUse use)
{
    QStringList endings = format.endingList();
    if (use != InOpenFilter)
        endings.removeDuplicates();
    return endings;
}

/// The rows that stand in a filter, by name.
std::vector<const ImageFormat*> rowsOf(FilterUse use)
{
    std::vector<const ImageFormat*> rows;
    for (const ImageFormat& format : imageFormats()) {
        if ((format.filters & use) != 0)
            rows.push_back(&format);
    }
    std::sort(rows.begin(), rows.end(), [](const ImageFormat* left, const ImageFormat* right) {
        return qstricmp(left->filterName, right->filterName) < 0;
    });
    return rows;
}

QStringList filtersOf(FilterUse use)
{
    QStringList filters;
    for (const ImageFormat* format : rowsOf(use))
        filters.append(filterOf(QLatin1String(format->filterName), endingsOf(*format, use)));
    return filters;
}

/// The filter of all rows that are read or stand for one that is.
QString filterOfAll(const QString& name, FilterUse use)
{
    QStringList endings;
    for (const ImageFormat* format : rowsOf(use)) {
        if (use != InOpenFilter || format->create != nullptr)
            endings.append(format->endingList());
    }
    endings.removeDuplicates();
    endings.sort();
    return filterOf(name, endings);
}

} // namespace

QString stackFileFilter()
{
    return filterOfAll("All supported formats", InOpenFilter) + ";;" + filtersOf(InOpenFilter).join(";;") +
           ";;All files (*)";
}

QString channelFileFilter()
{
    return filterOfAll("All known formats", InChannelFilter) + ";; " + filtersOf(InChannelFilter).join(";;") +
           ";;All File (*.*)";
}

QString exportFileFilter() { return filtersOf(InExportFilter).join(";; "); }

} // namespace tirn
