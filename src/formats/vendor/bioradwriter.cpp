#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "base/checkedsize.h"
#include "base/log.h"
#include "base/outputfile.h"
#include "formats/names/fileending.h"
#include "formats/vendor/bioradio.h"
#include "formats/vendor/bioradlayout.h"
#include "image/voxelallocation.h"

namespace tirn {

namespace {

constexpr const char* kEnding = ".pic";

void putWord(char* to, unsigned value)
{
    to[0] = static_cast<char>(value & 0xFF);
    to[1] = static_cast<char>(value >> 8 & 0xFF);
}

void putLong(char* to, std::uint32_t value)
{
    putWord(to, value & 0xFFFF);
    putWord(to + 2, value >> 16);
}

bool hasVoxelSize(const ImageAttributes& attributes)
{
    return attributes.dimX > 0 && attributes.dimY > 0 && attributes.dimZ > 0;
}

std::int64_t layerBytes(const ImageAttributes& attributes)
{
    return std::int64_t{attributes.x} * attributes.y * attributes.bytesPerSample();
}

/// The bits of the whole part: -1, which stands for an unknown magnification, has all of them set.
std::uint32_t truncated(float magnification)
{
    if (std::isnan(magnification))
        return 0;
    const double whole = std::clamp<double>(static_cast<double>(magnification), INT32_MIN, UINT32_MAX);
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(whole));
}

/// One name a channel, made from a pattern where only that is given.
QStringList channelNames(const QStringList& names, int channels)
{
    if (names.size() > 1 || channels == 1)
        return names;
    log(LogLevel::Debug, QLatin1String("Pattern ") + names.first());
    return BioradIO::writtenFiles(names.first(), channels);
}

/// What stands in the way of writing; empty when nothing does.
QString refusal(const QStringList& names, const ImageAttributes& attributes, const std::uint8_t* data,
                int first, int last, int step)
{
    if (data == nullptr)
        return QStringLiteral("No image to write");
    if (attributes.channels < 1)
        return QStringLiteral("Can't write a zero channel file");
    if (names.isEmpty())
        return QStringLiteral("Must write with at least one filename");
    // The second number is that of the layers, although the channels are what is short.
    if (names.size() > 1 && names.size() < attributes.channels)
        return QString::asprintf("We have %d names, we need %d", static_cast<int>(names.size()),
                                 step == 0 ? 0 : (last - first + 1) / step);
    if (std::max({attributes.x, attributes.y, attributes.z}) > biorad::kLargestSize)
        return QStringLiteral("Sizes above 65535 do not fit a Biorad file");
    return {};
}

QString writeChannel(const QString& given, const ImageAttributes& attributes, const std::uint8_t* data,
                     int first, int last, int step, bool overwrite)
{
    const QString name = withEnding(given, kEnding);
    log(LogLevel::Debug, QLatin1String("opening file: ") + name);
    if (!overwrite && ImageIO::exists(name))
        return QLatin1String("File ") + name + QLatin1String(" exists");
    OutputFile file(name);
    if (!file.open())
        return QStringLiteral("Unable to open file for writing");
    logDebug("about to write");
    if (!BioradIO::writeHead(file, attributes))
        return QStringLiteral("Failed to write head");
    if (!BioradIO::writeBody(file, data, attributes, first, last, step))
        return QStringLiteral("Failed to write body");
    if (!BioradIO::writeNotes(file, attributes))
        return QStringLiteral("Failed to write notes");
    if (!file.commit())
        return QStringLiteral("Unable to open file for writing");
    logDebug("written with step support");
    return {};
}

/// Takes the channels apart into `buffers`; a text when memory runs out.
QString separate(const ImageAttributes& attributes, const std::uint8_t* data,
                 std::vector<VoxelBuffer>& buffers)
{
    logDebug("about to separate %d channels", attributes.channels);
    const auto bytes =
        checkedProduct({attributes.x, attributes.y, attributes.z, attributes.bytesPerSample()});
    logDebug("allocating %d stacks of size %lld", attributes.channels,
             static_cast<long long>(bytes.value_or(-1)));
    std::vector<std::byte*> pointers;
    for (int c = 0; c < attributes.channels; ++c) {
        const QString text = QString::asprintf("Failed to alloc stack[%d]", c);
        try {
            buffers.push_back(allocateVoxels(bytes, "Failed to alloc stack"));
        } catch (const std::bad_alloc&) {
            return text;
        }
        // Depths that are not taken apart would leave the file full of whatever the memory held.
        if (attributes.bitDepth != 8 && attributes.bitDepth != 16)
            buffers.back().zero();
        pointers.push_back(buffers.back().data());
    }
    ImageIO::separateChannels(data, pointers, attributes);
    logDebug("channels separated");
    return {};
}

} // namespace

