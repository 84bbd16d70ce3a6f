#include "formats/vendor/lsminfo.h"

#include <iterator>
#include <span>
#include <tuple>

#include <QString>

#include "base/log.h"

namespace tirn {

namespace {

constexpr int kInfoBytes = 224;

const char* nameOf(std::span<const char* const> names, std::uint32_t value, const char* other)
{
    return value < names.size() && names[value] != nullptr ? names[value] : other;
}

constexpr const char* kScanTypes[] = {"normal x-y-z-scan", "Z-Scan",          "Line Scan",
                                      "Time series x-y",   "Time series x-z", "Time series - Mean of ROIs"};
constexpr const char* kDataKinds[] = {"Scan data", "Calculated data", "Animation"};
constexpr const char* kIntensityFormats[] = {
    "No clue man ", "8-bit unsigned integer", "12-bit unsigned integer", nullptr, nullptr, "32-bit float"};

/// What the offsets of the record lead to, in their order.
constexpr const char* kOffsetTexts[] = {
    "vector overlay",         "channel input LUT", "color palette",           "channel colors and names",
    "channel data types",     "device settings",   "Zeiss Vision KS-3d data", "real scan times",
    "experimental notations", "ROI used in scan",  "bleach region",           "next LSM file in this file"};
static_assert(std::size(kOffsetTexts) == std::tuple_size_v<decltype(LsmInfo::offsets)>);
constexpr std::size_t kOffsetsBeforeInterval = 4;

} // namespace

LsmInfo readLsmInfo(WindowedFile& file, std::int64_t offset)
{
    const auto bytes = file.at(offset, kInfoBytes);
    ByteReader reader(bytes);
    LsmInfo info;
    info.magicNumber = reader.u32();
    for (std::int32_t* field : {&info.structureSize, &info.dimX, &info.dimY, &info.dimZ, &info.dimChannels,
                                &info.dimTime, &info.dataType, &info.thumbnailX, &info.thumbnailY})
        *field = reader.i32();
    for (double* size : {&info.voxelSizeX, &info.voxelSizeY, &info.voxelSizeZ})
        *size = reader.f64();
    reader.seek(88);
    info.scanType = reader.u16();
    reader.skip(2);
    info.dataKind = reader.u32();
    for (std::size_t i = 0; i < info.offsets.size(); ++i) {
        if (i == kOffsetsBeforeInterval)
            info.timeInterval = reader.f64();
        info.offsets[i] = reader.u32();
    }

    if (info.dataType == 0 && info.dimChannels > 0) {
        ByteReader types(
            file.at(info.offsets[LsmInfo::kChannelDataTypes], 4 * std::int64_t{info.dimChannels}));
        while (types.remaining() >= 4)
            info.channelTypes.push_back(types.i32());
    }
    return info;
}

void printLsmInfo(const LsmInfo& info)
{
    const QByteArray ruler(50, '*');
    logDebug("%s", ruler.constData());
    logDebug("u32MagicNumber %u s32StructureSize %d", info.magicNumber, info.structureSize);
    logDebug("DimX %d DimY %d DimZ %d DimChannels %d DimTime %d", info.dimX, info.dimY, info.dimZ,
             info.dimChannels, info.dimTime);
    logDebug("DataType %s",
             nameOf(kIntensityFormats, static_cast<std::uint32_t>(info.dataType), "Unknow DataType"));
    logDebug("ThumbnailX %d ThumbnailY %d", info.thumbnailX, info.thumbnailY);
    logDebug("VoxelSizeX %g VoxelSizeY %g VoxelSizeZ %g", info.voxelSizeX, info.voxelSizeY, info.voxelSizeZ);
    logDebug("%s", nameOf(kScanTypes, info.scanType, "Unknown scan time"));
    logDebug("%s", nameOf(kDataKinds, info.dataKind, "Unknown data type"));
    logDebug("time interval %g", info.timeInterval);
    for (std::size_t i = 0; i < info.offsets.size(); ++i)
        logDebug("offset to %s %u", kOffsetTexts[i], info.offsets[i]);
    logDebug("%s", ruler.constData());
}

} // namespace tirn
