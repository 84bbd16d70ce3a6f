#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include <QDateTime>
#include <QHash>
#include <QObject>
#include <QStringList>

#include "image/imageattributes.h"
#include "threads/jobthread.h"

namespace tirn {

class ProbeQuestion;

/// What the header of a stack says; type `Unknown` for none, with notes that say why.
ImageAttributes readStackHeader(const QStringList& names);

/// What files say of the stacks in them, read away from the interface thread.
///
/// What was read is kept as long as size and time of the first file of a stack stay, so that no file is read
/// twice. All functions are called on the thread that made it, and answers come there.
class Probes : public QObject
{
    Q_OBJECT

public:
    /// Reads what the files say, on the thread of the probes.
    using Reader = std::function<ImageAttributes(const QStringList& names)>;

    /// Files are read as stacks unless another reader stands in.
    explicit Probes(Reader reader = {});
    /// Waits for the file at hand.
    ~Probes() override;

    /// What was read of the stack that these files make; type `Unknown` where there is none. Nothing while it
    /// was not read as it is now.
    std::optional<ImageAttributes> known(const QStringList& names) const;
    /// Questions are open.
    bool isBusy() const { return !m_open.empty(); }

Q_SIGNALS:
    /// The last open question has been answered or given up.
    void becameIdle();

private:
    friend class ProbeQuestion;

    /// The state of a file that a result holds for.
    struct FileState
    {
        qint64 size = -1;
        QDateTime modified;
        bool operator==(const FileState&) const = default;
    };
    struct Result
    {
        FileState state;
        ImageAttributes attributes;
    };
    using Results = std::vector<std::pair<QStringList, Result>>;

    static FileState stateOf(const QStringList& names);
    Result read(const QStringList& names) const;
    std::vector<QStringList> unread(const std::vector<QStringList>& stacks) const;
    void open(ProbeQuestion& question);
    void close(ProbeQuestion& question);
    void readNext();
    void take(const Results& results);
    void answer();

    Reader m_reader;
    QHash<QStringList, Result> m_known;
    /// Not answered yet, the newest last.
    std::vector<ProbeQuestion*> m_open;
    /// The one whose files are being read; null when nobody waits for them any more.
    ProbeQuestion* m_reading = nullptr;
    /// From the start of a job until its results were taken.
    bool m_isReading = false;
    /// Last, so that it ends before what it reads for does.
    JobThread m_thread;
};

/// One thing that is asked again and again, for instance whenever a name changes. The newest question wins:
/// an older one is given up, and so is the last one together with this.
class ProbeQuestion
{
public:
    using Answered = std::function<void()>;

    explicit ProbeQuestion(Probes& probes) : m_probes(probes) {}
    ~ProbeQuestion() { cancel(); }
    ProbeQuestion(const ProbeQuestion&) = delete;
    ProbeQuestion& operator=(const ProbeQuestion&) = delete;

    /// Calls `answered` as soon as all stacks are known: at once where they are, otherwise from the event
    /// loop.
    void ask(std::vector<QStringList> stacks, Answered answered);
    void cancel();
    bool isOpen() const { return m_answered != nullptr; }
    /// What is known of a stack; type `Unknown` as long as nothing is.
    ImageAttributes known(const QStringList& names) const
    {
        return m_probes.known(names).value_or(ImageAttributes());
    }

private:
    friend class Probes;

    Probes& m_probes;
    std::vector<QStringList> m_stacks;
    Answered m_answered;
};

} // namespace tirn
