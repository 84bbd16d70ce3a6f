#include "cli/stackinput.h"

#include <climits>

#include <QFileInfo>

#include "cli/activity.h"
#include "cli/console.h"
#include "cli/toolerror.h"
#include "formats/imageformats.h"

namespace tirn {

namespace {

/// The formats in which several files make one stack.
bool takesSeveralFiles(ImageType type)
{
    const StackFiles files = imageFormat(type).files;
    return files == StackFiles::PerChannel || files == StackFiles::PerLayer;
}

QStringList reasons(const ImageFile& stack, const QString& otherwise)
{
    return stack.errorList().isEmpty() ? QStringList{otherwise} : stack.errorList();
}

} // namespace

std::unique_ptr<ImageFile> openStack(const QStringList& names)
{
    for (const QString& name : names) {
        if (!QFileInfo::exists(name))
            throw FileError(name, QStringLiteral("No such file"));
    }
    auto stack = std::make_unique<ImageFile>(names);
    const ImageType type = stack->attributes().type;
    if (!stack->hasReader() || type == ImageType::Unknown)
        throw FileError(names.value(0), reasons(*stack, QStringLiteral("not in a format that can be read")));
    if (names.size() > 1 && !takesSeveralFiles(type))
        throw UsageError{names.first() + QStringLiteral(" is a stack by itself: give one file")};
    Console::report(names.value(0), stack->errorList());
    Console::checkInterrupt();
    return stack;
}

void readStack(ImageFile& stack, const QStringList& names, const LayerRange& range)
{
    const int layers = stack.attributes().fileZ;
    const int last = range.last.value_or(layers - 1);
    if (last < range.first || last >= layers || (last - range.first + 1) / range.step < 1) {
        throw FileError(names.value(0), QString::asprintf("no layers %d to %d by %d in a file of %d",
                                                          range.first, last, range.step, layers));
    }
    const qsizetype texts = stack.errorList().size();
    bool done = false;
    {
        const Activity activity(QStringLiteral("Reading"));
        done = stack.read(range.first, last, range.step);
    }
    if (!done)
        throw FileError(names.value(0), reasons(stack, QStringLiteral("the layers cannot be read")));
    Console::report(names.value(0), stack.errorList().mid(static_cast<int>(texts)));
    if (!stack.isLoaded() || stack.sampleCount() == 0)
        throw FileError(names.value(0), QStringLiteral("holds no voxels that can be read"));
    Console::checkInterrupt();
}

void addRangeOptions(QCommandLineParser& parser)
{
    parser.addOption({"first", "First layer, counted from 0 (default 0).", "N"});
    parser.addOption({"last", "Last layer, inclusive (default: that of the file).", "N"});
    parser.addOption({"step", "Take every N-th layer (default 1).", "N"});
}

LayerRange layerRange(const QCommandLineParser& parser)
{
    LayerRange range;
    if (parser.isSet("first"))
        range.first = wholeNumber("first", parser.value("first"), 0, INT_MAX - 1);
    if (parser.isSet("last"))
        range.last = wholeNumber("last", parser.value("last"), 0, INT_MAX - 1);
    if (parser.isSet("step"))
        range.step = wholeNumber("step", parser.value("step"), 1, INT_MAX);
    if (range.last && *range.last < range.first)
        throw UsageError{"--last is below --first"};
    return range;
}

int wholeNumber(const QString& option, const QString& text, int least, int most)
{
    bool whole = false;
    const int number = text.toInt(&whole);
    if (!whole || number < least || number > most)
        throw UsageError{
            QString("--%1: '%2' is not a whole number from %3 to %4").arg(option, text).arg(least).arg(most)};
    return number;
}

QList<int> wholeNumbers(const QString& option, const QString& text, int count, int least, int most)
{
    const QStringList parts = text.split(',');
    if (parts.size() != count)
        throw UsageError{
            QString("--%1: %2 numbers with commas between, not '%3'").arg(option).arg(count).arg(text)};
    QList<int> all;
    for (const QString& part : parts)
        all.append(wholeNumber(option, part, least, most));
    return all;
}

QList<double> numbers(const QString& option, const QString& text, int count)
{
    QList<double> all;
    for (const QString& part : text.split(',')) {
        bool parsed = false;
        all.append(part.toDouble(&parsed));
        if (!parsed)
            throw UsageError{QString("--%1: '%2' is not a number").arg(option, part)};
    }
    if (all.size() != count)
        throw UsageError{
            QString("--%1: %2 numbers with commas between, not '%3'").arg(option).arg(count).arg(text)};
    return all;
}

} // namespace tirn
