#include "cli/operations.h"

#include <climits>

#include <QFileInfo>
#include <QMap>
#include <QRegularExpression>

#include "cli/console.h"
#include "cli/stackinput.h"
#include "cli/toolerror.h"
#include "depth/curvebaking.h"
#include "depth/curvefile.h"

namespace tirn {

namespace {

constexpr int kLargestFactor = 8;
constexpr int kLargestSample = 65535;
/// The widest window of the median in three dimensions.
constexpr int kWidestCube = 255;

/// An operation: its option, and how an argument becomes a step.
struct Operation
{
    const char* name;
    /// Null for an operation without an argument.
    const char* argument;
    const char* help;
    /// Shown while the step runs.
    const char* title;
    StackStep::Run (*make)(const QString& argument);
};

/// What was interrupted is not done either, but no fault of the stack.
void require(bool done, const char* text)
{
    Console::checkInterrupt();
    if (!done)
        throw FileError({}, QString(text));
}

StackStep::Run makeCrop(const QString& text)
{
    const QList<int> box = wholeNumbers("crop", text, 6, 0, INT_MAX - 1);
    return [box](std::unique_ptr<ImageFile>& stack, const Progress& progress) {
        require(stack->crop(box[0], box[1], box[2], box[3], box[4], box[5], progress),
                "--crop: not within the stack");
    };
}

StackStep::Run makeFlip(const QString& axes)
{
    if (axes.isEmpty() || axes.contains(QRegularExpression("[^XYZxyz]")))
        throw UsageError{"--flip: '" + axes + "' is not made of X, Y and Z"};
    return [axes](std::unique_ptr<ImageFile>& stack, const Progress& progress) {
        for (const QChar axis : axes)
            stack->flip(axis.toLatin1(), progress);
    };
}

StackStep::Run makeInvert(const QString&)
{
    return [](std::unique_ptr<ImageFile>& stack, const Progress& progress) { stack->invert(progress); };
}

StackStep::Run makeSubsample(const QString& text)
{
    const int factor = wholeNumber("subsample", text, 1, kLargestFactor);
    return [factor](std::unique_ptr<ImageFile>& stack, const Progress& progress) {
        stack->subSample(factor, progress);
    };
}

StackStep::Run makeSubsampleMax(const QString& text)
{
    const QList<int> f = wholeNumbers("subsample-max", text, 3, 1, kLargestFactor);
    return [f](std::unique_ptr<ImageFile>& stack, const Progress& progress) {
        stack->subSampleMax(f[0], f[1], f[2], progress);
    };
}

StackStep::Run makeSubsampleMean(const QString& text)
{
    const QList<int> f = wholeNumbers("subsample-mean", text, 3, 1, kLargestFactor);
    return [f](std::unique_ptr<ImageFile>& stack, const Progress& progress) {
        stack->subSampleMean(f[0], f[1], f[2], progress);
    };
}

StackStep::Run makeProject(const QString& text)
{
    if (text != QLatin1String("max"))
        throw UsageError{"--project: '" + text + "' is not max"};
    return [](std::unique_ptr<ImageFile>& stack, const Progress& progress) {
        require(stack->maxIntensityProject(progress), "--project: the stack cannot be projected");
    };
}

StackStep::Run makeExtract(const QString& text)
{
    const int channel = wholeNumber("extract", text, 0, INT_MAX);
    return [channel](std::unique_ptr<ImageFile>& stack, const Progress& progress) {
        auto extracted = stack->extractChannel(channel, progress);
        require(extracted != nullptr, "--extract: the stack has no such channel");
        stack = std::move(extracted);
    };
}

StackStep::Run makeRatio(const QString& text)
{
    const QList<int> channels = wholeNumbers("ratio", text, 2, 0, INT_MAX);
    return [channels](std::unique_ptr<ImageFile>& stack, const Progress& progress) {
        try {
            stack = stack->ratio(channels[0], channels[1], progress);
        } catch (const QString& reason) {
            throw FileError({}, "--ratio: " + reason);
        }
        require(stack != nullptr, "--ratio: the stack has no such channels");
    };
}

StackStep::Run makeAdd(const QString& text)
{
    const QStringList parts = text.split(',');
    if (parts.size() != 2)
        throw UsageError{"--add: 2 numbers with commas between, not '" + text + "'"};
    const int value = wholeNumber("add", parts[0], -kLargestSample, kLargestSample);
    const int channel = wholeNumber("add", parts[1], -1, INT_MAX);
    return [value, channel](std::unique_ptr<ImageFile>& stack, const Progress& progress) {
        require(stack->addConstant(value, channel, progress), "--add: the stack has no such channel");
    };
}

StackStep::Run makePad(const QString& text)
{
    const QList<int> size = wholeNumbers("pad", text, 3, 1, INT_MAX);
    return [size](std::unique_ptr<ImageFile>& stack, const Progress& progress) {
        require(stack->pad(size[0], size[1], size[2], progress),
                "--pad: the new size does not hold the stack");
    };
}

StackStep::Run makePadBack(const QString& text)
{
    const int layers = wholeNumber("pad-back", text, 1, INT_MAX);
    return [layers](std::unique_ptr<ImageFile>& stack, const Progress& progress) {
        require(stack->padBack(layers, progress), "--pad-back: fewer layers than the stack has");
    };
}

StackStep::Run makeRange(const QStringList& bounds)
{
    const QStringList parts = bounds.value(1).split(':');
    if (parts.size() != 2)
        throw UsageError{"--depth: range takes L:U"};
    const int lower = wholeNumber("depth", parts[0], 0, kLargestSample);
    const int upper = wholeNumber("depth", parts[1], lower, kLargestSample);
    return [lower, upper](std::unique_ptr<ImageFile>& stack, const Progress& progress) {
        stack->stackToByteRange(lower, upper, progress);
    };
}

StackStep::Run makeDepth(const QString& text)
{
    using Conversion = void (ImageFile::*)(const Progress&);
    static const QMap<QString, Conversion> conversions = {
        {"clamp-lower", &ImageFile::clampLower},
        {"clamp-upper", &ImageFile::clampUpper},
        {"short", &ImageFile::stackToShort},
        {"smart-lower", &ImageFile::stackToByteSmartLower},
        {"smart-mult", &ImageFile::stackToByteSmartMult},
    };
    const QStringList parts = text.split('=');
    if (parts.first() == QLatin1String("range"))
        return makeRange(parts);
    if (parts.first() == QLatin1String("to")) {
        const int bits = wholeNumber("depth", parts.value(1), 8, 16);
        return [bits](std::unique_ptr<ImageFile>& stack, const Progress& progress) {
            stack->convertToDepth(bits, progress);
        };
    }
    const Conversion conversion = conversions.value(text, nullptr);
    if (conversion == nullptr)
        throw UsageError{"--depth: '" + text + "' is no depth operation"};
    return [conversion](std::unique_ptr<ImageFile>& stack, const Progress& progress) {
        ((*stack).*conversion)(progress);
    };
}

/// The curves of a file for the channels of a stack; those that the file leaves out change nothing.
std::vector<std::vector<double>> curvesOf(const QString& name, const ImageAttributes& attributes)
{
    std::vector<std::vector<double>> curves(static_cast<std::size_t>(attributes.channels),
                                            std::vector<double>(static_cast<std::size_t>(attributes.z), 1.0));
    std::vector<std::vector<double>*> places;
    for (std::vector<double>& curve : curves)
        places.push_back(&curve);
    const CurveFileResult result = readCurveFile(name, attributes.z, places);
    if (!result.error.isEmpty())
        throw FileError({}, result.error);
    if (result.channels.empty())
        throw FileError({}, name + " holds no curve for this stack.");
    return curves;
}

StackStep::Run makeZCurve(const QString& name)
{
    if (!QFileInfo(name).isFile())
        throw FileError(name, QStringLiteral("No such file"));
    return [name](std::unique_ptr<ImageFile>& stack, const Progress& progress) {
        const auto curves = curvesOf(name, stack->attributes());
        if (stack->attributes().channels > 1)
            Console::report(name, {"warning: a depth curve changes the first channel only"});
        bakeCurves(*stack, curves, progress);
    };
}

/// What follows the name of a filter.
struct FilterArguments
{
    int size = 0;
    bool is3D = false;
    int channel = -1;
    int percent = 100;
    int threshold = 0;
};

struct Filter
{
    const char* name;
    bool (*run)(ImageFile& stack, const FilterArguments& a, const Progress& progress);
};

constexpr Filter kFilters[] = {
    {"mean", [](ImageFile& s, const FilterArguments& a,
                const Progress& p) { return s.meanFilter(a.size, a.channel, a.is3D, p); }},
    {"median", [](ImageFile& s, const FilterArguments& a,
                  const Progress& p) { return s.medianFilter(a.size, a.channel, a.is3D, p); }},
    {"min", [](ImageFile& s, const FilterArguments& a,
               const Progress& p) { return s.minFilter(a.size, a.channel, a.is3D, p); }},
    {"max", [](ImageFile& s, const FilterArguments& a,
               const Progress& p) { return s.maxFilter(a.size, a.channel, a.is3D, p); }},
    {"background", [](ImageFile& s, const FilterArguments& a,
                      const Progress& p) { return s.backgroundSubtract(a.size, a.channel, a.percent, p); }},
    {"zfilter", [](ImageFile& s, const FilterArguments& a,
                   const Progress& p) { return s.zFilter(a.size, a.channel, a.threshold, p); }},
};

FilterArguments filterArguments(const QStringList& parts)
{
    FilterArguments arguments;
    arguments.size = wholeNumber("filter", parts.value(1), 1, 1023);
    for (const QString& part : parts.mid(2)) {
        const QString key = part.section('=', 0, 0);
        const QString value = part.section('=', 1);
        if (part == QLatin1String("3d"))
            arguments.is3D = true;
        else if (key == QLatin1String("channel"))
            arguments.channel = wholeNumber("filter", value, 0, kLargestSample);
        else if (key == QLatin1String("percent"))
            arguments.percent = wholeNumber("filter", value, 0, 100);
        else if (key == QLatin1String("threshold"))
            arguments.threshold = wholeNumber("filter", value, 0, kLargestSample);
        else
            throw UsageError{"--filter: '" + part + "' is none of 3d, channel=C, percent=P, threshold=T"};
    }
    return arguments;
}

StackStep::Run makeFilter(const QString& text)
{
    const QStringList parts = text.split(',');
    for (const Filter& filter : kFilters) {
        if (parts.first() != QLatin1String(filter.name))
            continue;
        const FilterArguments arguments = filterArguments(parts);
        if (parts.first() == QLatin1String("median") && arguments.is3D && arguments.size > kWidestCube)
            throw UsageError{QString("--filter: a 3d median takes a size from 1 to %1").arg(kWidestCube)};
        return [&filter, arguments](std::unique_ptr<ImageFile>& stack, const Progress& progress) {
            require(arguments.channel < stack->attributes().channels,
                    "--filter: the stack has no such channel");
            require(filter.run(*stack, arguments, progress), "--filter: the stack cannot be filtered");
        };
    }
    throw UsageError{"--filter: '" + parts.first() + "' is no filter"};
}

constexpr Operation kOperations[] = {
    {"crop", "X0,X1,Y0,Y1,Z0,Z1", "Operation: keep a box, bounds inclusive.", "Cropping", makeCrop},
    {"flip", "AXES", "Operation: mirror along these axes.", "Flipping", makeFlip},
    {"invert", nullptr, "Operation: turn dark into bright.", "Inverting", makeInvert},
    {"subsample", "F", "Operation: the mean of blocks of F voxels an axis, 1 to 8.", "Sub-sampling",
     makeSubsample},
    {"subsample-max", "FX,FY,FZ", "Operation: the largest value of blocks.", "Sub-sampling",
     makeSubsampleMax},
    {"subsample-mean", "FX,FY,FZ", "Operation: the mean of blocks.", "Sub-sampling", makeSubsampleMean},
    {"project", "max", "Operation: the largest value along z.", "Projecting", makeProject},
    {"extract", "C", "Operation: keep one channel, counted from 0.", "Extracting", makeExtract},
    {"ratio", "A,B", "Operation: (A - B) / (A + B) of two channels.", "Dividing", makeRatio},
    {"add", "VALUE,C", "Operation: add to the samples of channel C, -1 for all.", "Adding", makeAdd},
    {"pad", "X,Y,Z", "Operation: centre the stack in zeros.", "Padding", makePad},
    {"pad-back", "Z", "Operation: add layers of zeros at the end.", "Padding", makePadBack},
    {"filter", "NAME,SIZE[,3d][,channel=C][,percent=P][,threshold=T]",
     "Operation: mean, median, min, max, background or zfilter with a window of SIZE voxels an axis, in each "
     "layer or with 3d across layers, of one channel (default all); background takes percent (default 100) "
     "of the median off, zfilter clears what no other of SIZE layers has above threshold (default 0).",
     "Filtering", makeFilter},
    {"depth", "OPERATION",
     "Operation: clamp-lower, clamp-upper, short, smart-lower, smart-mult, range=L:U or to=BITS.",
     "Converting", makeDepth},
    {"zcurve", "FILE.mzp",
     "Operation: multiply the slices by a depth curve. The curves of all channels change the first channel.",
     "Correcting", makeZCurve},
};

const Operation* findOperation(const QString& option)
{
    for (const Operation& operation : kOperations) {
        if (option == QLatin1String(operation.name))
            return &operation;
    }
    return nullptr;
}

} // namespace

void addOperationOptions(QCommandLineParser& parser)
{
    for (const Operation& operation : kOperations) {
        if (operation.argument != nullptr)
            parser.addOption({operation.name, operation.help, operation.argument});
        else
            parser.addOption({operation.name, operation.help});
    }
}

std::vector<StackStep> operationSteps(const QCommandLineParser& parser)
{
    QMap<QString, QStringList> arguments;
    std::vector<StackStep> steps;
    for (const QString& option : parser.optionNames()) {
        const Operation* operation = findOperation(option);
        if (operation == nullptr)
            continue;
        if (!arguments.contains(option))
            arguments[option] = parser.values(option);
        QStringList& waiting = arguments[option];
        steps.push_back({QLatin1String(operation->title),
                         operation->make(waiting.isEmpty() ? QString() : waiting.takeFirst())});
    }
    return steps;
}

} // namespace tirn
