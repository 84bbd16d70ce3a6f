// From a folder of single TIFF files to the stacks of a sequence.

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include "formats/names/filelists.h"
#include "formats/names/sequencenames.h"
#include "image/imagefile.h"

namespace tirn {
namespace {

constexpr int kTimes = 50;
constexpr int kSlices = 10;
constexpr int kSide = 64;

/// 500 files of one page.
class Folder
{
public:
    Folder()
    {
        ImageFile page(kSide, kSide, 1, 1, 8);
        for (int time = 0; time < kTimes; ++time) {
            for (int slice = 0; slice < kSlices; ++slice)
                page.write({path(time, slice)}, ImageType::TiffSeries);
        }
    }

    QString path(int time, int slice) const
    {
        return m_directory.filePath(QString("cell_t%1_z%2.tif")
                                        .arg(time, 3, 10, QLatin1Char('0'))
                                        .arg(slice, 2, 10, QLatin1Char('0')));
    }
    QString directory() const { return m_directory.path(); }

private:
    QTemporaryDir m_directory;
};

const Folder& folder()
{
    static const Folder made;
    return made;
}

SequenceStacks listAndGroup(const SequenceFields& fields)
{
    const QString first = folder().path(0, 0);
    const QString name = QFileInfo(first).fileName();
    const auto groups = digitGroups(name);
    const QStringList names = expandPattern(besideFile(first, sequencePattern(name, groups, fields)));
    return groupSequence(names, groups, fields);
}

/// Time points of ten slices each.
void groupFiles(benchmark::State& state)
{
    folder();
    for (auto _ : state) {
        if (listAndGroup({0, 1, SequenceFields::kNone}).lists.size() != kTimes)
            state.SkipWithError("another number of stacks");
    }
}
BENCHMARK(groupFiles)->Name("listAndGroup500Tiffs")->Unit(benchmark::kMillisecond);

/// Each name is a time point of its own: as many groups as there can be.
void groupTimePoints(benchmark::State& state)
{
    QStringList names;
    for (int i = 0; i < state.range(0); ++i)
        names.append(QString("cell_t%1.tif").arg(i, 5, 10, QLatin1Char('0')));
    const auto groups = digitGroups(names.first());
    for (auto _ : state) {
        const SequenceStacks stacks = groupSequence(names, groups, {0, -2, -2});
        if (stacks.timePoints() != static_cast<int>(state.range(0)))
            state.SkipWithError("another number of stacks");
    }
}
BENCHMARK(groupTimePoints)->Name("groupTimePoints")->Arg(500)->Arg(5000)->Unit(benchmark::kMillisecond);

/// The folder is listed, each file is looked at, and the sequence is grouped.
void dropFolder(benchmark::State& state)
{
    const QString directory = folder().directory();
    for (auto _ : state) {
        int single = 0;
        for (const QString& name : QDir(directory).entryList(QDir::Files, QDir::Name))
            single += ImageFile({directory + '/' + name}).attributes().type == ImageType::TiffSeries ? 1 : 0;
        if (single != kTimes * kSlices || listAndGroup({0, 1, SequenceFields::kNone}).lists.size() != kTimes)
            state.SkipWithError("another number of stacks");
    }
}
BENCHMARK(dropFolder)->Name("dropOf500SingleTiffs")->Unit(benchmark::kMillisecond);

/// The road of bytes alone: listing the folder and reading the first bytes of each file.
void limitOfDrop(benchmark::State& state)
{
    const QString directory = folder().directory();
    for (auto _ : state) {
        qint64 bytes = 0;
        for (const QString& name : QDir(directory).entryList(QDir::Files, QDir::Name)) {
            QFile file(directory + '/' + name);
            if (file.open(QIODevice::ReadOnly))
                bytes += file.read(64).size();
        }
        benchmark::DoNotOptimize(bytes);
    }
}
BENCHMARK(limitOfDrop)->Name("limitOfDropOf500SingleTiffs")->Unit(benchmark::kMillisecond);

} // namespace
} // namespace tirn
