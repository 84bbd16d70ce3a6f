#include "formats/imageformats.h"

#include "formats/bioradio.h"
#include "formats/imsubs.h"
#include "formats/leicaio.h"
#include "formats/metamorphio.h"
#include "formats/mtiffio.h"
#include "formats/olympusio.h"
#include "formats/tiffseriesio.h"
#include "formats/unknownio.h"
#include "formats/vffio.h"
#include "formats/zeissio.h"

namespace tirn {

namespace {

template <class Reader>
std::unique_ptr<ImageIO> make(ImageFile& owner, const QStringList& names)
{
    return std::make_unique<Reader>(owner, names);
}

const ImageFormat kFormats[] = {
    {.type = ImageType::BioRad,
     .probe = BioradIO::isBiorad,
     .guessText = "I think it is a Biorad",
     .create = make<BioradIO>,
     .mergeable = true,
     .write = BioradIO::write},
    {.type = ImageType::Zeiss,
     .probe = ZeissIO::isZeiss,
     .guessText = "I think it is a Zeiss",
     .create = make<ZeissIO>,
     .mergeable = true,
     .write = ZeissIO::write},
    {.type = ImageType::MetaMorph,
     .probe = MetaMorphIO::isMetaMorph,
     .guessText = "I think it is a Metamorph",
     .create = make<MetaMorphIO>,
     .mergeable = true,
     .write = MetaMorphIO::write},
    {.type = ImageType::MultiPageTiff,
     .probe = MTiffIO::isMTiff,
     .guessText = "I think it is a MTiff",
     .create = make<MTiffIO>,
     .mergeable = true,
     .write = MTiffIO::write},
    {.type = ImageType::TiffSeries,
     .probe = TiffSeriesIO::isTiffSeries,
     .guessText = "I think this is a series of Tiffs",
     .create = make<TiffSeriesIO>,
     .mergeable = true,
     .write = TiffSeriesIO::write},
    {.type = ImageType::Olympus,
     .probe = OlympusIO::isOlympus,
     .guessText = "I think it is a Olympus",
     .create = make<OlympusIO>,
     .refusal = "Olympus not supported"},
    {.type = ImageType::Leica,
     .probe = LeicaIO::isLeica,
     .guessText = "I think it is a Leica",
     .create = make<LeicaIO>},
    {.type = ImageType::Vff,
     .probe = VffIO::isVff,
     .guessText = "I think it is a vff",
     .create = make<VffIO>},
    {.type = ImageType::DeltaVision,
     .probe = IMSubs::isDeltaVision,
     .guessText = "I think it is a DeltaVision",
     .create = make<IMSubs>,
     .mergeable = true},
    {.type = ImageType::Dicom, .refusal = "DICOM not supported"},
    {.type = ImageType::PerkinElmer, .refusal = "Perkinelmer not supported"},
};

} // namespace

std::span<const ImageFormat> imageFormats() { return kFormats; }

const ImageFormat* findImageFormat(ImageType type)
{
    for (const ImageFormat& format : kFormats) {
        if (format.type == type)
            return &format;
    }
    return nullptr;
}

QStringList writeStack(ImageType type, const QStringList& names, const ImageAttributes& attributes,
                       const std::uint8_t* data, int first, int last, int step, bool overwrite)
{
    const ImageFormat* format = findImageFormat(type);
    if (format != nullptr && format->refusal != nullptr)
        return {QLatin1String(format->refusal)};
    const StackWriter write =
        format != nullptr && format->write != nullptr ? format->write : UnknownIO::write;
    return write(names, attributes, data, first, last, step, overwrite);
}

} // namespace tirn
