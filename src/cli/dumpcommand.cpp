#include "cli/command.h"
#include "cli/stackinput.h"
#include "cli/toolerror.h"
#include "cli/voxelwriter.h"
#include "image/interleave.h"

namespace tirn {

namespace {

void addDumpOptions(QCommandLineParser& parser) { addRangeOptions(parser); }

void runDump(const QCommandLineParser& parser)
{
    QStringList names = parser.positionalArguments();
    if (names.size() < 2)
        throw UsageError{"dump needs a FILE and an OUT"};
    const QString out = names.takeLast();
    const LayerRange range = layerRange(parser);
    const auto stack = openStack(names);
    readStack(*stack, names, range);
    writeVoxels(*stack, out, parser.isSet("overwrite"));
}

void addRawOptions(QCommandLineParser& parser)
{
    parser.addOption({"size", "Size of the stack in voxels.", "X,Y,Z"});
    parser.addOption({"channels", "Channels, interleaved (default 1).", "C"});
    parser.addOption({"bits", "Bits a sample: 8 or 16 (default 8).", "8|16"});
    parser.addOption({"offset", "Bytes in front of the voxels (default 0).", "N"});
    parser.addOption({"swap", "The words are big-endian."});
}

void runRaw(const QCommandLineParser& parser)
{
    const QStringList names = parser.positionalArguments();
    if (names.size() != 2)
        throw UsageError{"raw needs a FILE and an OUT"};
    if (!parser.isSet("size"))
        throw UsageError{"raw needs --size X,Y,Z"};
    const QList<int> size = wholeNumbers("size", parser.value("size"), 3, 1, INT32_MAX);
    const auto number = [&parser](const char* option, int least, int most, int otherwise) {
        return parser.isSet(option) ? wholeNumber(option, parser.value(option), least, most) : otherwise;
    };
    const int channels = number("channels", 1, 65535, 1);
    const int bits = number("bits", 8, 16, 8);
    if (bits != 8 && bits != 16)
        throw UsageError{"--bits: 8 or 16"};
    bool whole = true;
    const qlonglong offset = parser.isSet("offset") ? parser.value("offset").toLongLong(&whole) : 0;
    if (!whole || offset < 0)
        throw UsageError{"--offset: '" + parser.value("offset") + "' is not a whole number from 0"};

    const QStringList inputs = {names[0]};
    ImageFile stack(inputs, offset, size[0], size[1], size[2], channels, bits);
    readStack(stack, inputs);
    if (parser.isSet("swap") && bits == 16)
        swapBytes(stack.stackData(), stack.sampleCount(), 2);
    writeVoxels(stack, names[1], parser.isSet("overwrite"));
}

} // namespace

const Command kDumpCommand = {"dump", "Write the voxels of a stack as they lie in memory.",
                              "[--first N] [--last N] [--step N] FILE... OUT", addDumpOptions, runDump};

const Command kRawCommand = {"raw", "Write the voxels of headerless data as they lie in memory.",
                             "--size X,Y,Z [--channels C] [--bits 8|16] [--offset N] [--swap] FILE OUT",
                             addRawOptions, runRaw};

} // namespace tirn
