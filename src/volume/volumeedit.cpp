#include "volume/volumeedit.h"

#include <algorithm>
#include <numeric>

#include "image/allocationerror.h"
#include "image/filters/pointfilters.h"
#include "volume/voxelsaside.h"

namespace tirn {

namespace {

constexpr int kStepsPerImage = 200;
constexpr int kStepsPerPart = 100;

/// Ends an edit before its time.
struct EditStop
{
    JobResult result;
};

/// Counts the two parts of each image as parts of the whole, and never backwards.
class PartProgress
{
public:
    PartProgress(const Progress& whole, int part, int total) : m_whole(whole), m_part(part), m_total(total) {}

    Progress progress()
    {
        return {[this](const QString& message, int done, int total) { report(message, done, total); },
                m_whole.cancel};
    }

private:
    void report(const QString& message, int done, int total)
    {
        if (total > 0)
            m_partTotal = total;
        m_done =
            std::max(m_done, std::clamp(static_cast<int>(std::int64_t{done} * kStepsPerPart / m_partTotal), 0,
                                        kStepsPerPart));
        m_whole(message, m_part * kStepsPerPart + m_done, m_total);
    }

    const Progress& m_whole;
    int m_part;
    int m_total;
    int m_partTotal = 100;
    int m_done = 0;
};

class EditRun : public AppliedEdit
{
public:
    EditRun(VoxelArray& array, VolumeEdit edit, EditServices services)
        : m_array(array), m_edit(std::move(edit)), m_services(std::move(services)), m_images(m_edit.images),
          m_transforms(array.transforms())
    {
        if (m_images.empty()) {
            m_images.resize(array.images().size());
            std::iota(m_images.begin(), m_images.end(), 0);
        }
    }
    JobResult run();
    /// To be taken back later, without progress or a way to cancel.
    void keep();
    JobResult takeBack(const TextureGate& gate) override;

private:
    /// An image that is no longer as it was.
    struct Touched
    {
        int number;
        /// It had no voxels, and has to lose them again.
        bool fromFile;
        /// What was known before the edit, once it was forgotten.
        std::optional<KnownValues> known;
        bool isChanged = false;
        bool isEncoded = false;
        /// What its voxels went through after they were read, before the edit.
        VoxelChange shownBefore = nullptr;
    };
    JobResult changeAll();
    void changeImage(int number, Progress change, const Progress& encode);
    /// Returns what was known before.
    KnownValues load(int number, const Progress& progress);
    void applyTo(ImageFile& image, const Progress& progress);
    void finish();
    void takeAllBack(JobResult& result);
    bool takeImageBack(Touched& touched);
    bool showAgain(const Touched& touched);
    bool takeVoxelsBack(const Touched& touched);
    void checkCancelled() const
    {
        if (m_services.progress.cancelled())
            throw EditStop{{JobOutcome::Cancelled, {}}};
    }
    ImageFile& image(int number) const { return *m_array.images()[static_cast<std::size_t>(number)]; }
    void exclusively(const std::function<void()>& change) const
    {
        m_services.gate ? m_services.gate(change) : change();
    }

