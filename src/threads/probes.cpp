#include "threads/probes.h"

#include <algorithm>
#include <utility>

#include <QFileInfo>

#include "image/imagefile.h"

namespace tirn {

namespace {

/// More than any stack that is opened has; what is beyond is read anew when it is asked for.
constexpr int kMostKept = 10000;

} // namespace

ImageAttributes readStackHeader(const QStringList& names)
{
    try {
        const ImageFile image(names);
        ImageAttributes attributes = image.attributes();
        if (attributes.type == ImageType::Unknown && image.hasReader())
            attributes.notes = image.errorList();
        return attributes;
    } catch (const std::exception&) {
        return {};
    }
}

Probes::Probes(Reader reader) : m_reader(reader ? std::move(reader) : readStackHeader), m_thread(JobReport())
{}

Probes::~Probes() { m_thread.stopAndWait(); }

/// Only plain files have one: a pipe would never answer.
Probes::FileState Probes::stateOf(const QStringList& names)
{
    const QFileInfo file(names.value(0));
    return file.isFile() ? FileState{file.size(), file.lastModified()} : FileState();
}

/// On the thread that reads.
Probes::Result Probes::read(const QStringList& names) const
{
    // Before it is read, so that what changes meanwhile is read again.
    const FileState state = stateOf(names);
    return {state, state == FileState() ? ImageAttributes() : m_reader(names)};
}

std::optional<ImageAttributes> Probes::known(const QStringList& names) const
{
    const FileState state = stateOf(names);
    if (state == FileState())
        return ImageAttributes();
    const auto found = m_known.constFind(names);
    if (found == m_known.constEnd() || found->state != state)
        return std::nullopt;
    return found->attributes;
}

std::vector<QStringList> Probes::unread(const std::vector<QStringList>& stacks) const
{
    std::vector<QStringList> rest;
    std::copy_if(stacks.begin(), stacks.end(), std::back_inserter(rest),
                 [this](const QStringList& names) { return !known(names); });
    return rest;
}

void Probes::open(ProbeQuestion& question)
{
    m_open.push_back(&question);
    readNext();
}

void Probes::close(ProbeQuestion& question)
{
    if (std::erase(m_open, &question) == 0)
        return;
    if (m_reading == &question) {
        m_reading = nullptr;
        m_thread.cancel();
    }
    if (!isBusy())
        Q_EMIT becameIdle();
}

/// Begins with the newest question, whose user waits now.
void Probes::readNext()
{
    if (m_isReading)
        return;
    if (m_known.size() > kMostKept)
        m_known.clear();
    std::vector<QStringList> wanted;
    for (auto question = m_open.rbegin(); question != m_open.rend() && wanted.empty(); ++question) {
        wanted = unread((*question)->m_stacks);
        m_reading = *question;
    }
    if (wanted.empty())
        return;
    m_isReading = true;
    m_thread.startJob([this, stacks = std::move(wanted)](const Progress& progress) {
        Results results;
        for (const QStringList& names : stacks) {
            if (progress.cancelled())
                break;
            results.emplace_back(names, read(names));
        }
        QMetaObject::invokeMethod(this, [this, results = std::move(results)] { take(results); });
        return JobResult{JobOutcome::Done, {}};
    });
}

void Probes::take(const Results& results)
{
    m_thread.wait();
    m_isReading = false;
    m_reading = nullptr;
    for (const auto& [names, result] : results)
        m_known.insert(names, result);
    answer();
}

/// Answers may ask again, end their questions, or wait in a loop of their own, so that nothing is held on to
/// meanwhile.
void Probes::answer()
{
    for (;;) {
        const auto complete =
            std::find_if(m_open.begin(), m_open.end(), [this](const ProbeQuestion* question) {
                return unread(question->m_stacks).empty();
            });
        if (complete == m_open.end())
            break;
        const ProbeQuestion::Answered answered = std::exchange((*complete)->m_answered, nullptr);
        m_open.erase(complete);
        readNext();
        answered();
    }
    readNext();
    if (!isBusy())
        Q_EMIT becameIdle();
}

void ProbeQuestion::ask(std::vector<QStringList> stacks, Answered answered)
{
    cancel();
    if (m_probes.unread(stacks).empty()) {
        answered();
        return;
    }
    m_stacks = std::move(stacks);
    m_answered = std::move(answered);
    m_probes.open(*this);
}

void ProbeQuestion::cancel()
{
    m_probes.close(*this);
    m_answered = nullptr;
}

} // namespace tirn
