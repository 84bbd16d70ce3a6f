#include "threads/exportjob.h"

#include <algorithm>
#include <cstring>

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include "base/checkedsize.h"
#include "base/log.h"
#include "base/outputfile.h"
#include "depth/curvebaking.h"
#include "formats/imageformats.h"
#include "image/interleave.h"
#include "image/voxelallocation.h"
#include "volume/draworder.h"

namespace tirn {

namespace {

constexpr int kStepsPerTimePoint = 100;
constexpr int kReadSteps = 40;
constexpr int kChangedSteps = 60;
constexpr const char* kNoMemory = "Could not allocate memory for export";

/// Ends an export before its time.
struct ExportStop
{
    JobResult result;
};

[[noreturn]] void fail(const QString& text) { throw ExportStop{failedJob(text)}; }

/// The ending that numbers stand before; empty for a name with another one.
QString exportEnding(const QString& name)
{
    for (const QString& ending : exportFormat(name).endingList()) {
        if (name.endsWith(ending, Qt::CaseInsensitive))
            return name.right(ending.size());
    }
    return {};
}

QString withNumber(const QString& name, const QString& number)
{
    const QString ending = exportEnding(name);
    return name.chopped(ending.size()) + number + ending;
}

/// A slice of a box on an axis that is drawn with `shown` slices, as a voxel of its `size` voxels.
int voxelOfSlice(int slice, int shown, int size)
{
    return shown > size ? static_cast<int>(std::int64_t{slice} * size / shown) : slice;
}

/// An image that is not to be changed.
struct Source
{
    /// Null where the image keeps its voxels in memory.
    std::unique_ptr<ImageFile> own;
    const ImageFile* image;
};

/// Keeps what an image knows of its values while it lives, and lets the voxels read meanwhile go.
class KeptValues
{
public:
    explicit KeptValues(ImageFile& image) : m_image(image), m_known(image.takeKnown()) {}
    ~KeptValues()
    {
        m_image.freeStack();
        m_image.setKnown(std::move(m_known));
    }
    KeptValues(const KeptValues&) = delete;
    KeptValues& operator=(const KeptValues&) = delete;

private:
    ImageFile& m_image;
    KnownValues m_known;
};

/// The voxels of a file as they are shown, in a stack of their own.
std::unique_ptr<ImageFile> readAgain(ImageFile& image, const ExportJob& job)
{
    auto stack = std::make_unique<ImageFile>();
    bool isRead = false;
    {
        // What the image knows of itself describes what is shown, and stays, whatever the file is now.
        const KeptValues kept(image);
        image.errorList().clear();
        isRead = image.reRead();
        stack->attributes() = image.attributes();
        stack->setStackData(image.takeStack());
    }
    if (!isRead) {
        QStringList texts = image.errorList();
        texts.prepend(image.fileName() + QStringLiteral(" cannot be read again."));
        fail(texts.join('\n'));
    }
    job.transforms.applyTo(*stack);
    const auto shown = job.shownChanges.find(&image);
    if (shown != job.shownChanges.end() && !shown->second(*stack, {}))
        fail(image.fileName() + QStringLiteral(" cannot be filtered again."));
    return stack;
}

Source sourceOf(ImageFile& image, const ExportJob& job)
{
    if (!job.isOnDisk && image.isLoaded())
        return {nullptr, &image};
    std::unique_ptr<ImageFile> own = readAgain(image, job);
    const ImageFile* const stack = own.get();
    return {std::move(own), stack};
}

std::unique_ptr<ImageFile> copied(const ImageFile& image)
{
    auto stack = std::make_unique<ImageFile>();
    const ImageAttributes& a = stack->attributes() = image.attributes();
    const auto bytes = checkedProduct({a.x, a.y, a.z, a.channels, a.bytesPerSample()});
    VoxelBuffer voxels = allocateVoxels(bytes, kNoMemory);
    std::memcpy(voxels.data(), image.stackData(), static_cast<std::size_t>(bytes.value_or(0)));
    stack->setStackData(std::move(voxels));
    return stack;
}

/// One stack of the channels of several.
std::unique_ptr<ImageFile> interleaved(const std::vector<Source>& sources)
{
    auto stack = std::make_unique<ImageFile>();
    ImageAttributes& a = stack->attributes() = sources.front().image->attributes();
    std::vector<const std::byte*> channels;
    for (const Source& source : sources) {
        if (source.image->sampleCount() != sources.front().image->sampleCount() ||
            source.image->attributes().bytesPerSample() != a.bytesPerSample())
            fail(source.image->fileName() + QStringLiteral(" differs in size from the first channel."));
        channels.push_back(reinterpret_cast<const std::byte*>(source.image->stackData()));
    }
    a.channels = static_cast<int>(channels.size());
    VoxelBuffer voxels =
        allocateVoxels(checkedProduct({a.x, a.y, a.z, a.channels, a.bytesPerSample()}), kNoMemory);
    interleave(channels, sources.front().image->sampleCount(), a.bytesPerSample(), voxels.data());
    stack->setStackData(std::move(voxels));
    return stack;
}

class ExportRun
{
public:
    ExportRun(const ExportJob& job, const Progress& progress)
        : m_job(job), m_progress(progress), m_cancelOnly{{}, progress.cancel},
          m_names(exportFileNames(job.fileName, static_cast<int>(job.timePoints.size()), job.channels())),
          m_folder(stagingPattern(m_names.front().front()))
    {}
    void run();

private:
    void checkTargets() const;
    void writeTimePoint(std::size_t time);
    std::unique_ptr<ImageFile> copyOf(std::size_t time) const;
    void cropTo(ImageFile& stack) const;
    void correct(ImageFile& stack) const;
    QString staged(const QString& name) const { return m_folder.filePath(QFileInfo(name).fileName()); }
    void moveToPlace() const;
    void report(std::size_t time, int steps, const QString& message = {}) const;
    void checkCancelled() const
    {
        if (m_progress.cancelled())
            throw ExportStop{{JobOutcome::Cancelled, {}}};
    }

