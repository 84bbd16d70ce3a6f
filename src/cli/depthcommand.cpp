#include <optional>

#include "base/log.h"
#include "cli/activity.h"
#include "cli/command.h"
#include "cli/console.h"
#include "cli/resultfiles.h"
#include "cli/stackinput.h"
#include "cli/toolerror.h"
#include "depth/curvefile.h"
#include "depth/curvesearch.h"

namespace tirn {

namespace {

constexpr int kMostMaximum = 10;
constexpr double kLeastScale = 0.1;
constexpr double kMostScale = 10;

/// What the options ask for.
struct DepthOptions
{
    std::optional<CurveSearch> search;
    CurveParameters curve;
    PowerRange range;
    bool linear = false;
    std::optional<int> channel;
};

void addOptions(QCommandLineParser& parser)
{
    const auto text = [](const char* format, double value) {
        return QString(format).arg(plainNumber(value));
    };
    const CurveParameters curve;
    const PowerRange range;
    parser.addOption({"method",
                      "Search: mean gives all slices the largest mean of a slice, brent and linear look for "
                      "the power with the most entropy (default: no search).",
                      "mean|brent|linear"});
    parser.addOption({"min", text("Least power of a search (default %1).", range.min), "P"});
    parser.addOption({"max", text("Largest power of a search (default %1).", range.max), "P"});
    parser.addOption(
        {"step", text("Step of a linear search, tolerance of Brent's (default %1).", range.step), "S"});
    parser.addOption({"scale", text("Scale of the power curve, 0.1 to 10 (default %1).", curve.scale), "S"});
    parser.addOption(
        {"offset", text("Slice at which the curve begins to rise (default %1).", curve.offset), "O"});
    parser.addOption({"maximum", text("Largest multiplier, 1 to 10 (default %1).", curve.maximum), "M"});
    parser.addOption({"power", text("Power of the curve, 0.1 to 10 (default %1).", curve.power), "P"});
    parser.addOption({"linear", "A straight line instead of a power curve."});
    parser.addOption({"channel", "Only this channel, counted from 0 (default: all, each by itself).", "C"});
}

/// The number of an option, within limits.
double number(const QCommandLineParser& parser, const char* option, double otherwise, double least,
              double most)
{
    if (!parser.isSet(option))
        return otherwise;
    const double value = numbers(option, parser.value(option), 1).first();
    if (!(value >= least && value <= most))
        throw UsageError{
            QString("--%1: '%2' is not from %3 to %4")
                .arg(QLatin1String(option), parser.value(option), plainNumber(least), plainNumber(most))};
    return value;
}

std::optional<CurveSearch> searchOf(const QCommandLineParser& parser)
{
    if (!parser.isSet("method"))
        return std::nullopt;
    const QStringList names = {"mean", "brent", "linear"};
    const auto row = names.indexOf(parser.value("method"));
    if (row < 0)
        throw UsageError{"--method: '" + parser.value("method") + "' is none of mean, brent, linear"};
    return static_cast<CurveSearch>(row);
}

DepthOptions depthOptions(const QCommandLineParser& parser)
{
    constexpr double any = 1e9;
    DepthOptions options;
    options.search = searchOf(parser);
    options.linear = parser.isSet("linear");
    if (int(options.search.has_value()) + int(options.linear) + int(parser.isSet("power")) > 1)
        throw UsageError{"only one of --method, --power and --linear"};
    options.curve.scale = number(parser, "scale", options.curve.scale, kLeastScale, kMostScale);
    options.curve.offset = number(parser, "offset", options.curve.offset, -any, any);
    options.curve.power = number(parser, "power", options.curve.power, kLeastPower, kMostPower);
    if (parser.isSet("maximum"))
        options.curve.maximum = wholeNumber("maximum", parser.value("maximum"), 1, kMostMaximum);
    options.range.min = number(parser, "min", options.range.min, 0, kMostMaximum);
    options.range.max = number(parser, "max", options.range.max, 0, kMostMaximum);
    options.range.step = number(parser, "step", options.range.step, 0, kMostMaximum);
    if (options.range.max < options.range.min)
        throw UsageError{"--max is below --min"};
    if (parser.isSet("channel"))
        options.channel = wholeNumber("channel", parser.value("channel"), 0, INT32_MAX);
    return options;
}

std::vector<double> curveOf(const ImageFile& stack, int channel, const DepthOptions& options)
{
    std::vector<double> curve(static_cast<std::size_t>(stack.attributes().z), 1.0);
    if (options.search == CurveSearch::NormalizeMean) {
        normalizeMean(curve, stack.statsList().at(static_cast<std::size_t>(channel)).sliceMean);
        return curve;
    }
    CurveParameters parameters = options.curve;
    if (options.search) {
        Activity activity(QStringLiteral("Searching"));
        const std::optional<double> power =
            fitPower(*options.search, stack, channel, parameters, options.range, activity.progress());
        Console::checkInterrupt();
        parameters.power = power.value_or(parameters.power);
    }
    if (options.linear)
        linearCurve(curve, parameters.offset, parameters.maximum);
    else
        powerCurve(curve, parameters);
    return curve;
}

void run(const QCommandLineParser& parser)
{
    QStringList names = parser.positionalArguments();
    if (names.size() < 2)
        throw UsageError{"depth needs a FILE and an OUT"};
    const QString out = names.takeLast();
    if (!out.endsWith(".mzp"))
        throw UsageError{"'" + out + "' does not end in .mzp"};
    const DepthOptions options = depthOptions(parser);
    checkReplaceable(out, parser.isSet("overwrite"));

    const auto stack = openStack(names);
    readStack(*stack, names);
    const int channels = stack->attributes().channels;
    if (options.channel && *options.channel >= channels)
        throw FileError(names.first(), QStringLiteral("--channel: the stack has no such channel"));
    std::vector<CurveBlock> blocks;
    for (int c = 0; c < channels; ++c) {
        if (!options.channel || *options.channel == c)
            blocks.push_back({c, curveOf(*stack, c, options)});
    }
    ResultFiles results({out}, parser.isSet("overwrite"));
    if (!writeCurveFile(results.place(out), blocks))
        throw FileError(out, QStringLiteral("could not be written"));
    results.commit(1);
}

} // namespace

const Command kDepthCommand = {
    "depth", "Make depth correction curves of a stack.",
    "[--method mean|brent|linear] [--min P] [--max P] [--step S] [--scale S] "
    "[--offset O] [--maximum M] [--power P | --linear] [--channel C] FILE... OUT.mzp",
    addOptions, run};

} // namespace tirn