QStringList BioradIO::writtenFiles(const QString& name, int channels)
{
    if (channels == 1)
        return {withEnding(name, kEnding)};
    return numberedFiles(name, kEnding, 'c', 2, channels);
}

QStringList BioradIO::write(const QStringList& names, const ImageAttributes& attributes,
                            const std::uint8_t* data, int first, int last, int step, bool overwrite)
{
    logDebug("enter BioradIO:write\n");
    const QString reason = refusal(names, attributes, data, first, last, step);
    if (!reason.isEmpty())
        return {reason};
    const QStringList targets = channelNames(names, attributes.channels);
    std::vector<VoxelBuffer> buffers;
    if (attributes.channels > 1) {
        const QString text = separate(attributes, data, buffers);
        if (!text.isEmpty())
            return {text};
    }
    for (int c = 0; c < attributes.channels; ++c) {
        const auto* channel =
            buffers.empty()
                ? data
                : reinterpret_cast<const std::uint8_t*>(buffers[static_cast<std::size_t>(c)].data());
        const QString text = writeChannel(targets.at(c), attributes, channel, first, last, step, overwrite);
        if (!text.isEmpty())
            return {text};
    }
    logDebug("Done writing biorad");
    return {};
}

bool BioradIO::writeHead(OutputFile& file, const ImageAttributes& attributes)
{
    std::array<char, biorad::kHeaderBytes> head{};
    putWord(&head[0], static_cast<unsigned>(attributes.x));
    putWord(&head[2], static_cast<unsigned>(attributes.y));
    putWord(&head[4], static_cast<unsigned>(attributes.z));
    // Only the low byte of the notes' offset is stored. Where that byte is 0 the notes are written and never
    // read again.
    if (hasVoxelSize(attributes)) {
        const auto offset =
            static_cast<std::uint64_t>(layerBytes(attributes)) * static_cast<unsigned>(attributes.z) +
            biorad::kHeaderBytes;
        head[biorad::kNotesOffset] = static_cast<char>(offset & 0xFF);
    }
    head[biorad::kByteFormatOffset] = attributes.bitDepth == 8 ? 1 : 0;
    putWord(&head[biorad::kSignatureOffset], biorad::kSignature);
    head[biorad::kLensOffset] = static_cast<char>(attributes.lens & 0xFF);
    putLong(&head[biorad::kMagnificationOffset], truncated(attributes.magFactor));
    return file.seek(0) && file.write(head.data(), head.size());
}

bool BioradIO::writeBody(OutputFile& file, const std::uint8_t* data, const ImageAttributes& attributes,
                         int first, int last, int step)
{
    if (data == nullptr || step < 1)
        return false;
    const std::int64_t layer = layerBytes(attributes);
    const std::int64_t count = (std::int64_t{last} - first + 1) / step;
    const std::uint8_t* source = data + layer * first;
    if (step == 1)
        return file.seek(biorad::kHeaderBytes) && file.write(source, layer * count);
    for (std::int64_t k = 0; k < count; ++k, source += step * layer) {
        if (!file.seek(biorad::kHeaderBytes + k * layer) || !file.write(source, layer))
            return false;
    }
    return true;
}

bool BioradIO::writeNotes(OutputFile& file, const ImageAttributes& attributes)
{
    if (!hasVoxelSize(attributes))
        return true;
    const std::array<double, 3> sizes = {attributes.dimX, attributes.dimY, attributes.dimZ};
    for (int i = 0; i < 3; ++i) {
        const QByteArray text = QString::asprintf("AXIS_%d 001 0.000000e+00 %12e microns", i + 2,
                                                  sizes[static_cast<std::size_t>(i)])
                                    .toLatin1()
                                    .leftJustified(biorad::kNoteTextBytes, ' ', true);
        std::array<char, biorad::kNoteBytes> note{};
        putWord(&note[0], 0xFFFF);
        putLong(&note[2], i < 2 ? 1 : 0);
        putWord(&note[8], 1);
        putWord(&note[10], biorad::kAxisNoteType);
        std::copy(text.begin(), text.end(), note.begin() + biorad::kNoteTextOffset);
        if (!file.write(note.data(), note.size()))
            return false;
    }
    return true;
}

} // namespace tirn
