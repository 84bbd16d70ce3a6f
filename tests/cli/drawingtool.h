#pragma once

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "support/picfile.h"

namespace tirn {

/// Runs a subcommand of the tool that draws, where there is neither a display nor a user's folder.
class DrawingTool : public ::testing::Test
{
protected:
    struct Outcome
    {
        int code = -1;
        QByteArray out;
        QString err;
    };

    QString path(const QString& name) const { return m_directory.filePath(name); }
    QStringList files() const
    {
        return QDir(m_directory.path())
            .entryList(QDir::Files | QDir::Hidden | QDir::Dirs | QDir::NoDotAndDotDot);
    }
    /// Neither a display nor a user's settings are there; `home` is where caches would go.
    QProcessEnvironment environment() const
    {
        QProcessEnvironment all = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR", "XDG_CACHE_HOME",
                                 "XDG_CONFIG_HOME", "QT_QPA_PLATFORM"})
            all.remove(name);
        all.insert("HOME", m_home.path());
        return all;
    }
    Outcome program(const QString& name, const QStringList& arguments) const
    {
        QProcess process;
        process.setProcessEnvironment(environment());
        process.setWorkingDirectory(m_directory.path());
        process.start(name, arguments);
        process.waitForFinished(-1);
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                process.readAllStandardOutput(), QString::fromLocal8Bit(process.readAllStandardError())};
    }
    /// One channel of 8 x 8 x 8 voxels, bright in the half of low x.
    QString pic(const QString& name = "in.pic", bool brightLow = true) const
    {
        test::PicFile file;
        file.x = file.y = file.z = 8;
        file.value = [brightLow](int x, int, int) { return (x < 4) == brightLow ? 200 : 0; };
        return file.save(path(name));
    }

    QTemporaryDir m_directory;
    QTemporaryDir m_home;
};

} // namespace tirn
