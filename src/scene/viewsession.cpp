#include "scene/viewsession.h"

#include <algorithm>
#include <cmath>

#include <QRegularExpression>

#include "scene/scalebar.h"
#include "session/attributenumber.h"

namespace tirn {

const std::array<const char*, 5> kRenderModeTexts = {"Normal", "Anaglyph Stereo", "Fullscreen Stereo",
                                                     "Stereo", "4 View"};
const std::array<const char*, 3> kFocalPointTexts = {"In front of screen", "In screen", "Behind screen"};

namespace {

constexpr int kLargestSide = 1 << 16;

QDomElement appended(QDomElement& parent, const char* name)
{
    return parent.appendChild(parent.ownerDocument().createElement(name)).toElement();
}

void writeAxes(QDomElement element, const Vector3& values)
{
    element.setAttribute("x", attributeNumber(values.x));
    element.setAttribute("y", attributeNumber(values.y));
    element.setAttribute("z", attributeNumber(values.z));
}

double numberOr(const QString& text, double otherwise)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return isNumber && std::isfinite(number) ? number : otherwise;
}

Vector3 readAxes(const QDomElement& element)
{
    return {numberOr(element.attribute("x"), 0), numberOr(element.attribute("y"), 0),
            numberOr(element.attribute("z"), 0)};
}

/// Three angles in one text, "30x40y50z", stand in old sessions.
Vector3 readAngles(const QDomElement& element)
{
    static const QRegularExpression together(R"(^\s*(-?[\d.]+)x(-?[\d.]+)y(-?[\d.]+)z?\s*$)");
    for (const QString& text : {element.text(), element.attribute("x")}) {
        const QRegularExpressionMatch match = together.match(text);
        if (match.hasMatch())
            return {numberOr(match.captured(1), 0), numberOr(match.captured(2), 0),
                    numberOr(match.captured(3), 0)};
    }
    return readAxes(element);
}

void writeColour(QDomElement element, const QColor& colour)
{
    element.setAttribute("red", colour.red());
    element.setAttribute("green", colour.green());
    element.setAttribute("blue", colour.blue());
}

QColor readColour(const QDomElement& element, int blue = 0)
{
    const auto part = [&](const char* name, int otherwise) {
        return std::clamp(static_cast<int>(numberOr(element.attribute(name), otherwise)), 0, 255);
    };
    return {part("red", 0), part("green", 0), part("blue", blue)};
}

bool readFlag(const QDomElement& element, const char* name)
{
    return element.attribute(name, "0").toInt() != 0;
}

ScaleBarLocation readLocation(const QDomElement& element)
{
    const int number = element.attribute("location").toInt();
    const bool known = number >= static_cast<int>(ScaleBarLocation::TopLeft) &&
                       number <= static_cast<int>(ScaleBarLocation::BottomRight);
    return known ? static_cast<ScaleBarLocation>(number) : ViewState().scaleBarLocation;
}

template <class Texts>
int indexOf(const Texts& texts, const QString& text, int otherwise)
{
    const auto found =
        std::find_if(texts.begin(), texts.end(), [&](const auto& each) { return text == each; });
    return found != texts.end() ? static_cast<int>(found - texts.begin()) : otherwise;
}

std::array<const char*, 6> filterTexts()
{
    std::array<const char*, 6> texts = {};
    std::transform(kFilterColors.begin(), kFilterColors.end(), texts.begin(),
                   [](const FilterColors& pair) { return pair.name; });
    return texts;
}

} // namespace

int focalPointOf(double focalLength)
{
    return static_cast<int>(std::clamp(std::round(focalLength), 1.0, 3.0)) - 1;
}

double focalLengthOf(int focalPoint) { return std::clamp(focalPoint, 0, 2) + 1; }

void writeView(QDomElement& element, const ViewState& view, const SessionWindow& window)
{
    QDomElement size = appended(element, "window");
    size.setAttribute("width", window.size.width());
    size.setAttribute("height", window.size.height());
    size.setAttribute("preserve", window.preservesRatio ? 1 : 0);
    writeAxes(appended(element, "rotation"), {view.rotX, view.rotY, view.rotZ});
    writeAxes(appended(element, "translation"), {view.transX, view.transY, view.transZ});
    appended(element, "zoom").setAttribute("factor", attributeNumber(view.zoom));
    writeColour(appended(element, "backgroundcolor"), view.backgroundColor);
    QDomElement box = appended(element, "boundingbox");
    box.setAttribute("show", view.showBoundingBox ? 1 : 0);
    writeColour(box, view.boxColor);
    QDomElement bar = appended(element, "scalebar");
    bar.setAttribute("show", view.showScaleBar ? 1 : 0);
    writeColour(bar, view.scaleBarColor);
    bar.setAttribute("location", static_cast<int>(view.scaleBarLocation));
    bar.setAttribute("barsize", attributeNumber(view.scaleBarSize));
    bar.setAttribute("round", view.roundScaleBar ? 1 : 0);
}

