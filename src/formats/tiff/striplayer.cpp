#include "formats/tiff/striplayer.h"

#include <QFileInfo>

namespace tirn {

StripHoldings stripHoldings(std::span<const StripLayer> layers)
{
    StripHoldings holdings;
    for (const StripLayer& layer : layers) {
        const std::int64_t held = layer.plan.held(QFileInfo(layer.fileName).size());
        holdings.bytes += held;
        holdings.completeLayers += held == layer.plan.bufferBytes() ? 1 : 0;
    }
    return holdings;
}

bool readStripLayer(StripLayer& layer, std::byte* destination)
{
    QFile file(layer.fileName);
    if (!file.open(QIODevice::ReadOnly))
        layer.error = QLatin1String("Could not open ") + layer.fileName;
    else if (!layer.plan.read(PositionedFile(file), destination))
        layer.error = QLatin1String("Could not read ") + layer.fileName;
    return layer.error.isEmpty();
}

} // namespace tirn
