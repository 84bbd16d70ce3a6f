#include "movies/keyframesession.h"

#include "session/attributenumber.h"

namespace tirn {

namespace {

struct Attribute
{
    const char* name;
    double KeyFrame::*value;
    const char* otherwise;
    /// Kept as a number with a fraction, read as a whole one.
    bool whole;
};

constexpr Attribute kAttributes[] = {
    {"xrot", &KeyFrame::xrot, "0", false},     {"yrot", &KeyFrame::yrot, "0", false},
    {"zrot", &KeyFrame::zrot, "0", false},     {"xtrans", &KeyFrame::xtrans, "0", false},
    {"ytrans", &KeyFrame::ytrans, "0", false}, {"ztrans", &KeyFrame::ztrans, "0", false},
    {"xscale", &KeyFrame::xscale, "1", false}, {"yscale", &KeyFrame::yscale, "1", false},
    {"zscale", &KeyFrame::zscale, "1", false}, {"xmin", &KeyFrame::xmin, "0", true},
    {"ymin", &KeyFrame::ymin, "0", true},      {"zmin", &KeyFrame::zmin, "0", true},
    {"xmax", &KeyFrame::xmax, "0", true},      {"ymax", &KeyFrame::ymax, "0", true},
    {"zmax", &KeyFrame::zmax, "0", true},
};

} // namespace

QDomElement saveKeyFrame(const KeyFrame& frame, QDomDocument& document)
{
    QDomElement element = document.createElement("keyframe");
    for (const Attribute& attribute : kAttributes)
        element.setAttribute(attribute.name, attributeNumber(frame.*attribute.value));
    element.setAttribute("timepoint", frame.timepoint);
    return element;
}

KeyFrame readKeyFrame(const QDomElement& element)
{
    KeyFrame frame;
    for (const Attribute& attribute : kAttributes) {
        const QString text = element.attribute(attribute.name, attribute.otherwise);
        frame.*attribute.value = attribute.whole ? text.toInt() : text.toDouble();
    }
    frame.timepoint = element.attribute("timepoint", "0").toInt();
    return frame;
}

std::vector<KeyFrame> readKeyFrames(const QDomElement& parent)
{
    std::vector<KeyFrame> frames;
    for (QDomElement child = parent.firstChildElement("keyframe"); !child.isNull();
         child = child.nextSiblingElement("keyframe"))
        frames.push_back(readKeyFrame(child));
    return frames;
}

} // namespace tirn
