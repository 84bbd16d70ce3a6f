#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/bytereader.h"
#include "formats/files/windowedfile.h"

namespace tirn {

/// The record behind an LSM file's tag 34412, field by field and packed, all little-endian.
struct LsmInfo
{
    std::uint32_t magicNumber = 0;
    std::int32_t structureSize = 0;
    std::int32_t dimX = 0;
    std::int32_t dimY = 0;
    std::int32_t dimZ = 0;
    std::int32_t dimChannels = 0;
    std::int32_t dimTime = 0;
    /// 1 bytes, 2 words of 12 bits, 5 floats; 0 where each channel has a type of its own.
    std::int32_t dataType = 0;
    std::int32_t thumbnailX = 0;
    std::int32_t thumbnailY = 0;
    /// In metres.
    double voxelSizeX = 0;
    double voxelSizeY = 0;
    double voxelSizeZ = 0;
    std::uint16_t scanType = 0;
    std::uint32_t dataKind = 0;
    double timeInterval = 0;
    /// Of further records in the file; only the channels' types are followed.
    std::array<std::uint32_t, 12> offsets = {};
    static constexpr std::size_t kChannelDataTypes = 4;
    /// Those of the channels, where `dataType` is 0.
    std::vector<std::int32_t> channelTypes;
};

/// Reads the record at an offset; what the file does not hold is 0.
LsmInfo readLsmInfo(WindowedFile& file, std::int64_t offset);
/// Logs the record between two rulers.
void printLsmInfo(const LsmInfo& info);

} // namespace tirn
