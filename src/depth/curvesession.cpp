#include "depth/curvesession.h"

#include <algorithm>

#include <QStringList>

#include "base/log.h"

namespace tirn {

QDomElement saveCurveToSession(const ZCurve& curve, QDomDocument& document)
{
    QDomElement element = document.createElement("ZCurve");
    element.setAttribute("saved", 0);
    QString text;
    for (int z = 0; z < curve.size(); ++z)
        text += plainNumber(curve[z]) + '\n';
    element.appendChild(document.createTextNode(text));
    return element;
}

ZCurve readSessionCurve(const QDomElement& element, int slices, CurveTextures* textures)
{
    ZCurve curve(slices, textures);
    const QStringList lines = element.firstChild().toText().data().split('\n', Qt::SkipEmptyParts);
    const int count = std::min(curve.size(), static_cast<int>(lines.size()));
    for (int z = 0; z < count; ++z)
        curve[z] = lines[z].toDouble();
    return curve;
}

} // namespace tirn
