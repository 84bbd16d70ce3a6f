#include "threads/namedstackload.h"

#include <QFileInfo>

#include <algorithm>

#include "image/imagefile.h"
#include "volume/volumemaking.h"

namespace tirn {

namespace {

constexpr int kReadShare = 100;
constexpr int kTotal = 200;

/// Ends a load with a text for the user.
class NamedLoadFailure : public std::exception
{
public:
    explicit NamedLoadFailure(QString text) : m_text(std::move(text)) {}
    const QString& text() const { return m_text; }

private:
    QString m_text;
};

std::shared_ptr<ImageFile> readImage(const QString& name)
{
    auto image = std::make_shared<ImageFile>(QStringList{name});
    if (!image->hasReader() || image->attributes().type == ImageType::Unknown)
        throw NamedLoadFailure(image->errorList().join("\n") + "\n" + image->fileName() +
                               " is not a supported file type.  Aborting!");
    if (!image->read()) {
        throw NamedLoadFailure("I cannot undestand the data in " + image->fileName() + " for some reason.\n" +
                               image->errorList().join("\n"));
    }
    return image;
}

/// One file a channel, or one file with all channels.
void readImages(VoxelArray& array, const LoadRequest& request, const std::atomic<bool>& cancelled)
{
    array.appendImage(readImage(request.names.front()));
    const ImageAttributes& first = array.images().front()->attributes();
    if (first.channels != 1)
        return;
    for (int i = 1; i < request.names.size() && !cancelled; ++i) {
        auto image = readImage(request.names[i]);
        if (!(image->attributes() == first))
            throw NamedLoadFailure(image->fileName() + " differs from " + array.images().front()->fileName() +
                                   " in size, depth or type.");
        array.appendImage(std::move(image));
    }
}

void assignPalettes(VoxelArray& array, const LoadRequest& request)
{
    const int count = std::max(1, request.paletteCount);
    for (int c = 0; c < array.channelCount(); ++c)
        array.channels()[static_cast<std::size_t>(c)].display.palette = (request.firstPalette + c) % count;
    array.palettesOfChannel = request.paletteIds;
}

std::unique_ptr<VoxelArray> makeVolume(const LoadRequest& request, const LoadReport& report,
                                       const std::atomic<bool>& cancelled)
{
    auto array = std::make_unique<VoxelArray>(request.options);
    const QString& name = request.names.front();
    report.progress("Loading " + name, 0, kTotal, false);
    readImages(*array, request, cancelled);
    if (cancelled)
        return nullptr;
    report.progress("Encoding " + name, kReadShare, kTotal, false);
    const ImageFile& first = *array->images().front();
    const int channels = first.attributes().channels;
    const Progress progress = {[&report](const QString& message, int percent, int total) {
                                   report.progress(message, percent, total, false);
                               },
                               &cancelled};
    const bool complete = completeVolume(
        *array, {channels > 1 ? channels : static_cast<int>(array->images().size())}, progress);
    if (cancelled)
        return nullptr;
    if (!complete)
        throw NamedLoadFailure("I cannot undestand the data in " + first.fileName() + " for some reason.");
    assignPalettes(*array, request);
    report.progress("", 0, 0, true);
    return array;
}

} // namespace

std::optional<LoadedStack> loadStack(const LoadRequest& request, const LoadReport& report,
                                     const std::atomic<bool>& cancelled)
{
    try {
        std::unique_ptr<VoxelArray> array = makeVolume(request, report, cancelled);
        if (array == nullptr) {
            report.progress("", 1, 1, true);
            return std::nullopt;
        }
        // One stack, whose channels are in these files; it may be loaded again from another directory.
        QStringList files;
        for (const auto& image : array->images()) {
            for (const QString& name : image->filePaths())
                files.append(QFileInfo(name).absoluteFilePath());
        }
        return LoadedStack{std::move(array), {files}, {}};
    } catch (const NamedLoadFailure& failure) {
        report.progress(failure.text(), 0, 0, true);
    } catch (const std::bad_alloc&) {
        report.progress("Could not allocate memory to load dataset", 0, 0, true);
    }
    return std::nullopt;
}

} // namespace tirn
