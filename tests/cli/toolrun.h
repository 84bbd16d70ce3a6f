#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace tirn::test {

/// What the tool answered.
struct Outcome
{
    int code = -1;
    QByteArray out;
    QString err;
};

/// Runs the built tool.
inline Outcome tool(const QStringList& arguments)
{
    QProcess process;
    process.start(TIRN_TOOL, arguments);
    process.waitForFinished(-1);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput(), QString::fromLocal8Bit(process.readAllStandardError())};
}

} // namespace tirn::test
