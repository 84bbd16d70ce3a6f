// Pictures outside the window: drawn, read back and written, beside the bare frame function.

#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include "base/stopwatch.h"
#include "gl/gltable.h"
#include "gl/pbuffer.h"
#include "pictures/picturewriter.h"
#include "render/offscreenframes.h"
#include "render/picturemaker.h"
#include "scene/keyframeview.h"
#include "volume/volumemaking.h"
#include "window/benchwindow.h"

namespace tirn::bench {
namespace {

QSize sizeOf(const benchmark::State& state)
{
    return {static_cast<int>(state.range(0)), static_cast<int>(state.range(0))};
}

/// The volume of all rows, seen along a slanted direction.
BenchWindow& shownWindow()
{
    BenchWindow& window = benchWindow();
    window.closeAll();
    window.show(256, 256, 64, 1, GL_TEXTURE_2D);
    window.widget().changeVoxelRotation(20, 30, 0);
    window.widget().stopAndWait();
    window.hidden().makeCurrent();
    return window;
}

void bareFrame(benchmark::State& state)
{
    BenchWindow& window = shownWindow();
    PBuffer buffer("rgba", true);
    const QSize size = sizeOf(state);
    buffer.Initialize(size.width(), size.height(), false, true);
    buffer.Activate();
    GLThread& thread = window.widget().renderThread();
    thread.setupBuffer();
    for (auto _ : state) {
        thread.drawPicture({size, QRect(QPoint(0, 0), size)});
        gl().Finish();
    }
    buffer.Deactivate();
}

void picture(benchmark::State& state)
{
    BenchWindow& window = shownWindow();
    PictureMaker maker(window.widget().renderThread());
    for (auto _ : state)
        benchmark::DoNotOptimize(maker.draw({sizeOf(state)}).constBits());
}

void pictureToPng(benchmark::State& state)
{
    BenchWindow& window = shownWindow();
    const QImage drawn = PictureMaker(window.widget().renderThread()).draw({sizeOf(state)});
    const QTemporaryDir folder;
    for (auto _ : state)
        savePng(drawn, folder.filePath("picture.png"), 300);
}

/// A movie of 1,000 frames: the last hundred must not cost more than the first.
void movieOfAThousandFrames(benchmark::State& state)
{
    constexpr int frameCount = 1000;
    constexpr int group = 100;
    QString error;
    const auto stage = OffscreenStage::withoutDisplay(error);
    if (stage == nullptr) {
        state.SkipWithError(qPrintable(error));
        return;
    }
    auto array = std::make_unique<VoxelArray>(stage->volumeOptions());
    array->appendImage(benchBlobs(64, 64, 32, 1));
    completeVolume(*array, {});
    stage->show(std::move(array));
    stage->scene.palettes.push_back(
        std::make_unique<Palette>(QColor(255, 160, 60), 8, &stage->paletteTables()));
    const QTemporaryDir folder;
    const QSize size(256, 256);
    double first = 0;
    double last = 0;
    for (auto _ : state) {
        PredefinedMovie movie;
        movie.settings.rotation = {MovieAxis::Y, frameCount / group, group, false};
        movie.start = shownKeyFrame(stage->scene, true);
        MovieJob job;
        job.steps = regularSteps(movie);
        job.start = movie.firstPose();
        job.total = movie.frames();
        OffscreenFrames frames(*stage, size);
        AviSink sink(folder.filePath("movie.avi"), size.width(), size.height(), 15);
        Stopwatch watch;
        const Progress progress{[&](const QString&, int done, int) {
            if (done == group)
                first = watch.restart();
            else if (done == frameCount - group)
                watch.restart();
            else if (done == frameCount)
                last = watch.restart();
        }};
        runMovie(job, frames, &sink, progress);
    }
    state.counters["firstHundredMs"] = first * 1000 / group;
    state.counters["lastHundredMs"] = last * 1000 / group;
}

BENCHMARK(movieOfAThousandFrames)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(bareFrame)->Arg(2048)->Arg(4096)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(picture)->Arg(2048)->Arg(4096)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(pictureToPng)->Arg(2048)->Arg(4096)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
} // namespace tirn::bench
