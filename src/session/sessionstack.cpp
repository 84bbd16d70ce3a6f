#include "session/sessionstack.h"

#include <algorithm>
#include <utility>

#include <QDir>
#include <QFileInfo>

#include "base/log.h"
#include "depth/curvesession.h"
#include "image/layercount.h"
#include "session/attributenumber.h"
#include "session/rawlayouttext.h"
#include "session/relativepath.h"

namespace tirn {

namespace {

/// Since this one a `timepoint` is a time point and each axis has its own voxel size.
constexpr int kVersion = 2;
/// More layers than any stack has: what a damaged session may ask for at most.
constexpr int kMostSlices = 1 << 20;

constexpr std::pair<const char*, int CropLimits::*> kLimits[] = {
    {"xmin", &CropLimits::xMin}, {"xmax", &CropLimits::xMax}, {"ymin", &CropLimits::yMin},
    {"ymax", &CropLimits::yMax}, {"zmin", &CropLimits::zMin}, {"zmax", &CropLimits::zMax}};
constexpr std::pair<const char*, int SessionStack::*> kSlices[] = {{"first", &SessionStack::first},
                                                                   {"last", &SessionStack::last},
                                                                   {"step", &SessionStack::step},
                                                                   {"subsample", &SessionStack::subsample}};
constexpr std::array<const char*, 3> kAxes = {"x", "y", "z"};

QDomElement appended(QDomElement& parent, const char* name)
{
    return parent.appendChild(parent.ownerDocument().createElement(name)).toElement();
}

void writeAxes(QDomElement element, const std::array<double, 3>& values)
{
    for (std::size_t axis = 0; axis < kAxes.size(); ++axis)
        element.setAttribute(kAxes[axis], attributeNumber(values[axis]));
}

void writeTimePoint(QDomElement& root, const SessionTimePoint& timePoint, const QString& directory)
{
    QDomElement element = appended(root, "timepoint");
    if (!timePoint.label.isNull())
        element.setAttribute("label", timePoint.label);
    for (const QString& path : timePoint.files)
        appended(element, "file")
            .appendChild(root.ownerDocument().createTextNode(relativePath(path, directory)));
}

void writeChannel(QDomDocument& document, QDomElement& root, const SessionChannel& channel)
{
    QDomElement element = appended(root, "channel");
    element.setAttribute("palette", channel.palette);
    element.setAttribute("second", channel.secondPalette);
    element.setAttribute("state", channel.state);
    if (channel.curve)
        element.appendChild(saveCurveToSession(*channel.curve, document));
}

/// The first descendant of that name.
QDomElement descendant(const QDomElement& stack, const char* name)
{
    return stack.elementsByTagName(name).at(0).toElement();
}

QDomText textOf(const QDomElement& element)
{
    for (QDomNode child = element.firstChild(); !child.isNull(); child = child.nextSibling()) {
        if (child.isText())
            return child.toText();
    }
    return {};
}

void readSlices(const QDomElement& element, SessionStack& stack)
{
    const QDomElement slices = descendant(element, "slices");
    for (const auto& [key, value] : kSlices)
        stack.*value = slices.attribute(key, "0").toInt();
    const QDomElement resliced = descendant(element, "resliced");
    if (resliced.isNull())
        return;
    const std::int64_t layers = std::int64_t{stack.last} - stack.first;
    const auto all = static_cast<int>(layers / std::max(1, stack.step));
    const int depth = resliced.hasAttribute("slices") ? resliced.attribute("slices").toInt() : all;
    if (depth != 0)
        stack.reslicedTo = depth;
}

std::array<double, 3> readAxes(const QDomElement& element)
{
    std::array<double, 3> values = {};
    for (std::size_t axis = 0; axis < kAxes.size(); ++axis)
        values[axis] = element.attribute(kAxes[axis], "-1").toDouble();
    return values;
}

/// False when a missing file found no other one.
bool readFiles(const QDomElement& timePoint, const MissingFileQuestion& fixMissingFile, QStringList& names)
{
    for (QDomElement file = timePoint.firstChildElement("file"); !file.isNull();
         file = file.nextSiblingElement("file")) {
        QDomText text = textOf(file);
        if (text.isNull())
            continue;
        // Looked up once: the old name stands in the list even after another file was chosen, and the load
        // fails on it.
        const QFileInfo info(text.data());
        if (!info.exists() && !(fixMissingFile && fixMissingFile(text)))
            return false;
        names.append(QDir::toNativeSeparators(info.absoluteFilePath()));
        logDebug("file %s", qUtf8Printable(names.last()));
    }
    return true;
}

SessionChannel readChannel(const QDomElement& element, int slices)
{
    SessionChannel channel;
    channel.palette = element.attribute("palette", "0").toInt();
    channel.secondPalette = element.attribute("second", "0").toInt();
    channel.state = element.attribute("state", "0").toInt();
    const QDomElement curve = element.firstChildElement();
    if (!textOf(curve).isNull())
        channel.curve = readSessionCurve(curve, slices);
    return channel;
}

} // namespace

QDomElement writeSessionStack(QDomDocument& document, const SessionStack& stack, const QString& directory)
{
    QDomElement root = document.createElement("stack");
    root.setAttribute("version", kVersion);
    QDomElement slices = appended(root, "slices");
    for (const auto& [key, value] : kSlices)
        slices.setAttribute(key, stack.*value);
    QDomElement encoding = appended(root, "encoding");
    encoding.setAttribute("type", stack.encoding);
    encoding.setAttribute("conserve", stack.conserveMemory ? 1 : 0);
    if (stack.reslicedTo)
        appended(root, "resliced").setAttribute("slices", *stack.reslicedTo);
    if (stack.raw)
        appended(root, "raw").setAttribute("layout", rawLayoutTexts(*stack.raw).join(' '));
    QDomElement cut = appended(root, "cutplanes");
    for (const auto& [key, limit] : kLimits)
        cut.setAttribute(key, stack.cut.*limit);
    QDomElement scale = appended(root, "scale");
    writeAxes(scale, stack.sizes.scale);
    scale.setAttribute("preserve", stack.sizes.preserveScaleRatio ? 1 : 0);
    writeAxes(appended(root, "dimensions"), stack.sizes.voxelSize);
    for (const SessionTimePoint& timePoint : stack.timePoints)
        writeTimePoint(root, timePoint, directory);
    for (const SessionChannel& channel : stack.channels)
        writeChannel(document, root, channel);
    return root;
}

std::optional<SessionStack> readSessionStack(const QDomElement& element,
                                             const MissingFileQuestion& fixMissingFile)
{
    SessionStack stack;
    stack.isOld = element.attribute("version").toInt() < kVersion;
    readSlices(element, stack);
    for (const auto& [key, limit] : kLimits)
        stack.cut.*limit = descendant(element, "cutplanes").attribute(key, "-1").toInt();
    stack.raw = rawLayoutOf(element.firstChildElement("raw").attribute("layout").split(' '));
    const QDomElement scale = element.firstChildElement("scale");
    stack.sizes = {readAxes(scale), scale.attribute("preserve", "0").toInt() != 0,
                   readAxes(element.firstChildElement("dimensions"))};
    const QDomElement encoding = descendant(element, "encoding");
    stack.encoding = encoding.attribute("type", "3553").toInt();
    stack.conserveMemory = encoding.attribute("conserve", "0").toInt() != 0;
    const QDomNodeList channels = element.elementsByTagName("channel");
    const QDomNodeList timePoints = element.elementsByTagName("timepoint");
    if (channels.isEmpty() || timePoints.isEmpty()) {
        logWarning("session stack missing channels or points!");
        return std::nullopt;
    }
    for (int t = 0; t < timePoints.size(); ++t) {
        const QDomElement timePoint = timePoints.at(t).toElement();
        stack.timePoints.push_back({timePoint.attribute("label"), {}});
        if (!readFiles(timePoint, fixMissingFile, stack.timePoints.back().files))
            return std::nullopt;
    }
    const int slices = std::min(layerCount(stack.first, stack.last, stack.step), kMostSlices);
    for (int c = 0; c < channels.size(); ++c)
        stack.channels.push_back(readChannel(channels.at(c).toElement(), slices));
    return stack;
}

} // namespace tirn
