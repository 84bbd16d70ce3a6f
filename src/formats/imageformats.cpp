#include "formats/imageformats.h"

#include <algorithm>
#include <iterator>

#include "base/log.h"
#include "formats/mergedio.h"
#include "formats/raw/unknownio.h"
#include "formats/tiff/mtiffio.h"
#include "formats/tiff/tiffseriesio.h"
#include "formats/vendor/bioradio.h"
#include "formats/vendor/imsubs.h"
#include "formats/vendor/leicaio.h"
#include "formats/vendor/metamorphio.h"
#include "formats/vendor/olympusio.h"
#include "formats/vendor/vffio.h"
#include "formats/vendor/zeissio.h"
#include "image/stackreader.h"

namespace tirn {

namespace {

template <class Reader>
std::unique_ptr<ImageIO> make(ImageFile& owner, const QStringList& names)
{
    return std::make_unique<Reader>(owner, names);
}

constexpr ImageFormat kFormats[] = {
    {.type = ImageType::BioRad,
     .name = "Bio-Rad",
     .word = "pic",
     .filterName = "Biorad",
     .endings = ".pic",
     .filters = InOpenFilter | InExportFilter | InChannelFilter,
     .files = StackFiles::PerChannel,
     .page = OpenPage::Siblings,
     .probe = BioradIO::isBiorad,
     .guessText = "I think it is a Biorad",
     .create = make<BioradIO>,
     .mergeable = true,
     .write = BioradIO::write,
     .writtenFiles = BioradIO::writtenFiles},
    {.type = ImageType::Zeiss,
     .name = "Zeiss LSM",
     .filterName = "Zeiss",
     .endings = ".lsm",
     .filters = InOpenFilter,
     .page = OpenPage::OneFile,
     .probe = ZeissIO::isZeiss,
     .guessText = "I think it is a Zeiss",
     .create = make<ZeissIO>,
     .mergeable = true,
     .write = ZeissIO::write},
    {.type = ImageType::MetaMorph,
     .name = "MetaMorph",
     .word = "stk",
     .filterName = "Metamorph",
     .endings = ".stk",
     .filters = InOpenFilter,
     .page = OpenPage::OneFile,
     .probe = MetaMorphIO::isMetaMorph,
     .guessText = "I think it is a Metamorph",
     .create = make<MetaMorphIO>,
     .mergeable = true,
     .write = MetaMorphIO::write},
    {.type = ImageType::MultiPageTiff,
     .name = "multi-page TIFF",
     .word = "mtiff",
     .filterName = "MTiff",
     // Twice the same: so it stands in the filter for opening.
     .endings = ".tif .tiff .tif",
     .filters = InOpenFilter | InExportFilter,
     .page = OpenPage::ByChannels,
     .probe = MTiffIO::isMTiff,
     .guessText = "I think it is a MTiff",
     .create = make<MTiffIO>,
     .mergeable = true,
     .write = MTiffIO::write},
    {.type = ImageType::TiffSeries,
     .name = "TIFF series",
     .word = "tiff",
     .endings = ".tif",
     .files = StackFiles::PerLayer,
     .page = OpenPage::Layer,
     .probe = TiffSeriesIO::isTiffSeries,
     .guessText = "I think this is a series of Tiffs",
     .create = make<TiffSeriesIO>,
     .mergeable = true,
     .write = TiffSeriesIO::write,
     .writtenFiles = TiffSeriesIO::writtenFiles},
    {.type = ImageType::Olympus,
     .name = "Olympus",
     .filterName = "Olympus",
     .endings = ".oif",
     .filters = InOpenFilter,
     .files = StackFiles::DataSet,
     .page = OpenPage::DataSet,
     .probe = OlympusIO::isOlympus,
     .guessText = "I think it is a Olympus",
     .create = make<OlympusIO>,
     .refusal = "Olympus not supported"},
    {.type = ImageType::Leica,
     .name = "Leica",
     .filterName = "Leica",
     .endings = ".lei .txt",
     .filters = InOpenFilter,
     .page = OpenPage::Description,
     .probe = LeicaIO::isLeica,
     .guessText = "I think it is a Leica",
     .create = make<LeicaIO>},
    {.type = ImageType::Vff,
     .name = "VFF",
     .filterName = "VFF",
     .endings = ".vff",
     .filters = InOpenFilter,
     .page = OpenPage::OneFile,
     .probe = VffIO::isVff,
     .guessText = "I think it is a vff",
     .create = make<VffIO>},
    {.type = ImageType::DeltaVision,
     .name = "DeltaVision",
     .filterName = "Deltavision",
     .endings = ".r3d",
     .filters = InOpenFilter,
     .page = OpenPage::OneFile,
     .probe = IMSubs::isDeltaVision,
     .guessText = "I think it is a DeltaVision",
     .create = make<IMSubs>,
     .mergeable = true},
    {.type = ImageType::Dicom,
     .name = "DICOM",
     .filterName = "Dicom",
     .endings = ".dcm",
     .filters = InOpenFilter,
     .refusal = "DICOM not supported"},
    {.type = ImageType::PerkinElmer,
     .name = "Perkin Elmer",
     .filterName = "Perkin Elmer",
     .endings = ".tif",
     .filters = InChannelFilter,
     .refusal = "Perkinelmer not supported"},
    {.type = ImageType::Unknown,
     .name = "unknown or raw",
     .word = "raw",
     .endings = ".raw",
     .write = UnknownIO::write},
};

} // namespace

std::span<const ImageFormat> imageFormats() { return kFormats; }

const ImageFormat& imageFormat(ImageType type)
{
    const auto* row = std::find_if(std::begin(kFormats), std::end(kFormats),
                                   [type](const ImageFormat& format) { return format.type == type; });
    return row != std::end(kFormats) ? *row : *std::prev(row);
}

namespace {

/// Null where no format for export is like that.
template <class IsLikeThat>
const ImageFormat* findForExport(const IsLikeThat& isLikeThat)
{
    const auto found = std::find_if(std::begin(kFormats), std::end(kFormats), [&](const ImageFormat& format) {
        return (format.filters & InExportFilter) != 0 && isLikeThat(format);
    });
    return found != std::end(kFormats) ? &*found : nullptr;
}

const ImageFormat& lastForExport()
{
    return *std::find_if(std::rbegin(kFormats), std::rend(kFormats),
                         [](const ImageFormat& format) { return (format.filters & InExportFilter) != 0; });
}

} // namespace

const ImageFormat* exportFormatOfEnding(const QString& fileName)
{
    return findForExport([&](const ImageFormat& format) { return format.hasEndingOf(fileName); });
}

const ImageFormat& exportFormat(const QString& fileName)
{
    const ImageFormat* found = exportFormatOfEnding(fileName);
    return found != nullptr ? *found : lastForExport();
}

const ImageFormat& exportFormatOfFilter(const QString& filter)
{
    const ImageFormat* found = findForExport(
        [&](const ImageFormat& format) { return filter.contains(QLatin1String(format.filterName)); });
    return found != nullptr ? *found : lastForExport();
}

QString withOtherEnding(const QString& fileName, const ImageFormat& from, const ImageFormat& to)
{
    for (const QString& ending : from.endingList()) {
        if (fileName.endsWith(ending, Qt::CaseInsensitive))
            return fileName.chopped(ending.size()) + to.endingList().first();
    }
    return fileName + to.endingList().first();
}

QStringList ImageFormat::endingList() const { return QString(QLatin1String(endings)).split(' '); }

bool ImageFormat::hasEndingOf(const QString& fileName) const
{
    const QStringList all = endingList();
    return std::any_of(all.begin(), all.end(), [&fileName](const QString& ending) {
        return !ending.isEmpty() && fileName.endsWith(ending, Qt::CaseInsensitive);
    });
}

int ImageFormat::fileCount(const ImageAttributes& attributes) const
{
    switch (files) {
    case StackFiles::PerChannel:
        return std::max(attributes.channels, 1);
    case StackFiles::PerLayer:
        return std::max(attributes.z, 1);
    case StackFiles::One:
    case StackFiles::DataSet:
        break;
    }
    return 1;
}

QStringList ImageFormat::filesOf(const QString& fileName, const ImageAttributes& attributes) const
{
    return writtenFiles != nullptr ? writtenFiles(fileName, fileCount(attributes)) : QStringList{fileName};
}

// The doors of ImageFile.

std::unique_ptr<StackReader> openStackReader(ImageFile& owner, const QStringList& names)
{
    const ImageFormat& format = imageFormat(ImageIO::probeType(names.value(0)));
    if (format.create == nullptr) {
        log(LogLevel::Debug, QLatin1String("AHH I don't know what this is ") + names.value(0));
        return nullptr;
    }
    logDebug("%s", format.guessText);
    return format.create(owner, names);
}

std::unique_ptr<StackReader> openRawReader(ImageFile& owner, const QStringList& names,
                                           std::int64_t headerOffset, int x, int y, int z, int channels,
                                           int bitDepth, bool swapBytes)
{
    return std::make_unique<UnknownIO>(owner, names, headerOffset, x, y, z, channels, bitDepth, swapBytes);
}

std::unique_ptr<StackReader> openMergedReader(ImageFile& owner, ImageType type,
                                              const std::vector<QStringList>& channelFiles)
{
    if (!imageFormat(type).mergeable)
        return nullptr;
    return std::make_unique<MergedIO>(owner, type, channelFiles);
}

void mergeChannels(std::span<const std::byte* const> channelBuffers, void* destination,
                   const ImageAttributes& attributes)
{
    ImageIO::mergeChannels(channelBuffers, destination, attributes);
}

QStringList writeStack(ImageType type, const QStringList& names, const ImageAttributes& attributes,
                       const std::uint8_t* data, bool overwrite)
{
    const ImageFormat& format = imageFormat(type);
    if (format.refusal != nullptr)
        return {QLatin1String(format.refusal)};
    const StackWriter write = format.write != nullptr ? format.write : UnknownIO::write;
    return write(names, attributes, data, 0, attributes.z - 1, 1, overwrite);
}

} // namespace tirn
