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
#include "image/filters/filtertable.h"
#include "image/filters/pointfilters.h"

namespace tirn {

namespace {

constexpr int kLargestFactor = 8;
constexpr int kLargestSample = 65535;

/// An operation: its option, and how an argument becomes a step.
struct Operation
{
    const char* name;
    /// Null for an operation without an argument.
    const char* argument;
    /// With %1 for the words of all filters.
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
    return [](std::unique_ptr<ImageFile>& stack, const Progress& progress) { invert(*stack, progress); };
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
        require(addConstant(*stack, value, channel, progress), "--add: the stack has no such channel");
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

/// The filter of a word; null for a word that names none.
const Filter* filterOf(const QString& word)
{
    for (const Filter& filter : filters()) {
        if (filter.word != nullptr && word == QLatin1String(filter.word))
            return &filter;
    }
    return nullptr;
}

/// What a filter takes under a word; null where it takes nothing.
const FilterParameter* parameterOf(const Filter& filter, const QString& word)
{
    for (const FilterParameter& parameter : filter.parameters) {
        if (parameter.word[0] != 0 && word == QLatin1String(parameter.word))
            return &parameter;
    }
    return nullptr;
}

/// What an argument after the size says. Any filter may be told what only another one takes.
void readFilterArgument(const QString& text, const Filter& filter, FilterJobParameters& parameters)
{
    const QString key = text.section('=', 0, 0);
    if (key == QLatin1String("channel")) {
        parameters.channelAll = false;
        parameters.channel = wholeNumber("filter", text.section('=', 1), 0, kLargestSample);
        return;
    }
    const FilterParameter* own = parameterOf(filter, key);
    const FilterParameter* known = own;
    for (const Filter& other : filters())
        known = known != nullptr ? known : parameterOf(other, key);
    const bool isFlag = known != nullptr && known->place == FilterParameter::Place::ThreeD;
    if (known == nullptr || (isFlag && text != key))
        throw UsageError{"--filter: '" + text + "' is none of 3d, channel=C, percent=P, threshold=T"};
    const int value =
        isFlag ? 1 : wholeNumber("filter", text.section('=', 1), known->minimum, known->maximum);
    if (own != nullptr)
        own->store(value, parameters);
}

FilterJobParameters filterParameters(const Filter& filter, const QStringList& parts)
{
    FilterJobParameters parameters;
    for (const FilterParameter& each : filter.parameters)
        each.store(each.usual, parameters);
    parameters.operation = filter.operation;
    parameters.size = wholeNumber("filter", parts.value(1), 1, kWidestWindow);
    for (const QString& part : parts.mid(2))
        readFilterArgument(part, filter, parameters);
    return parameters;
}

StackStep::Run makeFilter(const QString& text)
{
    const QStringList parts = text.split(',');
    const Filter* filter = filterOf(parts.first());
    if (filter == nullptr)
        throw UsageError{"--filter: '" + parts.first() + "' is no filter"};
    const FilterJobParameters parameters = filterParameters(*filter, parts);
    if (parameters.threeD && parameters.size > filter->widestCube)
        throw UsageError{
            QString("--filter: a 3d %1 takes a size from 1 to %2").arg(filter->word).arg(filter->widestCube)};
    return [filter, parameters](std::unique_ptr<ImageFile>& stack, const Progress& progress) {
        require(parameters.chosenChannel() < stack->attributes().channels,
                "--filter: the stack has no such channel");
        require(filter->apply(*stack, parameters, progress), "--filter: the stack cannot be filtered");
    };
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
     "Operation: one of %1, with a window of SIZE voxels an axis, in each "
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
    QStringList words;
    for (const Filter& filter : filters()) {
        if (filter.word != nullptr)
            words.append(filter.word);
    }
    for (const Operation& operation : kOperations) {
        const QString help = QString(operation.help).replace("%1", words.join(", "));
        if (operation.argument != nullptr)
            parser.addOption({operation.name, help, operation.argument});
        else
            parser.addOption({operation.name, help});
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
