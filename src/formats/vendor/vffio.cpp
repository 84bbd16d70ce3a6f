#include "formats/vendor/vffio.h"

#include <algorithm>
#include <array>
#include <mutex>

#include <QRegularExpression>

#include "base/checkedsize.h"
#include "base/log.h"
#include "base/parallel.h"
#include "formats/files/fileprobe.h"
#include "formats/files/segmentread.h"
#include "formats/files/textlines.h"
#include "image/imagefile.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

/// The parts of a header line, empty ones too: "size=1 2 3;" has five.
QStringList lineParts(const QString& line)
{
    static const QRegularExpression separators(QStringLiteral("[ =;]"));
    return line.split(separators);
}

/// What stands between the first "=" and the ";".
QString valueText(const QString& line) { return line.section('=', 1).section(';', 0, 0).trimmed(); }

constexpr const char* kWholeKeys[] = {"rank", "bands", "bits"};
constexpr const char* kNumberKeys[] = {"center_of_rotation", "central_slice", "rfan_y", "rfan_z",
                                       "angle_increment",    "elementsize",   "water",  "boneHU"};

template <class Keys>
bool isOneOf(const QString& key, const Keys& keys)
{
    return std::any_of(std::begin(keys), std::end(keys),
                       [&](const char* known) { return key == QLatin1String(known); });
}

/// What a probe has seen of a header.
struct Probe
{
    bool accepted = true;
    std::array<int, 3> size = {};
    int bits = 0;

    void take(const QStringList& parts)
    {
        const QString& key = parts.first();
        bool parsed = true;
        if (key == QLatin1String("ncaa"))
            accepted = true;
        else if (isOneOf(key, kWholeKeys)) {
            const int number = parts.value(1).toInt(&parsed);
            bits = key == QLatin1String("bits") ? number : bits;
        } else if (isOneOf(key, kNumberKeys))
            parts.value(1).toDouble(&parsed);
        else if (key == QLatin1String("type"))
            parsed = parts.value(1) == QLatin1String("raster");
        else if (key == QLatin1String("format"))
            parsed = parts.value(1) == QLatin1String("slice");
        else if (key == QLatin1String("size"))
            parsed = takeSize(parts);
        else if (key == QLatin1String("spacing"))
            parsed = spacingFits(parts);
        accepted = accepted && parsed;
    }
    bool complete() const
    {
        return accepted && bits != 0 &&
               std::all_of(size.begin(), size.end(), [](int side) { return side != 0; });
    }

private:
    bool takeSize(const QStringList& parts)
    {
        bool parsed = true;
        for (int axis = 0; axis < 3; ++axis) {
            bool whole = false;
            int& side = size[static_cast<std::size_t>(axis)];
            side = parts.value(axis + 1).toInt(&whole);
            parsed = parsed && whole && side >= 0;
        }
        return parsed;
    }
    static bool spacingFits(const QStringList& parts)
    {
        return parts.size() > 4 && parts[1].toDouble() > 0 && parts[2].toDouble() > 0 &&
               parts[3].toDouble() > 0;
    }
};

QDateTime dateOf(const QString& text)
{
    for (const Qt::DateFormat format : {Qt::TextDate, Qt::ISODate, Qt::RFC2822Date}) {
        QDateTime date = QDateTime::fromString(text, format);
        if (date.isValid())
            return date;
    }
    return {};
}

/// Fills a record from a header's lines.
class HeaderReader
{
public:
    explicit HeaderReader(ImageAttributes& record) : m_record(record) {}

    void take(const QString& line)
    {
        const QStringList parts = lineParts(line);
        const QString& key = parts.first();
        if (key == QLatin1String("size")) {
            m_record.fileX = parts.value(1).toInt();
            m_record.fileY = parts.value(2).toInt();
            m_record.fileZ = parts.value(3).toInt();
        } else if (key == QLatin1String("bits")) {
            m_record.bitDepth = parts.value(1).toInt();
        } else if (key == QLatin1String("type")) {
            if (parts.value(1) != QLatin1String("raster"))
                log(LogLevel::Debug, QLatin1String("strange type: ") + parts.value(1));
        } else if (key == QLatin1String("format")) {
            if (parts.value(1) != QLatin1String("slice"))
                log(LogLevel::Debug, QLatin1String("strange format: ") + parts.value(1));
        } else if (key == QLatin1String("date")) {
            m_record.timestamp = dateOf(valueText(line));
        } else if (key == QLatin1String("spacing")) {
            for (int axis = 0; axis < 3; ++axis)
                m_spacing[static_cast<std::size_t>(axis)] = parts.value(axis + 1).toDouble();
        } else if (key == QLatin1String("elementsize")) {
            m_elementSize = parts.value(1).toDouble();
        } else if (key != QLatin1String("reverse_order") && !line.isEmpty()) {
            m_record.notes.append(line);
        }
    }
    void finish()
    {
        // With neither of the two keys this is 1, with one of them it counts as unknown.
        m_record.dimX = m_spacing[0] * m_elementSize;
        m_record.dimY = m_spacing[1] * m_elementSize;
        m_record.dimZ = m_spacing[2] * m_elementSize;
    }

private:
    ImageAttributes& m_record;
    std::array<double, 3> m_spacing = {-1.0, -1.0, -1.0};
    double m_elementSize = -1.0;
};

