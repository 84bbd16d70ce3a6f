#include <QtGlobal>
#include <benchmark/benchmark.h>

int main(int argc, char** argv)
{
    // The log is no part of what is measured.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
