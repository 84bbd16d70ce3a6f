#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

#include "threads/loaddescription.h"
#include "threads/loadreport.h"
#include "threads/loadsurroundings.h"
#include "threads/readahead.h"

namespace tirn {

/// One load: reads the stacks of a description and makes a volume of them, in the current context.
///
/// While a stack is encoded the next one is read on a thread of its own; what is reported keeps the order of
/// the stacks all the same. A cancelled load ends with the stack at hand and closes the progress without a
/// text.
class StackLoading
{
public:
    /// `report` and `cancelled` outlive this.
    StackLoading(LoadDescription description, LoadSurroundings surroundings, const LoadReport& report,
                 const std::atomic<bool>& cancelled);

    /// The finished stack, complete for other contexts; nothing when the load failed or was cancelled, which
    /// is reported.
    std::optional<LoadedStack> run();

private:
    using Image = std::shared_ptr<ImageFile>;
    /// Reads element i; on the thread that reads ahead, too.
    using ElementReader = std::function<Image(int)>;

    std::optional<LoadedStack> load();
    bool readSession();
    void makeArray();
    void findFileType();
    void chooseNamedFiles();
    void logNamedStep(const char* text) const;
    bool dispatch();
    bool runRoutine(void (StackLoading::*routine)());
    void loadStacks();
    void loadRaw();
    void loadTiffSeries();
    void loadElements(ElementReader reader);
    void loadNamedChannels();
    void loadChannelSeries();
    Image mergedChannels(int time);
    void warnOfMissingElement(int index) const;

    Image readStack(const QStringList& names) const;
    Image readProbed(const QStringList& names) const;
    Image readMerged(const QStringList& names) const;
    void readLayers(const Image& image) const;
    void refuseDepth(const Image& image) const;
    void reduce(ImageFile& image) const;
    int factor() const;

    QStringList element(int index) const;
    int elements() const { return static_cast<int>(m_description.filesToLoad.size()); }
    Image take(int index);
    void readAhead(int index);
    void append(const Image& image);
    void encode(const Image& image);
    bool keepGoing() const { return !m_cancelled; }

    void report(const QString& message, int value, int total, bool finished);
    void loadFailed(const QString& name);
    void finish(LoadedStack& loaded);

    LoadDescription m_description;
    LoadSurroundings m_surroundings;
    const LoadReport& m_report;
    const std::atomic<bool>& m_cancelled;
    std::unique_ptr<VoxelArray> m_array;
    ElementReader m_reader;
    /// The stack at hand, for a failure that does not say which one it was.
    Image m_current;
    int m_progress = 0;
    int m_progressTotal = 0;
    /// Time points that are read and encoded whole.
    int m_complete = 0;
    /// The progress that the user sees has been closed.
    bool m_closed = false;
    /// Last, so that it ends before what it reads with does.
    ReadAhead m_readAhead;
};

} // namespace tirn
