#pragma once

#include <atomic>
#include <mutex>
#include <optional>

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "glsupport/glrecorder.h"
#include "support/logcapture.h"
#include "support/picfile.h"
#include "support/plainstack.h"
#include "threads/stackloading.h"

namespace tirn::test {

/// What a load reported: "message value/total", with " done" at the end of the last one.
class ReportList
{
public:
    /// Collects progress; the finished stack is for others.
    LoadReport collector();
    /// Runs within each report, on the thread that loads.
    std::function<void(const QString& text)> onReport;

    /// All but the continuations of an encoder.
    QStringList steps() const;
    QStringList continuations() const;
    void clear();

private:
    mutable std::mutex m_mutex;
    QStringList m_steps;
    QStringList m_continuations;
};

/// One load on the thread of the test, whose GL calls go to a recorder alone.
class LoadRig : public ::testing::Test
{
protected:
    /// Loads what the description says.
    std::optional<LoadedStack> load();
    /// The last thing reported.
    QString lastStep() const { return reports.steps().isEmpty() ? QString() : reports.steps().last(); }

    QString path(const QString& name) const { return m_directory.filePath(name); }
    /// A Bio-Rad file in the test's directory.
    QString pic(const QString& name, int x = 6, int y = 5, int z = 4, int bits = 8) const;
    /// TIFF files of one layer each, a channel of a time point; all samples of layer k are value + k.
    QStringList tiffs(const QString& name, int layers, int value, int x = 6) const;
    /// `count` time points of one Bio-Rad file each.
    void describePics(int count);

    GlRecorder gl{GlRecorder::Mode::StandAlone};
    LogCapture log;
    ReportList reports;
    std::atomic<bool> cancelled = false;
    LoadSurroundings surroundings;
    LoadDescription description;

private:
    QTemporaryDir m_directory;
};

} // namespace tirn::test
