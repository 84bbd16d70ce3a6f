#include "palettes/maptext.h"

namespace tirn {

const QRegularExpression& mapPattern()
{
    static const QRegularExpression pattern(R"(^\s*-?(\d+)\s+-?(\d+)\s+-?(\d+)\s+-?(\d+)$)");
    return pattern;
}

PaletteEntry mapEntry(const QRegularExpressionMatch& match)
{
    return {match.captured(1).toUShort(), match.captured(2).toUShort(), match.captured(3).toUShort(),
            match.captured(4).toUShort()};
}

QString mapText(const Palette& palette)
{
    QString text;
    for (int i = 0; i < palette.size(); ++i) {
        const std::array<int, 4> values = palette.fileValues(i);
        text += QString::asprintf("%d %d %d %d\n", values[0], values[1], values[2], values[3]);
    }
    return text;
}

} // namespace tirn
