#include <QColor>
#include <QFileInfo>
#include <QRegularExpression>

#include "cli/command.h"
#include "cli/resultfiles.h"
#include "cli/stackinput.h"
#include "cli/toolerror.h"
#include "palettes/palettefile.h"

namespace tirn {

namespace {

void addOptions(QCommandLineParser& parser)
{
    parser.addOption({"in", "Start from a palette file.", "FILE"});
    parser.addOption({"identity", "Start from a grey ramp (the default)."});
    parser.addOption({"color", "Start from a ramp from black to a colour.", "RRGGBB"});
    parser.addOption({"depth", "Bits of a ramp: 8 or 12 (default 8).", "8|12"});
    parser.addOption({"curve", "Put a curve in place of red, green, blue and alpha.", "SCALE,POWER,OFFSET"});
}

std::unique_ptr<Palette> startingPalette(const QCommandLineParser& parser)
{
    const int starts = int(parser.isSet("in")) + int(parser.isSet("identity")) + int(parser.isSet("color"));
    if (starts > 1)
        throw UsageError{"only one of --in, --identity and --color"};
    const QString depthText = parser.isSet("depth") ? parser.value("depth") : QString("8");
    if (depthText != "8" && depthText != "12")
        throw UsageError{"--depth: '" + depthText + "' is neither 8 nor 12"};
    const int depth = depthText.toInt();
    if (parser.isSet("in")) {
        if (parser.isSet("depth"))
            throw UsageError{"--depth is for ramps, not for --in"};
        const QString name = parser.value("in");
        PaletteFile file(name);
        if (!QFileInfo::exists(name))
            throw FileError(name, QStringLiteral("No such file"));
        if (!file.read())
            throw FileError(name, QStringLiteral("does not use a known palette file format"));
        return file.makePalette();
    }
    if (parser.isSet("color")) {
        const QString color = parser.value("color");
        static const QRegularExpression sixDigits("^[0-9A-Fa-f]{6}$");
        if (!sixDigits.match(color).hasMatch())
            throw UsageError{"--color: '" + color + "' is not RRGGBB in hexadecimal digits"};
        return std::make_unique<Palette>(QColor('#' + color), depth);
    }
    return std::make_unique<Palette>("identity", depth);
}

void run(const QCommandLineParser& parser)
{
    const QStringList names = parser.positionalArguments();
    if (names.size() != 1)
        throw UsageError{"palette needs one OUT"};
    const QString& out = names.first();
    if (!out.endsWith(".map") && !out.endsWith(".col") && !out.endsWith(".lut"))
        throw UsageError{"'" + out + "' ends in none of .map, .col, .lut"};
    const auto palette = startingPalette(parser);
    if (parser.isSet("curve")) {
        const QList<double> curve = numbers("curve", parser.value("curve"), 3);
        palette->setEditFlags({.red = true, .green = true, .blue = true, .alpha = true});
        palette->applyCurveRgb(curve[0], curve[1], curve[2]);
    }
    ResultFiles results({out}, parser.isSet("overwrite"));
    if (!PaletteFile(results.place(out)).write(*palette))
        throw FileError(out, QStringLiteral("could not be written"));
    results.commit(1);
}

} // namespace

const Command kPaletteCommand = {"palette", "Make or convert a palette file (.map, .col or .lut).",
                                 "[--in FILE | --identity | --color RRGGBB] [--depth 8|12] "
                                 "[--curve SCALE,POWER,OFFSET] OUT",
                                 addOptions, run};

} // namespace tirn
