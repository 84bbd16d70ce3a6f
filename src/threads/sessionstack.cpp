#include "threads/sessionstack.h"

#include <algorithm>

#include <QDir>
#include <QFileInfo>

#include "base/log.h"
#include "depth/curvesession.h"
#include "image/layercount.h"

namespace tirn {

namespace {

/// More layers than any stack has: what a damaged session may ask for at most.
constexpr int kMostSlices = 1 << 20;

/// A number of the first descendant of that name.
int numberOf(const QDomElement& stack, const char* element, const char* attribute, const char* absent)
{
    const QDomElement found = stack.elementsByTagName(element).at(0).toElement();
    return found.attribute(attribute, absent).toInt();
}

QDomText textOf(const QDomElement& element)
{
    for (QDomNode child = element.firstChild(); !child.isNull(); child = child.nextSibling()) {
        if (child.isText())
            return child.toText();
    }
    return {};
}

void readSlices(const QDomElement& stack, LoadDescription& description)
{
    description.partial = true;
    description.first = numberOf(stack, "slices", "first", "0");
    description.last = numberOf(stack, "slices", "last", "0");
    description.step = numberOf(stack, "slices", "step", "0");
    description.subsample = numberOf(stack, "slices", "subsample", "0");
    const QDomElement resliced = stack.elementsByTagName("resliced").at(0).toElement();
    if (resliced.isNull())
        return;
    const std::int64_t layers = std::int64_t{description.last} - description.first;
    const auto all = static_cast<int>(layers / std::max(1, description.step));
    description.resliceZ = resliced.hasAttribute("slices") ? resliced.attribute("slices").toInt() : all;
    description.reslice = description.resliceZ != 0;
}

void readCrop(const QDomElement& stack, CropLimits& crop)
{
    const std::pair<int*, const char*> limits[] = {{&crop.xMin, "xmin"}, {&crop.xMax, "xmax"},
                                                   {&crop.yMin, "ymin"}, {&crop.yMax, "ymax"},
                                                   {&crop.zMin, "zmin"}, {&crop.zMax, "zmax"}};
    for (const auto& [limit, key] : limits)
        *limit = numberOf(stack, "cutplanes", key, "-1");
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

bool readTimePoints(const QDomNodeList& timePoints, LoadDescription& description,
                    const MissingFileQuestion& fixMissingFile)
{
    std::vector<QStringList> files;
    for (int t = 0; t < timePoints.size(); ++t) {
        const QDomElement timePoint = timePoints.at(t).toElement();
        if (timePoint.hasAttribute("label"))
            description.labels.append(timePoint.attribute("label"));
        files.emplace_back();
        if (!readFiles(timePoint, fixMissingFile, files.back()))
            return false;
    }
    description.timePoints = timePoints.size();
    description.filesToLoad = std::move(files);
    return true;
}

void readChannels(const QDomNodeList& channels, LoadDescription& description, CurveTextures* textures)
{
    const int slices =
        std::min(layerCount(description.first, description.last, description.step), kMostSlices);
    for (int c = 0; c < channels.size(); ++c) {
        const QDomElement channel = channels.at(c).toElement();
        description.paletteIndexes.push_back(channel.attribute("palette", "0").toInt());
        description.channelStates.push_back(channel.attribute("state", "0").toInt());
        const QDomElement curve = channel.firstChildElement();
        if (!textOf(curve).isNull())
            description.zCurves.push_back(readSessionCurve(curve, slices, textures));
    }
    description.channels = channels.size();
}

} // namespace

bool readSessionStack(const QDomElement& stack, LoadDescription& description, CurveTextures* textures,
                      const MissingFileQuestion& fixMissingFile)
{
    description.filesToLoad.clear();
    readSlices(stack, description);
    readCrop(stack, description.crop);
    const QDomNodeList channels = stack.elementsByTagName("channel");
    const QDomNodeList timePoints = stack.elementsByTagName("timepoint");
    if (channels.isEmpty() || timePoints.isEmpty()) {
        logWarning("session stack missing channels or points!");
        return false;
    }
    if (!readTimePoints(timePoints, description, fixMissingFile))
        return false;
    readChannels(channels, description, textures);
    // Anything but the two targets that a volume knows counts as the first.
    const bool is3D = numberOf(stack, "encoding", "type", "3553") == GL_TEXTURE_3D;
    description.textureTarget = is3D ? GL_TEXTURE_3D : GL_TEXTURE_2D;
    description.conserveMemory = numberOf(stack, "encoding", "conserve", "0") != 0;
    return true;
}

} // namespace tirn
