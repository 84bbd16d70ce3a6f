#include "formats/vendor/metamorphio.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include "base/checkedsize.h"
#include "base/log.h"
#include "base/parallel.h"
#include "formats/files/fileprobe.h"
#include "formats/tiff/tiffdirectory.h"
#include "formats/tiff/tifftags.h"
#include "formats/vendor/metamorphlayout.h"
#include "image/imagefile.h"
#include "image/layercount.h"
#include "image/voxelallocation.h"

namespace tirn {

MetaMorphIO::MetaMorphIO(ImageFile& owner, const QStringList& names) : TiffIFDIO(owner, names)
{
    logDebug("Creating metamorph object\n");
    attributes() = MetaMorphIO::readAttributes();
}

bool MetaMorphIO::isMetaMorph(const QString& name)
{
    QFile file(name);
    if (!name.endsWith(QLatin1String(".stk")) || !openForProbe(file))
        return false;
    WindowedFile window(file);
    const TiffHeader header = readTiffHeader(window);
    if (!header.isLittleEndian())
        return false;
    if (header.magic != tiff::kMagic) {
        logDebug("wrong answer");
        return false;
    }
    if (header.firstOffset < tiff::kHeaderBytes) {
        logDebug("bad offset");
        return false;
    }
    const auto directory = DirectoryReader(window, ByteOrder::Little).read(header.firstOffset);
    return directory && directory->ifd.find(tiff::Uic2) != nullptr;
}

bool MetaMorphIO::isMyType() { return readAttributes().type == ImageType::MetaMorph; }

ImageAttributes MetaMorphIO::readAttributes()
{
    logDebug("enter readAttributes\n");
    ImageAttributes record;
    m_directory = {};
    if (fileCount() > 0) {
        if (!file(0).open(QIODevice::ReadOnly))
            fail(QLatin1String("Unable to open file: ") + file(0).fileName());
        else if (readDirectory(record)) {
            // A file with a directory is of this format, whatever else is wrong with it.
            record.type = ImageType::MetaMorph;
            describe(record);
        }
        file(0).close();
    }
    logDebug("exit readAttributes\n");
    return record;
}

bool MetaMorphIO::readDirectory(ImageAttributes& record)
{
    WindowedFile window(file(0));
    const TiffHeader header = readTiffHeader(window);
    if (!header.isLittleEndian())
        return fail(QStringLiteral("Wrong Endian"));
    if (header.magic != tiff::kMagic)
        return fail(QStringLiteral("Wrong answer"));
    if (header.firstOffset < tiff::kHeaderBytes || header.firstOffset > INT32_MAX)
        return fail(QStringLiteral("Bad offset"));
    logDebug("It's little Endian");
    setOrder(ByteOrder::Little);

    // A second directory is looked for right behind the first, wherever its offset points, and its entries
    // count as those of the first.
    DirectoryReader reader(window, ByteOrder::Little);
    std::int64_t position = header.firstOffset;
    std::vector<IFDEntry> entries;
    std::uint32_t next = 1;
    for (int count = 0; next != 0 && count < metamorph::kMostDirectories; ++count) {
        auto directory = reader.read(position);
        if (!directory)
            break;
        logDebug("numIFD: %d", static_cast<int>(directory->ifd.size()));
        entries.insert(entries.end(), directory->ifd.begin(), directory->ifd.end());
        next = directory->nextOffset;
        position = directory->end;
    }
    m_directory = IFD(std::move(entries));
    m_stkIFD.front() = {m_directory};
    const IFDEntry* planes = m_directory.find(tiff::Uic2);
    record.fileX = toSize(m_directory.value(tiff::ImageWidth).value_or(0));
    record.fileY = toSize(m_directory.value(tiff::ImageLength).value_or(0));
    record.fileZ = planes != nullptr ? toSize(planes->count) : 0;
    return true;
}

bool MetaMorphIO::describe(ImageAttributes& record)
{
    const IFDEntry* depths = m_directory.find(tiff::BitsPerSample);
    if (depths == nullptr || depths->values.empty())
        return fail(QStringLiteral("BitsPerSample is missing"));
    record.bitDepth = toSize(depths->values.front());
    if (depths->count > 1) {
        logDebug("BitsPerSample");
        for (const std::uint32_t depth : depths->values) {
            logDebug("%u", depth);
            if (depth != depths->values.front())
                return fail(QStringLiteral("Bitdepth per color channel must be equal"));
        }
    }
    record.channels = toSize(depths->count);
    logDebug("Samples per pixel: %u", m_directory.value(tiff::SamplesPerPixel).value_or(0));
    record.maxValue = -1;
    record.lens = -1;
    record.magFactor = -1.0F;
    record.hasNotes = false;
    printIFD(2);
    WindowedFile window(file(0));
    return readPlaneDistance(window, record) && readCalibration(window, record);
}

bool MetaMorphIO::readPlaneDistance(WindowedFile& window, ImageAttributes& record)
{
    const QString name = file(0).fileName();
    const IFDEntry* planes = m_directory.find(tiff::Uic2);
    if (planes == nullptr || planes->valueOffset > window.size())
        return fail(QLatin1String("unable to seek in file: ") + name);
    ByteReader reader(window.at(planes->valueOffset, metamorph::kPlaneBytes));
    if (reader.size() < static_cast<std::uint64_t>(metamorph::kPlaneBytes))
        return fail(QLatin1String("unable to read in file: ") + name);
    std::uint32_t words[4];
    for (std::uint32_t& word : words) {
        word = reader.u32();
        logDebug("%u", word);
    }
    // Of the first plane, for all of them. An unknown distance is 0 / 0, which is not a number, and stays so.
    record.dimZ = static_cast<double>(static_cast<float>(words[0]) / static_cast<float>(words[1]));
    return true;
}

bool MetaMorphIO::readCalibration(WindowedFile& window, ImageAttributes& record)
{
    const IFDEntry* pairs = m_directory.find(tiff::Uic1);
    if (pairs == nullptr || pairs->count == 0)
        return true;
    if (pairs->valueOffset > window.size())
        return fail(QLatin1String("unable to seek UIC1Tag in file: ") + file(0).fileName());
    const auto takeRational = [&window](const char* axis, std::uint32_t offset, double& size) {
        ByteReader rational(window.at(offset, 8));
        const std::uint32_t numerator = rational.u32();
        const std::uint32_t denominator = rational.u32();
        logDebug("%s %u/%u", axis, numerator, denominator);
        if (denominator != 0)
            size = numerator * 1.0 / denominator;
    };
    const std::int64_t held = (window.size() - pairs->valueOffset) / 8;
    for (std::int64_t i = 0; i < std::min<std::int64_t>(pairs->count, held); ++i) {
        ByteReader pair(window.at(pairs->valueOffset + 8 * i, 8));
        const std::uint32_t id = pair.u32();
        const std::uint32_t value = pair.u32();
        logDebug("%u %u", id, value);
        if (id == metamorph::kXCalibration) {
            takeRational("x", value, record.dimX);
        } else if (id == metamorph::kYCalibration) {
            takeRational("y", value, record.dimY);
        } else if (id == metamorph::kCalibrationUnits) {
            const std::int64_t length = ByteReader(window.at(value, 4)).u32();
            const auto text = window.at(std::int64_t{value} + 4, std::min<std::int64_t>(length, 256));
            logDebug(" unit : %.*s", static_cast<int>(text.size()),
                     reinterpret_cast<const char*>(text.data()));
        }
    }
    return true;
}

bool MetaMorphIO::rangeInvalid(int first, int last) const
{
    const int fileZ = directories().front().empty() ? 0 : toSize(m_directory.find(tiff::Uic2)->count);
    if (first < 0 || first > fileZ - 1) {
        logDebug("first is invalid %d", first);
        return true;
    }
    if (last < 0 || last > fileZ - 1) {
        logDebug("last is invalid %d", last);
        return true;
    }
    return false;
}

bool MetaMorphIO::readLayers(int first, int last, int step)
{
    logDebug("enter readLayers\n");
    ImageAttributes& stack = attributes();
    if (step < 1 || m_directory.find(tiff::Uic2) == nullptr)
        return fail(QStringLiteral("Illogical arguments to readLayers"));
    const int count = layerCount(first, last, step);
    logDebug("channels: %d", stack.channels);
    logDebug("bitDepth: %d", stack.bitDepth);
    if (stack.channels < 1) {
        logDebug("Impossible number of channels %d", stack.channels);
        return false;
    }
    if (stack.bitDepth < 8) {
        logDebug("Impossible bit depth %d", stack.bitDepth);
        return false;
    }
    if (!depthSupported() || rangeInvalid(first, last))
        return false;
    if (count < 1) {
        logDebug("Ok idiot, why do you want to load 0 layers?");
        return true;
    }
    if (!hasLayerStrips(m_directory))
        return false;
    const auto layerBytes =
        checkedProduct({stack.fileX, stack.fileY, stack.channels, stack.bytesPerSample()});
    const auto bytes = layerBytes ? checkedProduct({*layerBytes, count}) : std::nullopt;
    if (!bytes || *bytes < 1)
        return fail(QStringLiteral("Read error"));
    logDebug("layerSize: %lld", static_cast<long long>(*layerBytes));
    logDebug("numLayers: %d", count);
    logDebug("bufferSize: %lld", static_cast<long long>(*bytes));
    if (!file(0).open(QIODevice::ReadOnly)) {
        fail(QLatin1String("Unable to open file: ") + file(0).fileName());
        logDebug("exit readLayers\n");
        return false;
    }
    const bool done = readPlanes(first, step, count, *bytes);
    file(0).close();
    if (!done)
        return false;
    setSteppedRange(first, last, step);
    logDebug("stack read");
    logDebug("exit readLayers\n");
    return true;
}

namespace {

/// The strips of the first plane, and the distance to those of the next.
struct Planes
{
    const IFD& directory;
    std::int64_t layerBytes;
    /// The bytes that a plane takes in the buffer.
    std::int64_t bytes = 0;
    std::int64_t stride = 0;