    const ExportJob& m_job;
    const Progress& m_progress;
    Progress m_cancelOnly;
    std::vector<QStringList> m_names;
    QTemporaryDir m_folder;
};

void ExportRun::run()
{
    checkTargets();
    if (!m_folder.isValid())
        fail(QFileInfo(m_job.fileName).absolutePath() + QStringLiteral(" cannot be written to."));
    for (std::size_t time = 0; time < m_names.size(); ++time) {
        checkCancelled();
        writeTimePoint(time);
    }
    checkCancelled();
    moveToPlace();
}

void ExportRun::checkTargets() const
{
    for (const QStringList& names : m_names) {
        for (const QString& name : names) {
            const QFileInfo info(name);
            if (info.exists() && !info.isFile())
                fail(name + QStringLiteral(" is not a plain file."));
            if (info.exists() && !info.isWritable())
                fail(name + QStringLiteral(" is read-only."));
        }
    }
}

void ExportRun::report(std::size_t time, int steps, const QString& message) const
{
    m_progress(message, static_cast<int>(time) * kStepsPerTimePoint + steps,
               static_cast<int>(m_names.size()) * kStepsPerTimePoint);
}

void ExportRun::writeTimePoint(std::size_t time)
{
    report(time, 0, QStringLiteral("Exporting ") + QFileInfo(m_names[time].first()).fileName());
    const std::unique_ptr<ImageFile> stack = copyOf(time);
    checkCancelled();
    report(time, kReadSteps);
    if (m_job.mode != ExportMode::ZCorrected)
        cropTo(*stack);
    if (m_job.mode != ExportMode::Core)
        correct(*stack);
    checkCancelled();
    report(time, kChangedSteps);
    QStringList names;
    for (const QString& name : m_names[time])
        names.append(staged(name));
    if (!stack->write(names, exportFormat(names.first()).type, true)) {
        fail(m_names[time].join('\n') + QStringLiteral(" could not be written.\n") +
             stack->writeErrors().join('\n'));
    }
    report(time, kStepsPerTimePoint);
}

std::unique_ptr<ImageFile> ExportRun::copyOf(std::size_t time) const
{
    std::vector<Source> sources;
    for (const auto& image : m_job.timePoints[time]) {
        sources.push_back(sourceOf(*image, m_job));
        checkCancelled();
    }
    std::unique_ptr<ImageFile> stack;
    if (sources.size() > 1)
        stack = interleaved(sources);
    else if (sources.front().own != nullptr)
        stack = std::move(sources.front().own);
    else
        stack = copied(*sources.front().image);
    stack->attributes().dimX = m_job.dimX;
    stack->attributes().dimY = m_job.dimY;
    stack->attributes().dimZ = m_job.dimZ;
    return stack;
}

void ExportRun::cropTo(ImageFile& stack) const
{
    const CutBox& box = m_job.box;
    for (const auto& [low, high] :
         {std::pair(box.xMin, box.xMax), std::pair(box.yMin, box.yMax), std::pair(box.zMin, box.zMax)})
        logDebug("cropping %d\t%d", low, high);
    if (!stack.crop(box.xMin, box.xMax, box.yMin, box.yMax, box.zMin, box.zMax, m_cancelOnly)) {
        checkCancelled();
        fail(QStringLiteral("There is nothing inside the cut planes."));
    }
}

void ExportRun::correct(ImageFile& stack) const
{
    std::vector<std::vector<double>> curves = m_job.curves;
    if (m_job.mode == ExportMode::AllChanges) {
        // The layers in front of the box are gone.
        for (std::vector<double>& curve : curves)
            curve.erase(curve.begin(),
                        curve.begin() + std::clamp<std::ptrdiff_t>(m_job.box.zMin, 0, std::ssize(curve)));
    }
    bakeCurves(stack, curves, m_cancelOnly);
}

void ExportRun::moveToPlace() const
{
    for (const QStringList& names : m_names) {
        for (const QString& name : names) {
            if (!moveOver(staged(name), name))
                fail(name + QStringLiteral(" could not be replaced."));
        }
    }
}

} // namespace

ExportJob exportJob(const VoxelArray& array, ExportMode mode, const QString& fileName)
{
    ExportJob job;
    job.fileName = fileName;
    job.mode = mode;
    const auto& images = array.images();
    const auto times = static_cast<std::size_t>(std::max(1, array.timePointCount()));
    const std::size_t perTime = std::max<std::size_t>(1, images.size() / times);
    for (std::size_t first = 0; first + perTime <= images.size(); first += perTime) {
        const auto begin = images.begin() + static_cast<std::ptrdiff_t>(first);
        job.timePoints.emplace_back(begin, begin + static_cast<std::ptrdiff_t>(perTime));
    }
    job.isOnDisk = array.conservesMemory();
    job.transforms = array.transforms();
    for (std::size_t i = 0; i < images.size(); ++i) {
        if (const VoxelChange& shown = array.shownChange(static_cast<int>(i)))
            job.shownChanges[images[i].get()] = shown;
    }
    job.box = boundedCut(array.cut, array);
    job.box.zMin = voxelOfSlice(job.box.zMin, array.finalDepth(), array.depth());
    job.box.zMax = voxelOfSlice(job.box.zMax, array.finalDepth(), array.depth());
    for (const Channel& channel : array.channels())
        job.curves.push_back(*channel.zCurve.curve());
    job.dimX = array.stack().dimX;
    job.dimY = array.stack().dimY;
    job.dimZ = array.stack().dimZ;
    return job;
}

std::vector<QStringList> exportFileNames(const QString& fileName, int timePoints, int channels)
{
    std::vector<QStringList> all;
    const bool isSplit = channels > 1 && exportFormat(fileName).files == StackFiles::PerChannel;
    for (int time = 0; time < timePoints; ++time) {
        const QString name =
            timePoints > 1 ? withNumber(fileName, QString::asprintf("%.3d", time)) : fileName;
        QStringList names;
        for (int c = 0; isSplit && c < channels; ++c)
            names.append(withNumber(name, QString::asprintf("_c%.2d", c)));
        all.push_back(isSplit ? names : QStringList{name});
    }
    return all;
}

JobResult runExportJob(const ExportJob& job, const Progress& progress)
{
    if (job.timePoints.empty() || job.fileName.isEmpty())
        return failedJob(QStringLiteral("There is nothing to export."));
    try {
        ExportRun(job, progress).run();
        return {};
    } catch (const ExportStop& stop) {
        return stop.result;
    } catch (const std::bad_alloc&) {
        return failedJob(QStringLiteral("There is not enough memory to export the stack."));
    }
}

} // namespace tirn