void readView(const QDomElement& element, ViewState& view, SessionWindow& window)
{
    const auto with = [&element](const char* name, const auto& take) {
        const QDomElement child = element.firstChildElement(name);
        if (!child.isNull())
            take(child);
    };
    with("window", [&](const QDomElement& size) {
        const int width = size.attribute("width").toInt();
        const int height = size.attribute("height").toInt();
        if (width > 0 && height > 0)
            window.size = {std::min(width, kLargestSide), std::min(height, kLargestSide)};
        window.preservesRatio = readFlag(size, "preserve");
    });
    with("rotation", [&](const QDomElement& rotation) {
        const Vector3 angles = readAngles(rotation);
        view.rotX = wrapDegrees(angles.x);
        view.rotY = wrapDegrees(angles.y);
        view.rotZ = wrapDegrees(angles.z);
    });
    with("translation", [&](const QDomElement& translation) {
        const Vector3 place = readAxes(translation);
        view.transX = std::clamp(place.x, -kMostTranslation, kMostTranslation);
        view.transY = std::clamp(place.y, -kMostTranslation, kMostTranslation);
        view.transZ = std::clamp(place.z, -kMostTranslation, kMostTranslation);
    });
    with("zoom", [&](const QDomElement& zoom) {
        view.zoom = std::clamp(numberOr(zoom.attribute("factor"), 1), kLeastZoom, kMostZoom);
    });
    with("backgroundcolor", [&](const QDomElement& colour) { view.backgroundColor = readColour(colour); });
    with("boundingbox", [&](const QDomElement& box) {
        view.showBoundingBox = readFlag(box, "show");
        view.boxColor = readColour(box, 255);
    });
    with("scalebar", [&](const QDomElement& bar) {
        view.showScaleBar = readFlag(bar, "show");
        view.scaleBarColor = readColour(bar);
        view.scaleBarLocation = readLocation(bar);
        view.scaleBarSize =
            std::clamp(numberOr(bar.attribute("barsize", ".3"), 0.3), kLeastBarSize, kMostBarSize);
        // Sessions from before bars of round length keep what is shown.
        if (bar.hasAttribute("round"))
            view.roundScaleBar = readFlag(bar, "round");
    });
}

void writeRendering(QDomElement& element, const ViewState& view)
{
    appended(element, "blending").setAttribute("framebuffer", static_cast<int>(view.blendMode));
    QDomElement mode = appended(element, "rendermode");
    mode.setAttribute("mode", kRenderModeTexts[static_cast<std::size_t>(view.renderMode)]);
    mode.setAttribute("filtercolors",
                      filterTexts()[static_cast<std::size_t>(std::clamp(view.filterColors, 0, 5))]);
    mode.setAttribute("eyeseparation", attributeNumber(view.camera.eyesep));
    mode.setAttribute("focalpoint",
                      kFocalPointTexts[static_cast<std::size_t>(focalPointOf(view.camera.focalLength))]);
}

void readRendering(const QDomElement& element, ViewState& view)
{
    const QDomElement blending = element.firstChildElement("blending");
    if (!blending.isNull())
        view.blendMode = blending.attribute("framebuffer").toUInt() == GL_MAX ? GL_MAX : GL_FUNC_ADD;
    const QDomElement mode = element.firstChildElement("rendermode");
    if (mode.isNull())
        return;
    view.renderMode = static_cast<RenderMode>(indexOf(kRenderModeTexts, mode.attribute("mode"), 0));
    view.filterColors = indexOf(filterTexts(), mode.attribute("filtercolors"), 2);
    view.camera.eyesep = std::clamp(numberOr(mode.attribute("eyeseparation"), 0.07), 0.0, kMostEyeSeparation);
    view.camera.focalLength = focalLengthOf(indexOf(kFocalPointTexts, mode.attribute("focalpoint"), 1));
}

} // namespace tirn