    Planes(const IFD& ifd, std::int64_t layer) : directory(ifd), layerBytes(layer)
    {
        const IFDEntry& offsets = *ifd.find(tiff::StripOffsets);
        for (std::size_t i = 0; i < offsets.values.size(); ++i)
            bytes += byteCount(i);
        stride = std::int64_t{offsets.values.back()} + byteCount(offsets.values.size() - 1) -
                 offsets.values.front();
    }
    std::int64_t byteCount(std::size_t strip) const
    {
        const IFDEntry* counts = directory.find(tiff::StripByteCounts);
        return counts != nullptr && strip < counts->values.size() ? counts->values[strip] : layerBytes;
    }
    /// The strips of a plane, for as much of the buffer as is left for it.
    SegmentPlan plan(int plane, std::int64_t room) const
    {
        SegmentPlan result(std::min(bytes, room));
        const IFDEntry& offsets = *directory.find(tiff::StripOffsets);
        for (std::size_t i = 0; i < offsets.values.size(); ++i)
            result.append(base(plane) + offsets.values[i], byteCount(i));
        return result;
    }
    /// How far a plane lies behind the first, before it where strips run backwards; past any file where no
    /// number can say it.
    std::int64_t base(int plane) const
    {
        constexpr std::int64_t farAway = std::int64_t{1} << 62;
        std::int64_t distance = 0;
        const bool overflow = __builtin_mul_overflow(stride, std::int64_t{plane}, &distance);
        return overflow || distance > farAway ? farAway : distance;
    }
};

} // namespace

bool MetaMorphIO::readPlanes(int first, int step, int count, std::int64_t bytes)
{
    ImageAttributes& stack = attributes();
    const PositionedFile positioned(file(0));
    const Planes planes(m_directory, bytes / count);
    const std::int64_t filled = std::min(bytes, checkedProduct({planes.bytes, count}).value_or(bytes));
    if (filled == 0 || !isJustified(bytes, std::min(filled, positioned.size())))
        return fail(QStringLiteral("Read error"));
    if (filled < bytes && !earlyEnd(filled, bytes, static_cast<int>(filled / (bytes / count)), count))
        return false;

    releaseStack();
    VoxelBuffer voxels = allocateVoxels(bytes, "Could not allocate memory for Metamorph stack");
    logDebug("Stack is at: %u", *m_directory.value(tiff::StripOffsets));
    std::memset(voxels.data() + filled, 0, static_cast<std::size_t>(bytes - filled));
    std::atomic<bool> seekFailed = false;
    std::atomic<bool> readFailed = false;
    parallelFor(0, count, 1, [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t k = begin; k < end; ++k) {
            const std::int64_t place = k * planes.bytes;
            if (place >= bytes)
                break;
            const SegmentPlan plan = planes.plan(static_cast<int>(first + k * step), bytes - place);
            if (plan.startsOutside(positioned.size()))
                seekFailed = true;
            else if (plan.endsOutside(positioned.size()))
                readFailed = true;
            if (!plan.read(positioned, voxels.data() + place))
                readFailed = true;
            if (planes.bytes == planes.layerBytes)
                interleavePlanes(m_directory, voxels.data() + place, planes.bytes);
        }
    });
    // Reported, but reading goes on: what is missing is 0.
    if (seekFailed)
        fail(QStringLiteral("File seek error"));
    if (readFailed)
        fail(QStringLiteral("Read error"));
    setStack(std::move(voxels), stack.fileX, stack.fileY, count);
    return true;
}

} // namespace tirn
