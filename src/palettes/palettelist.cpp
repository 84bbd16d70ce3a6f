#include "palettes/palettelist.h"

#include <cmath>

#include <QDir>
#include <QFileInfo>

#include "base/log.h"
#include "palettes/palettefile.h"

namespace tirn {

PaletteList missingPalettes(int existing, int channels, PaletteGeneration generation, PaletteTables* tables)
{
    PaletteList made;
    const auto isShort = [&] { return existing + static_cast<int>(made.size()) < channels; };
    const auto appendRamp = [&](const QColor& color) {
        if (isShort())
            made.push_back(std::make_unique<Palette>(color, 8, tables));
    };
    if (generation == PaletteGeneration::RedGreenBlue && channels > 1) {
        appendRamp(QColor(255, 0, 0));
        appendRamp(QColor(0, 255, 0));
        if (channels > 2)
            appendRamp(QColor(0, 0, 255));
    }
    while (isShort())
        made.push_back(std::make_unique<Palette>(QString(), 8, tables));
    return made;
}

void appendMissingPalettes(PaletteList& palettes, int channels, PaletteGeneration generation,
                           PaletteTables* tables)
{
    for (auto& palette : missingPalettes(static_cast<int>(palettes.size()), channels, generation, tables))
        palettes.push_back(std::move(palette));
}

void appendFavoritePalettes(PaletteList& palettes, const QString& directory, PaletteTables* tables)
{
    if (directory.isEmpty())
        return;
    const QDir folder(directory);
    const QStringList names = folder.entryList({"*.map"}, QDir::Files, QDir::Name);
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        const QFileInfo info(folder.absoluteFilePath(*name));
        PaletteFile file(info.absoluteFilePath());
        if (!info.isReadable() || !file.read())
            continue;
        palettes.push_back(file.makePalette(tables));
        palettes.back()->setPath(info.absolutePath());
        logDebug("loaded: %s", info.absoluteFilePath().toUtf8().constData());
    }
}

int channelOfPalette(std::span<const int> channelPalettes, int palette)
{
    for (std::size_t channel = 0; channel < channelPalettes.size(); ++channel) {
        logDebug("%d is the palette for channel %d %d", channelPalettes[channel], static_cast<int>(channel),
                 palette);
        if (channelPalettes[channel] == palette)
            return static_cast<int>(channel);
    }
    return -1;
}

int lastStackIndex(int bitDepth, int realBitDepth, bool dimDataset)
{
    return (1 << (dimDataset ? realBitDepth : bitDepth)) - 1;
}

double toPaletteIndex(double value, int paletteDepth, int stackDepth)
{
    if (stackDepth <= 0 || stackDepth == paletteDepth)
        return value;
    // A deeper stack multiplies, which looks turned round; its opposite is in `fromPaletteIndex`.
    return std::floor(std::ldexp(value, stackDepth - paletteDepth));
}

double fromPaletteIndex(double value, int paletteDepth, int stackDepth)
{
    if (stackDepth <= 0 || stackDepth == paletteDepth)
        return value;
    return std::floor(std::ldexp(value, paletteDepth - stackDepth));
}

} // namespace tirn
