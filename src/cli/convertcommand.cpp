#include <algorithm>

#include "cli/activity.h"
#include "cli/command.h"
#include "cli/console.h"
#include "cli/operations.h"
#include "cli/resultfiles.h"
#include "cli/stackinput.h"
#include "cli/toolerror.h"
#include "cli/voxelwriter.h"

namespace tirn {

namespace {

/// A format that can be written: its name on the command line, its endings, and where its files go.
struct Target
{
    const char* name;
    ImageType type;
    /// Of the files that are written.
    const char* ending;
    /// Endings of OUT that choose the format.
    QStringList endings;
};

const QList<Target>& targets()
{
    static const QList<Target> all = {
        {"pic", ImageType::BioRad, ".pic", {".pic"}},
        {"stk", ImageType::MetaMorph, "", {".stk"}},
        {"mtiff", ImageType::MultiPageTiff, "", {".tif", ".tiff"}},
        {"tiff", ImageType::TiffSeries, ".tif", {}},
        {"raw", ImageType::Unknown, "", {".raw"}},
    };
    return all;
}

const Target& chosenTarget(const QCommandLineParser& parser, const QString& out)
{
    for (const Target& target : targets()) {
        if (parser.isSet("to") && parser.value("to") == QLatin1String(target.name))
            return target;
        const auto fits = [&out](const QString& ending) { return out.endsWith(ending, Qt::CaseInsensitive); };
        if (!parser.isSet("to") && std::any_of(target.endings.begin(), target.endings.end(), fits))
            return target;
    }
    if (parser.isSet("to"))
        throw UsageError{"--to: '" + parser.value("to") + "' is none of pic, stk, mtiff, tiff, raw"};
    throw UsageError{"the ending of '" + out + "' names no format: say --to"};
}

/// The files that a format's writer makes of one name.
QStringList resultNames(const Target& target, const QString& out, const ImageAttributes& attributes)
{
    QString base = out;
    const QString ending = QLatin1String(target.ending);
    if (!ending.isEmpty() && base.endsWith(ending))
        base.chop(static_cast<int>(ending.size()));
    QStringList names;
    if (target.type == ImageType::BioRad && attributes.channels > 1) {
        for (int c = 0; c < attributes.channels; ++c)
            names.append(base + QString::asprintf("_c%.2d.pic", c));
    } else if (target.type == ImageType::TiffSeries && attributes.z > 1) {
        for (int z = 0; z < attributes.z; ++z)
            names.append(base + QString::asprintf("_z%.4d.tif", z));
    } else {
        names.append(base + ending);
    }
    return names;
}

/// The least size of each file: the share of the voxels that it holds.
std::int64_t leastBytes(const Target& target, const ImageFile& stack)
{
    const ImageAttributes& a = stack.attributes();
    const std::int64_t all = stack.sampleCount() * a.bytesPerSample();
    if (target.type == ImageType::BioRad)
        return all / std::max(a.channels, 1);
    return target.type == ImageType::TiffSeries ? all / std::max(a.z, 1) : all;
}

void warnOfLostDepth(const Target& target, const QString& out, const ImageAttributes& attributes)
{
    const bool unstated = attributes.channels == 2 || !attributes.hasWords();
    if (target.type == ImageType::MultiPageTiff && unstated) {
        Console::report(out,
                        {"warning: a multi-page TIFF of this depth and number of channels states no bits a "
                         "sample and does not read back; --to pic and --to tiff do"});
    }
}

void addOptions(QCommandLineParser& parser)
{
    parser.addOption({"to",
                      "Format to write: pic, stk, mtiff, tiff (one file a layer) or raw (default: by the "
                      "ending of OUT, where .tif is mtiff).",
                      "FORMAT"});
    parser.addOption(
        {"bits", "Convert to 8 or 16 bits a sample (default: as they are, 9 to 15 become 16).", "8|16"});
    addRangeOptions(parser);
    addOperationOptions(parser);
}

void writeFiles(ImageFile& stack, const Target& target, const QString& out, int bits, bool overwrite)
{
    ResultFiles results(resultNames(target, out, stack.attributes()), overwrite);
    bool written = false;
    {
        const Activity activity(QStringLiteral("Writing"));
        written = stack.write({results.place(out)}, target.type, bits, true);
    }
    if (!written) {
        const QStringList& texts = stack.writeErrors();
        throw FileError(out, texts.isEmpty() ? QStringList{"could not be written"} : texts);
    }
    Console::checkInterrupt();
    results.commit(leastBytes(target, stack));
    warnOfLostDepth(target, out, stack.attributes());
}

void applyStep(const StackStep& step, std::unique_ptr<ImageFile>& stack, const QString& name)
{
    try {
        Activity activity(step.title);
        step.run(stack, activity.progress());
        Console::checkInterrupt();
        // Operations leave the statistics to their caller, and the next one may go by them.
        stack->generateStatistics();
    } catch (const FileError& error) {
        throw FileError(name, error.texts);
    }
}

void convertDepth(ImageFile& stack, int bits)
{
    Activity activity(QStringLiteral("Converting"));
    if (bits == 8)
        stack.stackToByteSmartMult(activity.progress());
    else
        stack.stackToShort(activity.progress());
    Console::checkInterrupt();
}

void run(const QCommandLineParser& parser)
{
    QStringList names = parser.positionalArguments();
    if (names.size() < 2)
        throw UsageError{"convert needs a FILE and an OUT"};
    const QString out = names.takeLast();
    const Target& target = chosenTarget(parser, out);
    const LayerRange range = layerRange(parser);
    if (parser.isSet("bits") && parser.value("bits") != "8" && parser.value("bits") != "16")
        throw UsageError{"--bits: '" + parser.value("bits") + "' is neither 8 nor 16"};

    const std::vector<StackStep> steps = operationSteps(parser);

    auto stack = openStack(names);
    readStack(*stack, names, range);
    for (const StackStep& step : steps)
        applyStep(step, stack, names.first());
    const int bits = parser.isSet("bits") ? parser.value("bits").toInt() : stack->attributes().bitDepth;
    const bool overwrite = parser.isSet("overwrite");
    if (target.type != ImageType::Unknown) {
        writeFiles(*stack, target, out, bits, overwrite);
        return;
    }
    if (parser.isSet("bits"))
        convertDepth(*stack, bits);
    writeVoxels(*stack, out, overwrite);
}

} // namespace

const Command kConvertCommand = {"convert", "Read a stack and write it in another format.",
                                 "[--to pic|stk|mtiff|tiff|raw] [--bits 8|16] [--first N --last N --step N] "
                                 "[OPERATION...] FILE... OUT",
                                 addOptions, run};

} // namespace tirn
