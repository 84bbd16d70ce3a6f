#pragma once

#include <functional>
#include <vector>

#include <QByteArray>
#include <QString>

namespace tirn::test {

/// A Zeiss LSM file: a page and its thumbnail for each layer, each channel a strip, and the binary record.
struct LsmFile
{
    int x = 4;
    int y = 3;
    int z = 10;
    int channels = 1;
    int bits = 8;
    int dataType = 1;
    std::vector<int> channelTypes = {};
    /// Pages that are there, and layers that the record claims; z by default.
    int pages = -1;
    int claimedLayers = -1;
    bool thumbnails = true;
    /// In metres.
    double voxel[3] = {1e-7, 2e-7, 5e-7};
    /// The value at a sample; by default x + 10 y + 40 c + 100 z in the width that there is.
    std::function<int(int x, int y, int z, int c)> value = nullptr;
    std::uint32_t lastOffset = 0;

    QByteArray bytes() const;
    QString save(const QString& name, int length = -1) const;
};

} // namespace tirn::test