bool endsHeader(const QString& line) { return line.startsWith(QLatin1Char('\f')); }

/// The least of the signed words, at most 0.
int leastWord(const std::int16_t* words, std::int64_t count)
{
    std::mutex mutex;
    int least = 0;
    parallelFor(0, count, std::int64_t{1} << 18, [&](std::int64_t begin, std::int64_t end) {
        std::int16_t partLeast = 0;
        for (std::int64_t i = begin; i < end; ++i)
            partLeast = std::min(partLeast, words[i]);
        const std::scoped_lock lock(mutex);
        least = std::min<int>(least, partLeast);
    });
    return least;
}

void addToWords(std::uint16_t* words, std::int64_t count, int amount)
{
    const auto addend = static_cast<std::uint16_t>(amount);
    parallelFor(0, count, std::int64_t{1} << 18, [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t i = begin; i < end; ++i)
            words[i] = static_cast<std::uint16_t>(words[i] + addend);
    });
}

} // namespace

VffIO::VffIO(ImageFile& owner, const QStringList& names) : ImageIO(owner, names)
{
    attributes() = VffIO::readAttributes();
}

bool VffIO::isVff(const QString& name)
{
    QFile file(name);
    if (!openForProbe(file))
        return false;
    TextLines lines(file);
    Probe probe;
    for (QString line; probe.accepted && lines.next(line) && !endsHeader(line);)
        probe.take(lineParts(line));
    return probe.complete();
}

ImageAttributes VffIO::readAttributes()
{
    logDebug("I wanna read vff attributes");
    ImageAttributes record;
    if (fileCount() < 1 || !file(0).open(QIODevice::ReadOnly))
        return record;
    TextLines lines(file(0));
    HeaderReader header(record);
    for (QString line; lines.next(line) && !endsHeader(line);)
        header.take(line);
    header.finish();
    file(0).close();
    record.channels = 1;
    record.timePoints = 1;
    log(LogLevel::Debug, record.fullText());
    if (std::min({record.fileX, record.fileY, record.fileZ, record.bitDepth}) > 0)
        record.type = ImageType::Vff;
    return record;
}

bool VffIO::readLayers(int first, int last, int step)
{
    ImageAttributes& stack = attributes();
    step = std::max(step, 1);
    if (first < 0 || last < first || last >= stack.fileZ)
        return fail(QStringLiteral("Illogical arguments to readLayers"));
    if (stack.bitDepth != 8 && stack.bitDepth != 16)
        return failForDepth();
    const auto slice = checkedProduct({stack.fileX, stack.fileY, stack.bytesPerSample(), stack.channels});
    if (!slice || *slice < 1 || !checkedProduct({*slice, stack.fileZ}))
        return false;
    if (fileCount() < 1 || !file(0).open(QIODevice::ReadOnly))
        return fail(QStringLiteral("Could not open vff file"));
    const bool done = readPlaces(first, last, step, *slice);
    file(0).close();
    if (!done)
        return false;
    setSteppedRange(first, last, step);
    return true;
}

bool VffIO::readPlaces(int first, int last, int step, std::int64_t sliceBytes)
{
    ImageAttributes& stack = attributes();
    const std::int64_t stackBytes = sliceBytes * stack.fileZ;
    const PositionedFile positioned(file(0));
    const std::int64_t offset = positioned.size() - stackBytes;
    logDebug("stack %lld slice %lld offset %lld", static_cast<long long>(stackBytes),
             static_cast<long long>(sliceBytes), static_cast<long long>(offset));
    if (offset + first * sliceBytes < 0 || !isJustified(stackBytes, positioned.size()))
        return fail(QStringLiteral("Invalid offset in file"));

    releaseStack();
    VoxelBuffer voxels = allocateVoxels(stackBytes, "Could not allocate memory for VFF stack");
    SegmentPlan plan(stackBytes);
    for (std::int64_t layer = first; layer <= last; layer += step) {
        plan.moveTo(layer * sliceBytes);
        plan.append(offset + layer * sliceBytes, sliceBytes);
    }
    if (!plan.read(positioned, voxels.data()))
        return fail(QStringLiteral("Could not read vff file"));
    if (stack.bitDepth != 8) {
        const std::int64_t count = stackBytes / 2;
        swapEndian(voxels.data(), count, 2);
        const int shift = -leastWord(reinterpret_cast<const std::int16_t*>(voxels.data()), count);
        logDebug("minimum is %d", shift);
        addToWords(reinterpret_cast<std::uint16_t*>(voxels.data()), count, shift);
    }
    // One less than other readers count.
    setStack(std::move(voxels), stack.fileX, stack.fileY, (last - first) / step);
    return true;
}

} // namespace tirn
