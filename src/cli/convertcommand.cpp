#include "cli/activity.h"
#include "cli/command.h"
#include "cli/console.h"
#include "cli/operations.h"
#include "cli/resultfiles.h"
#include "cli/stackinput.h"
#include "cli/toolerror.h"
#include "cli/voxelwriter.h"
#include "formats/imageformats.h"

namespace tirn {

namespace {

/// The words of the formats that can be written.
QStringList targetWords()
{
    QStringList words;
    for (const ImageFormat& format : imageFormats()) {
        if (format.word != nullptr)
            words.append(QLatin1String(format.word));
    }
    return words;
}

const ImageFormat& chosenTarget(const QCommandLineParser& parser, const QString& out)
{
    for (const ImageFormat& format : imageFormats()) {
        if (format.word == nullptr)
            continue;
        if (parser.isSet("to") ? parser.value("to") == QLatin1String(format.word) : format.hasEndingOf(out))
            return format;
    }
    if (parser.isSet("to"))
        throw UsageError{"--to: '" + parser.value("to") + "' is none of " + targetWords().join(", ")};
    throw UsageError{"the ending of '" + out + "' names no format: say --to"};
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

void writeFiles(ImageFile& stack, const ImageFormat& target, const QString& out, int bits, bool overwrite)
{
    ResultFiles results(target.filesOf(out, stack.attributes()), overwrite);
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
    // The share of the voxels that each file holds.
    results.commit(stack.sampleCount() * stack.attributes().bytesPerSample() /
                   target.fileCount(stack.attributes()));
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
    const ImageFormat& target = chosenTarget(parser, out);
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
