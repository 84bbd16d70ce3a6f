#include "cli/renderoptions.h"

#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>

#include "cli/activity.h"
#include "cli/console.h"
#include "cli/stackinput.h"
#include "cli/toolerror.h"
#include "cli/words.h"
#include "depth/curvefile.h"
#include "mesh/stlreader.h"
#include "palettes/palettefile.h"
#include "palettes/palettelist.h"
#include "session/settings.h"
#include "volume/volumemaking.h"

namespace tirn {

namespace {

constexpr int kMostPixels = 1000000;

double number(const QString& option, const QString& text) { return numbers(option, text, 1).first(); }

Words<int> filterColorNames()
{
    Words<int> names;
    // The default stands first.
    const int usual = ViewState().filterColors;
    names.emplace_back(kFilterColors[static_cast<std::size_t>(usual)].name, usual);
    for (int i = 0; i < static_cast<int>(kFilterColors.size()); ++i)
        names.emplace_back(kFilterColors[static_cast<std::size_t>(i)].name, i);
    return names;
}

/// The n-th of --palette and --color, in the order in which they were given, is for channel n.
std::vector<RenderOptions::ChannelPalette> channelPalettes(const QCommandLineParser& parser)
{
    std::vector<RenderOptions::ChannelPalette> palettes;
    QHash<QString, int> taken;
    for (const QString& option : parser.optionNames()) {
        if (option != "palette" && option != "color")
            continue;
        const QString value = parser.values(option).at(taken[option]++);
        if (option == "palette")
            palettes.push_back({value, {}});
        else
            palettes.push_back({{}, colorOption("color", value)});
    }
    return palettes;
}

void takeBackground(const QCommandLineParser& parser, bool maySeeThrough, RenderOptions& options)
{
    if (!parser.isSet("background"))
        return;
    const QString text = parser.value("background");
    if (text != "none") {
        options.view.backgroundColor = colorOption("background", text);
        return;
    }
    if (!maySeeThrough)
        throw UsageError{"--background none: only a PNG keeps what can be seen through"};
    if (options.view.blendMode != GL_FUNC_ADD)
        throw UsageError{"--background none: only with alpha blending"};
    options.transparent = true;
}

/// A surface of one colour, whose own light is most of it.
Material plainMaterial(const QColor& color)
{
    constexpr float own = 0.8F;
    const std::array<float, 3> parts = {static_cast<float>(color.redF()), static_cast<float>(color.greenF()),
                                        static_cast<float>(color.blueF())};
    Material material;
    for (std::size_t i = 0; i < 3; ++i) {
        material.ambientAndDiffuse[i] = parts[i];
        material.emission[i] = own * parts[i];
        material.specular[i] = 0;
    }
    return material;
}

std::unique_ptr<Palette> readPalette(const QString& name, PaletteTables& tables)
{
    PaletteFile file(name);
    if (!QFileInfo::exists(name))
        throw FileError(name, QStringLiteral("No such file"));
    if (!file.read())
        throw FileError(name, QStringLiteral("does not use a known palette file format"));
    return file.makePalette(&tables);
}

/// The palettes that loading generates, and in their places those that were asked for.
void makePalettes(OffscreenStage& stage, const RenderOptions& options)
{
    std::vector<Channel>& channels = stage.scene.current()->channels();
    const auto count = static_cast<int>(channels.size());
    if (options.palettes.size() > channels.size())
        throw UsageError{
            QString("%1 palettes and colors for %2 channels").arg(options.palettes.size()).arg(count)};
    PaletteTables& tables = stage.paletteTables();
    appendMissingPalettes(stage.scene.palettes, count,
                          static_cast<PaletteGeneration>(Settings().paletteGeneration), &tables);
    for (std::size_t c = 0; c < channels.size(); ++c) {
        channels[c].display.palette = static_cast<int>(c);
        if (c >= options.palettes.size())
            continue;
        const RenderOptions::ChannelPalette& wanted = options.palettes[c];
        stage.scene.palettes[c] = wanted.file.isEmpty() ? std::make_unique<Palette>(wanted.color, 8, &tables)
                                                        : readPalette(wanted.file, tables);
    }
}

void hideChannels(VoxelArray& array, const QList<int>& hidden)
{
    for (const int channel : hidden) {
        if (channel >= array.channelCount())
            throw UsageError{QString("--hide: there is no channel %1").arg(channel)};
        array.channels()[static_cast<std::size_t>(channel)].display.state = ChannelState::Hidden;
    }
}

void cutVolume(VoxelArray& array, const QList<int>& cut)
{
    if (cut.isEmpty())
        return;
    const int sizes[] = {array.width(), array.height(), array.finalDepth()};
    for (int axis = 0; axis < 3; ++axis) {
        if (cut[2 * axis] > cut[2 * axis + 1] || cut[2 * axis + 1] >= sizes[axis])
            throw UsageError{QString("--cut: %1 to %2 is no range of the %3 slices along %4")
                                 .arg(cut[2 * axis])
                                 .arg(cut[2 * axis + 1])
                                 .arg(sizes[axis])
                                 .arg(QChar('x' + axis))};
    }
    array.cut = {cut[0], cut[1], cut[2], cut[3], cut[4], cut[5]};
}

std::unique_ptr<VoxelArray> makeVolume(OffscreenStage& stage, const std::vector<QStringList>& timePoints,
                                       const RenderOptions& options)
{
    auto array = std::make_unique<VoxelArray>(stage.volumeOptions());
    for (const QStringList& names : timePoints) {
        std::shared_ptr<ImageFile> image = openStack(names);
        readStack(*image, names);
        if (!array->images().empty() && !(image->attributes() == array->images().front()->attributes()))
            throw FileError(names.first(),
                            QStringLiteral("differs from the first time point in size, depth or type"));
        array->appendImage(std::move(image));
    }
    Activity activity(QStringLiteral("Encoding"));
    activity.setSteps(0, 100);
    const int channels = array->images().front()->attributes().channels;
    const bool complete = completeVolume(
        *array, {channels, static_cast<int>(timePoints.size()), options.target}, activity.progress());
    Console::checkInterrupt();
    if (!complete)
        throw FileError(timePoints.front().first(), QStringLiteral("cannot be made into textures"));
    return array;
}

/// Applies the curves of a file while drawing.
void takeCurves(OffscreenStage& stage, const QString& name)
{
    if (name.isEmpty())
        return;
    VoxelArray& array = *stage.scene.current();
    std::vector<std::vector<double>*> curves;
    for (Channel& channel : array.channels())
        curves.push_back(channel.zCurve.curve().get());
    const CurveFileResult result = readCurveFile(name, array.depth(), curves);
    if (!result.error.isEmpty())
        throw FileError(name, result.error);
    for (Channel& channel : array.channels())
        channel.zCurve.generateTexture();
    stage.scene.view.zCorrection = true;
}

void takeMesh(OffscreenStage& stage, const RenderOptions& options)
{
    if (options.mesh.isEmpty())
        return;
    const VoxelArray& array = *stage.scene.current();
    StlContent content;
    const QString reason = readStl(options.mesh, content);
    if (!reason.isEmpty())
        throw FileError(options.mesh, reason);
    const std::array<double, 3> voxelSize = {array.stack().dimX, array.stack().dimY, array.stack().dimZ};
    if (options.meshFit == MeshFit::Microns && *std::min_element(voxelSize.begin(), voxelSize.end()) <= 0)
        throw FileError(options.mesh,
                        QStringLiteral("cannot be placed by microns: the voxel size is not known"));
    auto mesh = std::make_unique<Segmentation>();
    mesh->facets = std::move(content.facets);
    mesh->bounds = boundsOf(mesh->facets);
    fitMesh(*mesh, options.meshFit, array.geometry(), voxelSize);
    if (options.meshColor.isValid())
        mesh->material = plainMaterial(options.meshColor);
    stage.scene.segmentations.push_back(std::move(mesh));
}

} // namespace

QSize sizeOption(const QString& option, const QString& text)
{
    static const QRegularExpression pattern("^([0-9]{1,9})x([0-9]{1,9})$");
    const QRegularExpressionMatch match = pattern.match(text);
    const QSize size(match.captured(1).toInt(), match.captured(2).toInt());
    if (!match.hasMatch() || size.isEmpty() || size.width() > kMostPixels || size.height() > kMostPixels)
        throw UsageError{QString("--%1: '%2' is not WIDTHxHEIGHT with sides from 1 to %3")
                             .arg(option, text)
                             .arg(kMostPixels)};
    return size;
}

QColor colorOption(const QString& option, const QString& text)
{
    static const QRegularExpression sixDigits("^[0-9A-Fa-f]{6}$");
    if (!sixDigits.match(text).hasMatch())
        throw UsageError{QString("--%1: '%2' is not RRGGBB in hexadecimal digits").arg(option, text)};
    return QColor('#' + text);
}

void addRenderOptions(QCommandLineParser& parser)
{
    parser.addOption({"size", "Width and height in pixels (default 512x512).", "WxH"});
    parser.addOption(
        {"draw",
         "Who draws the volume: the graphics card, the processor, or the processor where there is "
         "no card (default auto).",
         "auto|gpu|cpu"});
    parser.addOption({"target", "Slices in 2D textures, or 3D ones (default 2d).", "2d|3d"});
    parser.addOption({"blend", "Alpha blending or the maximum (default alpha).", "alpha|max"});
    parser.addOption({"rotate", "Angles about the axes in degrees (default 0,0,0).", "X,Y,Z"});
    parser.addOption({"translate", "Shift; the picture is 2 wide (default 0,0,0).", "X,Y,Z"});
    parser.addOption(
        {"scale", "Scale of the axes (default: by the voxel size, 1 where that is unknown).", "X,Y,Z"});
    parser.addOption({"palette", "Palette file; the n-th of these and --color is for channel n.", "FILE"});
    parser.addOption({"color",
                      "Ramp from black to a colour (default: what loading generates: grey for one channel, "
                      "red, green, blue and then grey for more).",
                      "RRGGBB"});
    parser.addOption({"hide", "Hide a channel, counted from 0 (default: all are shown).", "C"});
    parser.addOption({"cut", "Slices to draw, inclusive (default: all).", "X0,X1,Y0,Y1,Z0,Z1"});
    parser.addOption(
        {"background", "Background (default 000000); none, for PNG, is transparent.", "RRGGBB|none"});
    parser.addOption({"box", "Draw the bounding box (default: not)."});
    parser.addOption({"scale-bar", "Draw a scale bar (default: not)."});
    parser.addOption(
        {"mode", "One view, an anaglyph or four views (default normal).", "normal|anaglyph|four"});
    parser.addOption({"filter-colors",
                      "Colours of an anaglyph: Red-Blue, Red-Cyan, Red-Green, Blue-Red, Cyan-Red, Green-Red "
                      "(default Red-Green).",
                      "NAME"});
    parser.addOption({"eye-separation", "Distance of the eyes of an anaglyph (default 0.07).", "E"});
    parser.addOption({"focal", "Where the volume stands in an anaglyph (default in).", "front|in|behind"});
    parser.addOption({"stretch", "Spread the bits that the data use over the whole palette (default: not)."});
    parser.addOption({"watermark", "Text at the bottom (default: none).", "TEXT"});
    parser.addOption({"zcurve", "Depth correction, for the 3d target (default: none).", "FILE.mzp"});
    parser.addOption({"mesh", "Surface in the volume (default: none).", "FILE.stl"});
    parser.addOption(
        {"mesh-fit",
         "What the surface's numbers are: none for drawing units, volume to fill the volume, voxels "
         "or microns (default none).",
         "none|volume|voxels|microns"});
    parser.addOption({"mesh-color", "Colour of the surface (default: a purple).", "RRGGBB"});
}

RenderOptions renderOptions(const QCommandLineParser& parser, bool maySeeThrough)
{
    RenderOptions options;
    ViewState& view = options.view;
    if (parser.isSet("size"))
        options.size = sizeOption("size", parser.value("size"));
    options.drawing = wordOption<Drawing>(
        parser, "draw", {{"auto", Drawing::Automatic}, {"gpu", Drawing::Card}, {"cpu", Drawing::Processor}});
    options.target = wordOption<GLenum>(parser, "target", {{"2d", GL_TEXTURE_2D}, {"3d", GL_TEXTURE_3D}});
    view.blendMode = wordOption<GLenum>(parser, "blend", {{"alpha", GL_FUNC_ADD}, {"max", GL_MAX}});
    if (parser.isSet("rotate")) {
        const QList<double> angles = numbers("rotate", parser.value("rotate"), 3);
        view.rotX = wrapDegrees(angles[0]);
        view.rotY = wrapDegrees(angles[1]);
        view.rotZ = wrapDegrees(angles[2]);
    }
    if (parser.isSet("translate")) {
        const QList<double> shift = numbers("translate", parser.value("translate"), 3);
        view.transX = shift[0];
        view.transY = shift[1];
        view.transZ = shift[2];
    }
    if (parser.isSet("scale"))
        options.scale = numbers("scale", parser.value("scale"), 3);
    if (parser.isSet("cut"))
        options.cut = wholeNumbers("cut", parser.value("cut"), 6, 0, INT_MAX - 1);
    for (const QString& channel : parser.values("hide"))
        options.hidden.append(wholeNumber("hide", channel, 0, INT_MAX));
    options.palettes = channelPalettes(parser);
    takeBackground(parser, maySeeThrough, options);
    view.showBoundingBox = parser.isSet("box");
    view.showScaleBar = parser.isSet("scale-bar");
    view.renderMode = wordOption<RenderMode>(parser, "mode",
                                             {{"normal", RenderMode::Normal},
                                              {"anaglyph", RenderMode::Anaglyph},
                                              {"four", RenderMode::FourViews}});
    view.ortho = projectionOf(view.renderMode);
    view.filterColors = wordOption<int>(parser, "filter-colors", filterColorNames());
    if (parser.isSet("eye-separation"))
        view.camera.eyesep = number("eye-separation", parser.value("eye-separation"));
    view.camera.focalLength =
        wordOption<double>(parser, "focal", {{"in", 2.0}, {"front", 1.0}, {"behind", 3.0}});
    options.stretch = parser.isSet("stretch");
    options.watermark = parser.value("watermark");
    options.zCurve = parser.value("zcurve");
    if (!options.zCurve.isEmpty() && options.target != GL_TEXTURE_3D)
        throw UsageError{"--zcurve: depth correction is drawn in the 3d target only; say --target 3d"};
    options.mesh = parser.value("mesh");
    options.meshFit = wordOption<MeshFit>(parser, "mesh-fit",
                                          {{"none", MeshFit::None},
                                           {"volume", MeshFit::Volume},
                                           {"voxels", MeshFit::Voxels},
                                           {"microns", MeshFit::Microns}});
    if (parser.isSet("mesh-color"))
        options.meshColor = colorOption("mesh-color", parser.value("mesh-color"));
    return options;
}

std::unique_ptr<OffscreenStage> makeStage(const std::vector<QStringList>& timePoints,
                                          const RenderOptions& options)
{
    QString error;
    std::unique_ptr<OffscreenStage> stage = OffscreenStage::withoutDisplay(error);
    if (stage == nullptr)
        throw FileError(timePoints.front().first(), "cannot be drawn: " + error);
    stage->scene.settings.drawing = options.drawing;
    stage->scene.view = options.view;
    stage->scene.view.autoBitDepth = options.stretch;
    stage->scene.view.drawFileLabel = !options.watermark.isEmpty();
    stage->scene.watermark = options.watermark;
    stage->show(makeVolume(*stage, timePoints, options));
    VoxelArray& array = *stage->scene.current();
    makePalettes(*stage, options);
    hideChannels(array, options.hidden);
    cutVolume(array, options.cut);
    if (!options.scale.isEmpty())
        array.scale = {options.scale[0], options.scale[1], options.scale[2]};
    takeCurves(*stage, options.zCurve);
    takeMesh(*stage, options);
    return stage;
}

} // namespace tirn
