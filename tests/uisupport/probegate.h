#pragma once

#include <condition_variable>
#include <mutex>

#include <QStringList>
#include <QTest>
#include <QThread>
#include <gtest/gtest.h>

#include "threads/probes.h"

namespace tirn::test {

/// Stands in for a slow disk: while it is closed, whoever reads a file waits.
class ProbeGate
{
public:
    /// All files are stacks 7 voxels wide, unless another reader is to read them behind the gate.
    Probes::Reader reader(Probes::Reader behind = sevenWide)
    {
        return [this, behind = std::move(behind)](const QStringList& names) {
            pass(names.first());
            return behind(names);
        };
    }
    void close()
    {
        const std::lock_guard lock(m_mutex);
        m_isClosed = true;
    }
    void open()
    {
        const std::lock_guard lock(m_mutex);
        m_isClosed = false;
        m_changed.notify_all();
    }
    /// Until someone stands before the closed gate; events are delivered meanwhile.
    void waitForReader()
    {
        ASSERT_TRUE(QTest::qWaitFor([this] {
            const std::lock_guard lock(m_mutex);
            return m_isWaiting;
        }));
    }
    QStringList readNames() const
    {
        const std::lock_guard lock(m_mutex);
        return m_names;
    }
    QThread* readOn() const
    {
        const std::lock_guard lock(m_mutex);
        return m_thread;
    }

private:
    static ImageAttributes sevenWide(const QStringList& /*names*/)
    {
        ImageAttributes attributes;
        attributes.type = ImageType::BioRad;
        attributes.fileX = 7;
        return attributes;
    }
    void pass(const QString& name)
    {
        std::unique_lock lock(m_mutex);
        m_names.append(name);
        m_thread = QThread::currentThread();
        m_isWaiting = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return !m_isClosed; });
        m_isWaiting = false;
    }

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    QStringList m_names;
    QThread* m_thread = nullptr;
    bool m_isClosed = false;
    bool m_isWaiting = false;
};

} // namespace tirn::test
