#include "threads/stackloading.h"

#include <algorithm>

#include <QFileInfo>

#include "base/log.h"
#include "formats/imageformats.h"
#include "gl/gltable.h"
#include "session/sessionstack.h"
#include "threads/loadfailure.h"
#include "threads/loadfinish.h"

namespace tirn {

namespace {

/// What an element counts for: as much for reading as for encoding.
constexpr int kShare = 100;
/// The largest factor of sub-sampling.
constexpr int kMostReduction = 8;
const char* const kNoMemory = "Could not allocate memory for file load";
const char* const kNoMemoryNamed = "Could not allocate memory to load dataset";

/// True for a file a channel of a format whose reader knows one file only.
bool needsMerge(const QStringList& names, ImageType type)
{
    return names.size() > 1 && imageFormat(type).files == StackFiles::One;
}

/// What the reader's own texts do not say: which files are gone or closed to the user.
QStringList unreadableFiles(const QStringList& names)
{
    QStringList texts;
    for (const QString& name : names) {
        const QFileInfo info(name);
        if (!info.isFile() || !info.isReadable())
            texts.append("Unable to open file: " + name);
    }
    return texts;
}

/// The same for a stack of unknown type: which file found no reader, since the stack has no name then, and
/// that files of one stack do not go together.
QStringList causesOfUnknownType(const ImageFile& image, const QStringList& names)
{
    QStringList texts = unreadableFiles(names);
    if (texts.isEmpty() && !image.hasReader() && !names.isEmpty())
        texts.append("Unable to read in file: " + names.first());
    else if (texts.isEmpty() && image.errorList().isEmpty() && names.size() > 1)
        texts.append("Files not compatible.");
    return texts;
}

bool differs(const ImageAttributes& left, const ImageAttributes& right)
{
    return left.x != right.x || left.y != right.y || left.z != right.z || left.channels != right.channels ||
           left.bitDepth != right.bitDepth;
}

QString differenceText(const ImageFile& image, const ImageFile& first)
{
    return image.fileName() + " differs from " + first.fileName() + " in size, depth or channels.";
}

/// One stack of the channels that each of these is.
std::shared_ptr<ImageFile> mergedStack(const std::vector<std::shared_ptr<ImageFile>>& channels)
{
    if (channels.size() == 1)
        return channels.front();
    std::vector<ImageFile*> parts;
    for (const auto& channel : channels) {
        if (channel->attributes().channels != 1)
            throw LoadFailure(channel, channel->fileName() + " has more than one channel and cannot be one "
                                                             "of several files of a time point.");
        if (differs(channel->attributes(), channels.front()->attributes()))
            throw LoadFailure(channel, differenceText(*channel, *channels.front()));
        parts.push_back(channel.get());
    }
    const auto merged = std::make_shared<ImageFile>();
    if (parts.empty() || !imageFormat(parts.front()->attributes().type).mergeable || !merged->merge(parts))
        throw LoadFailure(parts.empty() ? merged : channels.back());
    return merged;
}

} // namespace

StackLoading::StackLoading(LoadDescription description, LoadSurroundings surroundings,
                           const LoadReport& report, const std::atomic<bool>& cancelled)
    : m_description(std::move(description)), m_surroundings(std::move(surroundings)), m_report(report),
      m_cancelled(cancelled)
{}

std::optional<LoadedStack> StackLoading::run()
{
    try {
        return load();
    } catch (const QStringList& texts) {
        report(texts.join(' '), 0, 0, true);
    } catch (...) {
        report("Unknown Critical file load error!  Please report this.", 1, 1, true);
    }
    return std::nullopt;
}

std::optional<LoadedStack> StackLoading::load()
{
    if (!readSession() || m_description.filesToLoad.empty())
        return std::nullopt;
    if (m_description.partial && std::int64_t{m_description.last} - m_description.first + 1 <= 0) {
        report("Error: trying to load 0 slices", 0, 0, true);
        return std::nullopt;
    }
    findFileType();
    try {
        makeArray();
    } catch (const std::bad_alloc&) {
        logWarning("Could not allocate a VoxelArray");
        return std::nullopt;
    }
    if (!dispatch())
        return std::nullopt;
    if (!keepGoing()) {
        if (!m_closed)
            report({}, 1, 1, true);
        return std::nullopt;
    }
    LoadedStack loaded;
    finish(loaded);
    return loaded;
}

bool StackLoading::readSession()
{
    if (m_description.session.tagName() != "stack")
        return true;
    const auto stack = readSessionStack(m_description.session, m_surroundings.fixMissingFile);
    m_description.filesToLoad.clear();
    if (stack)
        m_description.setSession(*stack);
    return stack.has_value();
}

void StackLoading::makeArray()
{
    m_progress = 0;
    VolumeOptions options = m_surroundings.options;
    options.conserveMemory = m_description.conserveMemory;
    m_array = std::make_unique<VoxelArray>(options);
    m_array->setChannelCount(m_description.channels);
    m_array->setTimePoints(m_description.timePoints);
}

/// The one place where an unknown type is found out.
void StackLoading::findFileType()
{
    if (m_description.fileType != ImageType::Unknown || m_description.raw)
        return;
    if (m_description.named)
        chooseNamedFiles();
    // Named files that do not go together are told of when they are read.
    const ImageFile image(m_description.named ? element(0).mid(0, 1) : element(0));
    m_description.fileType = image.attributes().type;
    if (m_description.fileType != ImageType::Unknown) {
        if (m_description.sessionSizes)
            m_description.arrangeSessionFiles(imageFormat(m_description.fileType).files ==
                                                  StackFiles::PerLayer,
                                              image.attributes().channels);
        return;
    }
    QStringList texts = image.errorList();
    texts.append(unreadableFiles(element(0)));
    throw texts;
}

/// Of names that were typed those that make one stack.
void StackLoading::chooseNamedFiles()
{
    QStringList& names = m_description.filesToLoad.front();
    if (names.size() > 1 && ImageFile({names.first()}).attributes().channels > 1)
        names = QStringList(names.first());
    if (!m_description.named->palette.isEmpty())
        logDebug("loading %s using palette %s\n", qPrintable(names.first()),
                 qPrintable(m_description.named->palette));
}

/// The steps of a stack and a palette that were named, and nothing else.
void StackLoading::logNamedStep(const char* text) const
{
    if (m_description.named && !m_description.named->palette.isEmpty())
        logDebug("%s", text);
}

bool StackLoading::dispatch()
{
    if (m_description.named && element(0).size() > 1)
        return runRoutine(&StackLoading::loadNamedChannels);
    if (imageFormat(m_description.fileType).files == StackFiles::PerLayer)
        return runRoutine(&StackLoading::loadTiffSeries);
    if (m_description.fileType == ImageType::Unknown)
        return runRoutine(&StackLoading::loadRaw);
    return runRoutine(&StackLoading::loadStacks);
}

/// False when nothing is left to be shown.
bool StackLoading::runRoutine(void (StackLoading::*routine)())
{
    const RenderThreadKind kind = m_surroundings.options.kind;
    try {
        (this->*routine)();
        return true;
    } catch (const std::bad_alloc&) {
        // The text stands in the place of a name, and what was complete by then is still loaded.
        if (m_description.named) {
            report(kNoMemoryNamed, 0, 0, true);
            return false;
        }
        loadFailed(kNoMemory);
        m_array->keepImages(m_complete);
        return m_complete > 0;
    } catch (const LoadFailure& failure) {
        report(failure.text(kind), 0, 0, true);
    } catch (...) {
        const ImageFile none;
        report(loadFailureText(m_current != nullptr ? *m_current : none, kind), 0, 0, true);
    }
    return false;
}

void StackLoading::loadStacks()
{
    loadElements([this](int index) { return readStack(element(index)); });
}

void StackLoading::loadRaw()
{
    loadElements([this](int index) {
        const RawLayout& raw = m_description.rawLayout;
        const auto image = std::make_shared<ImageFile>(element(index), raw.headerOffset, raw.x, raw.y, raw.z,
                                                       m_description.channels, raw.bitDepth, raw.swapBytes);
        readLayers(image);
        reduce(*image);
        return image;
    });
}

void StackLoading::loadTiffSeries()
{
    if (m_description.timePoints != elements()) {
        loadChannelSeries();
        return;
    }
    loadElements([this](int index) {
        const Image image = readProbed(element(index));
        reduce(*image);
        return image;
    });
}

/// One image for each element.
void StackLoading::loadElements(ElementReader reader)
{
    m_reader = std::move(reader);
    m_progressTotal = 2 * kShare * elements();
    // Textures are counted by time points, so that there must be as many of these as there are images.
    if (m_array->timePointCount() != elements())
        m_array->setTimePoints(elements());
    for (int i = 0; i < elements() && keepGoing(); ++i) {
        const QString name = element(i).value(0);
        report("Loading " + name, m_progress, m_progressTotal, false);
        m_current = take(i);
        if (!m_description.raw)
            logDebug("before push time %d", i);
        append(m_current);
        if (!m_description.raw)
            logDebug("Before encode");
        m_progress += kShare;
        report("Encoding " + name, m_progress, m_progressTotal, false);
        readAhead(i + 1);
        encode(m_current);
        m_progress += kShare;
        report({}, m_progress, m_progressTotal, false);
    }
}

/// One time point with an image for each channel.
void StackLoading::loadNamedChannels()
{
    const QStringList names = element(0);
    m_progressTotal = 2 * kShare;
    report("Loading " + names.first(), 0, m_progressTotal, false);
    for (const QString& name : names) {
        if (!keepGoing())
            return;
        m_current = readProbed({name});
        if (m_array->images().empty())
            append(m_current);
        else if (!(m_current->attributes() == m_array->images().front()->attributes()))
            throw LoadFailure(m_current, m_current->fileName() + " differs from " +
                                             m_array->images().front()->fileName() +
                                             " in size, depth or type.");
        else
            m_array->appendImage(m_current);
    }
    m_array->setChannelCount(static_cast<int>(names.size()));
    m_progress = kShare;
    report("Encoding " + names.first(), m_progress, m_progressTotal, false);
    for (int i = 0; i < names.size() && keepGoing(); ++i)
        encode(m_current);
    report({}, m_progressTotal, m_progressTotal, false);
}

/// Each element is one channel of a time point, with a file for each layer.
void StackLoading::loadChannelSeries()
{
    m_reader = [this](int index) { return readProbed(element(index)); };
    m_progressTotal = 2 * kShare * elements();
    for (int time = 0; time < m_description.timePoints && keepGoing(); ++time) {
        const Image image = mergedChannels(time);
        if (image == nullptr)
            return;
        reduce(*image);
        append(image);
        const int first = m_description.channels * time;
        report("Encoding " + element(first).value(0), m_progress, m_progressTotal, false);
        readAhead(first + m_description.channels);
        encode(image);
        m_progress += kShare * m_description.channels;
        report({}, m_progress, m_progressTotal, false);
    }
}

/// Null when cancelled meanwhile.
StackLoading::Image StackLoading::mergedChannels(int time)
{
    std::vector<Image> channels;
    for (int channel = 0; channel < m_description.channels; ++channel) {
        if (!keepGoing())
            return nullptr;
        const int index = channel + m_description.channels * time;
        warnOfMissingElement(index);
        report("Loading " + element(index).value(0), m_progress, m_progressTotal, false);
        m_progress += kShare;
        m_current = take(index);
        channels.push_back(m_current);
    }
    if (!keepGoing())
        return nullptr;
    logDebug("before merge");
    m_current = mergedStack(channels);
    logDebug("after merge");
    return m_current;
}

void StackLoading::warnOfMissingElement(int index) const
{
    if (index >= elements())
        logAssertion("ch+channels*time >= (int) filesToLoad.size()", "threads\\filethread.cpp", 262);
}

StackLoading::Image StackLoading::readStack(const QStringList& names) const
{
    const Image image = needsMerge(names, m_description.fileType) ? readMerged(names) : readProbed(names);
    reduce(*image);
    return image;
}

StackLoading::Image StackLoading::readProbed(const QStringList& names) const
{
    const auto image = std::make_shared<ImageFile>(names);
    if (image->attributes().type == ImageType::Unknown) {
        image->errorList().append(causesOfUnknownType(*image, names));
        throw LoadFailure(image);
    }
    logNamedStep("Created ImageFile");
    readLayers(image);
    logNamedStep("Read ImagFile");
    return image;
}

/// A file for each channel, of a format whose reader knows one file only.
StackLoading::Image StackLoading::readMerged(const QStringList& names) const
{
    std::vector<Image> channels;
    for (const QString& name : names)
        channels.push_back(readProbed({name}));
    return mergedStack(channels);
}

/// All layers, or those of the range. A range that seems to have as many layers as the file, counted as
/// (last - first) / step, is taken for all of it.
void StackLoading::readLayers(const Image& image) const
{
    refuseDepth(image);
    const LoadDescription& load = m_description;
    const std::int64_t layers = (std::int64_t{load.last} - load.first) / std::max(1, load.step);
    const bool isRange = load.partial && layers != image->attributes().fileZ;
    if (!(isRange ? image->read(load.first, load.last, load.step) : image->read()))
        throw LoadFailure(image);
}

/// Before any voxel is read, since the card could not show it.
void StackLoading::refuseDepth(const Image& image) const
{
    if (!image->attributes().hasWords() || m_surroundings.options.kind != RenderThreadKind::Paletted)
        return;
    image->errorList().append("Greater than 8-bit images are not supported on your video card.");
    throw LoadFailure(image);
}

void StackLoading::reduce(ImageFile& image) const
{
    if (factor() > 1)
        image.subSample(factor());
}

/// A factor that there is no reduction by reads the stack as it is.
int StackLoading::factor() const
{
    return m_description.subsample <= kMostReduction ? m_description.subsample : 1;
}

/// No names for an element that is not there.
QStringList StackLoading::element(int index) const
{
    const bool there = index >= 0 && index < elements();
    return there ? m_description.filesToLoad[static_cast<std::size_t>(index)] : QStringList();
}

StackLoading::Image StackLoading::take(int index)
{
    m_current.reset();
    return m_readAhead.index() == index ? m_readAhead.take() : m_reader(index);
}

/// With voxels let go after encoding, two time points at once are what memory is planned for: the blocks of
/// 3D textures, and channels that are merged as a stack of their own, would be a third one.
void StackLoading::readAhead(int index)
{
    const bool mergesAlone = needsMerge(element(index), m_description.fileType);
    const bool hasRoom =
        !m_description.conserveMemory || (m_description.textureTarget != GL_TEXTURE_3D && !mergesAlone);
    if (index < elements() && keepGoing() && hasRoom)
        m_readAhead.start(index, [this, index] { return m_reader(index); });
}

void StackLoading::append(const Image& image)
{
    const ImageAttributes& attributes = image->attributes();
    if (m_array->images().empty()) {
        m_array->stack() = attributes;
        m_array->sliceFirst = image->firstLayer();
        m_array->sliceLast = image->lastLayer();
        m_array->sliceStep = image->layerStep();
        m_array->subsample = std::max(1, factor());
        // Textures are counted by channels, so that there must be those of the file.
        if (m_array->channelCount() != attributes.channels)
            m_array->setChannelCount(attributes.channels);
    } else if (differs(attributes, m_array->stack())) {
        throw LoadFailure(image, differenceText(*image, *m_array->images().front()));
    }
    m_array->appendImage(image);
}

void StackLoading::encode(const Image& image)
{
    int shown = 0;
    const Progress progress = {[&](const QString& message, int percent, int total) {
        // A step more would end the progress before the report that follows.
        if (percent == shown || percent >= kShare || !keepGoing())
            return;
        shown = percent;
        m_report.progress(message, percent, total, false);
    }};
    const int finalZ = m_description.reslice ? m_description.resliceZ : -1;
    if (!m_array->encode(m_description.textureTarget, finalZ, progress))
        throw LoadFailure(image);
    const std::int64_t wanted =
        m_array->texturesPerChannel() * image->attributes().channels * m_array->encodedImages();
    const auto made = static_cast<std::int64_t>(m_array->textures().size());
    if (made == 0)
        throw LoadFailure(image);
    if (made < wanted)
        throw std::bad_alloc();
    logNamedStep("Encoded ImageFile");
    ++m_complete;
}

/// After a cancel nothing but the end of the progress is reported.
void StackLoading::report(const QString& message, int value, int total, bool finished)
{
    const bool cancelled = !keepGoing();
    m_closed = cancelled || finished;
    if (cancelled)
        m_report.progress({}, 1, 1, true);
    else
        m_report.progress(message, value, total, finished);
}

void StackLoading::loadFailed(const QString& name) { report(loadFailureText(name), 0, 0, true); }

void StackLoading::finish(LoadedStack& loaded)
{
    applyDimensions(*m_array, m_description);
    loaded.palettes = assignPalettes(*m_array, m_description, m_surroundings);
    applySessionExtras(*m_array, m_description);
    // The volume is complete before another context draws it.
    gl().Finish();
    logDebug("bitdepth is %d", m_array->bitsPerSample());
    for (const auto& image : m_array->images()) {
        for (const QString& text : image->errorList())
            loaded.gaps.append(image->fileName() + ": " + text);
    }
    loaded.array = std::move(m_array);
    loaded.files = std::move(m_description.filesToLoad);
    if (m_description.raw)
        loaded.raw = m_description.rawLayout;
}

} // namespace tirn
