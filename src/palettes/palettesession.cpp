#include "palettes/palettesession.h"

#include "base/log.h"
#include "palettes/maptext.h"
#include "session/relativepath.h"

namespace tirn {

QDomElement savePaletteToSession(const Palette& palette, QDomDocument& document, const QString& baseDir)
{
    const bool saved = palette.hasFile();
    QDomElement element = document.createElement("palette");
    element.setAttribute("depth", palette.depth());
    element.setAttribute("saved", saved ? 1 : 0);
    const QString text = saved ? relativePath(palette.fullPath(), baseDir) : mapText(palette);
    element.appendChild(document.createTextNode(text));
    return element;
}

SessionPalette readSessionPalette(const QDomElement& element, PaletteTables* tables)
{
    const int depth = element.attribute("depth").toInt();
    const QDomText text = element.firstChild().toText();
    if (text.isNull())
        return {};
    if (element.attribute("saved").toInt() == 1)
        return {text.data(), nullptr};

    std::vector<PaletteEntry> entries;
    const QString data = text.data();
    for (const QString& line : data.split('\n')) {
        const QRegularExpressionMatch match = mapPattern().match(line);
        if (match.hasMatch())
            entries.push_back(mapEntry(match));
    }
    const int expected = depth >= 0 && depth < 31 ? 1 << depth : 0;
    if (expected == 0 || entries.size() != static_cast<std::size_t>(expected)) {
        logWarning("Error: matched %d instead of %d palette entries", static_cast<int>(entries.size()),
                   expected);
        return {};
    }
    return {{}, std::make_unique<Palette>(entries, 4, QString(), tables)};
}

} // namespace tirn
