#include <QApplication>
#include <QSurfaceFormat>
#include <benchmark/benchmark.h>

#include "gl/glcontext.h"
#include "window/benchwindow.h"

int main(int argc, char** argv)
{
    // The log is no part of what is measured.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    QSurfaceFormat::setDefaultFormat(tirn::surfaceFormat());
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    tirn::bench::closeBenchWindow();
    return 0;
}