    VoxelArray& m_array;
    VolumeEdit m_edit;
    EditServices m_services;
    std::vector<int> m_images;
    DataTransforms m_transforms;
    std::vector<Touched> m_touched;
    VoxelsAside m_aside;
};

JobResult EditRun::run()
{
    const VoxelWork work(m_array, m_images);
    exclusively([this] { m_array.setTransforms(m_transforms ^ m_edit.toggles); });
    JobResult result = changeAll();
    if (result.outcome == JobOutcome::Done)
        finish();
    else
        takeAllBack(result);
    return result;
}

JobResult EditRun::changeAll()
{
    try {
        const int total = kStepsPerImage * static_cast<int>(m_images.size());
        int part = 0;
        for (const int number : m_images) {
            checkCancelled();
            PartProgress change(m_services.progress, part++, total);
            PartProgress encode(m_services.progress, part++, total);
            changeImage(number, change.progress(), encode.progress());
        }
        checkCancelled();
        return {};
    } catch (const EditStop& stop) {
        return stop.result;
    } catch (const AllocationError& error) {
        return failedJob(QLatin1String(error.what()));
    } catch (const std::bad_alloc&) {
        return failedJob(QStringLiteral("There is not enough memory."));
    }
}

void EditRun::changeImage(int number, Progress change, const Progress& encode)
{
    ImageFile& image = this->image(number);
    const bool fromFile = m_array.conservesMemory() || !image.isLoaded();
    std::optional<KnownValues> known;
    if (fromFile)
        known = load(number, change);
    m_touched.push_back({number, fromFile, std::move(known)});
    // What was read again has gone through all transforms already.
    if (!fromFile || !m_edit.toggles.any())
        applyTo(image, change);
    checkCancelled();
    image.stats(0);
    if (number == m_images.back())
        exclusively([this] { m_array.copyStatistics(); });
    m_touched.back().isEncoded = true;
    if (m_array.reencode(number, encode, m_services.gate))
        return;
    checkCancelled();
    throw EditStop{failedJob(QStringLiteral("Could not allocate memory for slice"))};
}

KnownValues EditRun::load(int number, const Progress& progress)
{
    ImageFile& image = this->image(number);
    KnownValues known = image.takeKnown();
    image.errorList().clear();
    image.freeStack();
    try {
        if (m_array.loadVoxels(number, progress))
            return known;
    } catch (...) {
        image.setKnown(std::move(known));
        throw;
    }
    image.setKnown(std::move(known));
    QStringList texts = image.errorList();
    texts.prepend(image.fileName() + QStringLiteral(" cannot be read again."));
    throw EditStop{failedJob(texts.join('\n'))};
}

void EditRun::applyTo(ImageFile& image, const Progress& progress)
{
    const bool keepsVoxels = !m_edit.takeBack && !m_touched.back().fromFile;
    ReplacedVoxels replaced;
    image.keepReplacedIn(&replaced);
    bool isDone = false;
    try {
        isDone = m_edit.apply(image, progress);
    } catch (...) {
        image.keepReplacedIn(nullptr);
        throw;
    }
    image.keepReplacedIn(nullptr);
    if (!m_touched.back().fromFile)
        m_touched.back().known = std::move(replaced.known);
    if (!isDone) {
        checkCancelled();
        throw EditStop{failedJob(image.fileName() + QStringLiteral(" cannot be filtered in this way."))};
    }
    m_touched.back().isChanged = true;
    if (keepsVoxels)
        m_aside.put(std::move(replaced.voxels));
}

void EditRun::finish()
{
    for (Touched& touched : m_touched) {
        touched.shownBefore = m_array.shownChange(touched.number);
        if (touched.fromFile)
            m_array.setShownChange(touched.number, m_edit.toggles.any() ? nullptr : m_edit.apply);
    }
}

void EditRun::keep()
{
    m_services = {};
    m_aside.moveAllToFile();
}

JobResult EditRun::takeBack(const TextureGate& gate)
{
    const VoxelWork work(m_array, m_images);
    m_services.gate = gate;
    for (const Touched& touched : m_touched) {
        if (touched.fromFile)
            m_array.setShownChange(touched.number, touched.shownBefore);
    }
    JobResult result;
    takeAllBack(result);
    return result;
}

void EditRun::takeAllBack(JobResult& result)
{
    exclusively([this] { m_array.setTransforms(m_transforms); });
    bool isWhole = true;
    for (auto touched = m_touched.rbegin(); touched != m_touched.rend(); ++touched)
        isWhole = takeImageBack(*touched) && isWhole;
    if (!m_touched.empty())
        exclusively([this] { m_array.copyStatistics(); });
    if (!isWhole) {
        const QString text = QStringLiteral("What was changed could not be taken back everywhere.");
        result = failedJob(result.error.isEmpty() ? text : result.error + '\n' + text);
    }
}

bool EditRun::takeImageBack(Touched& touched)
{
    ImageFile& image = this->image(touched.number);
    bool isBack = true;
    try {
        isBack = touched.fromFile ? showAgain(touched) : takeVoxelsBack(touched);
    } catch (const std::bad_alloc&) {
        isBack = false;
    }
    if (touched.fromFile)
        image.freeStack();
    if (touched.known)
        image.setKnown(std::move(*touched.known));
    return isBack;
}

bool EditRun::showAgain(const Touched& touched)
{
    if (!touched.isEncoded)
        return true;
    ImageFile& image = this->image(touched.number);
    image.freeStack();
    const VoxelChange& shown = m_array.shownChange(touched.number);
    return m_array.loadVoxels(touched.number) && (!shown || shown(image, {})) &&
           m_array.reencode(touched.number, {}, m_services.gate);
}

bool EditRun::takeVoxelsBack(const Touched& touched)
{
    ImageFile& image = this->image(touched.number);
    if (touched.isChanged && m_edit.takeBack) {
        m_edit.takeBack(image);
    } else if (touched.isChanged) {
        VoxelBuffer voxels = m_aside.take();
        if (voxels.isNull())
            return false;
        image.setStackData(std::move(voxels));
    }
    return !touched.isEncoded || m_array.reencode(touched.number, {}, m_services.gate);
}

} // namespace

VolumeEdit flipEdit(char axis)
{
    VolumeEdit edit;
    // A flip takes so little time that it is done to the end.
    edit.apply = [axis](ImageFile& image, const Progress& progress) {
        image.flip(axis, {progress.report, nullptr});
        return true;
    };
    edit.takeBack = [axis](ImageFile& image) { image.flip(axis); };
    edit.toggles.flipX = axis == 'X';
    edit.toggles.flipY = axis == 'Y';
    edit.toggles.flipZ = axis == 'Z';
    return edit;
}

VolumeEdit invertEdit()
{
    VolumeEdit edit;
    edit.apply = [](ImageFile& image, const Progress& progress) {
        invert(image, {progress.report, nullptr});
        return true;
    };
    edit.takeBack = [](ImageFile& image) { invert(image); };
    edit.toggles.inverted = true;
    return edit;
}

JobResult applyEdit(VoxelArray& array, const VolumeEdit& edit, const EditServices& services,
                    std::unique_ptr<AppliedEdit>* applied)
{
    auto run = std::make_unique<EditRun>(array, edit, services);
    JobResult result = run->run();
    if (applied != nullptr && result.outcome == JobOutcome::Done) {
        run->keep();
        *applied = std::move(run);
    }
    return result;
}

} // namespace tirn
