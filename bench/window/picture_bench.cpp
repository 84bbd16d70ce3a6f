// Pictures outside the window: drawn, read back and written, beside the bare frame function.

#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include "gl/gltable.h"
#include "gl/pbuffer.h"
#include "pictures/picturewriter.h"
#include "render/picturemaker.h"
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
    window.widget().changeView([](ViewState& view) {
        view.rotX = 20;
        view.rotY = 30;
    });
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

BENCHMARK(bareFrame)->Arg(2048)->Arg(4096)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(picture)->Arg(2048)->Arg(4096)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(pictureToPng)->Arg(2048)->Arg(4096)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
} // namespace tirn::bench
