#pragma once

#include <memory>
#include <optional>

#include <QCommandLineParser>
#include <QStringList>

#include "image/imagefile.h"

namespace tirn {

/// The layers that options ask for.
struct LayerRange
{
    int first = 0;
    /// The last layer of the file where nothing else is said.
    std::optional<int> last;
    int step = 1;
};

/// Opens a stack; throws FileError when no format claims it, UsageError for more names than its format takes.
std::unique_ptr<ImageFile> openStack(const QStringList& names);

/// Reads layers of an open stack, and throws FileError when that does not work. Texts about files that end
/// early are reported.
void readStack(ImageFile& stack, const QStringList& names, const LayerRange& range = {});

/// --first, --last and --step.
void addRangeOptions(QCommandLineParser& parser);
LayerRange layerRange(const QCommandLineParser& parser);

/// A whole number that an option gives, within limits; throws UsageError.
int wholeNumber(const QString& option, const QString& text, int least, int most);
/// Numbers between commas, as many as wanted; throws UsageError.
QList<int> wholeNumbers(const QString& option, const QString& text, int count, int least, int most);
QList<double> numbers(const QString& option, const QString& text, int count);

} // namespace tirn
