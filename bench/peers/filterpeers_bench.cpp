#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>

#include <benchmark/benchmark.h>
#include <itkImportImageFilter.h>
#include <itkMedianImageFilter.h>
#include <itkMultiThreaderBase.h>
#include <itkRankImageFilter.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "base/parallel.h"
#include "benchstacks.h"
#include "image/imagefile.h"

// The filters of filter_bench.cpp by other libraries, over the same voxels. Layers are handed out to all
// cores. Results go over memory that is there already or, with fresh:1, into fresh memory in the place of the
// last result, which is what our filters do.

namespace tirn::bench {
namespace {

constexpr int kX = 512;
constexpr int kY = 512;
constexpr int kZ = 50;

/// A stack to filter and room for the result.
struct PeerStacks
{
    explicit PeerStacks(int bits, int layers = kZ)
        : from(noiseStack(kX, kY, layers, 1, bits > 8 ? 16 : 8, 1 << bits)),
          between(kX, kY, layers, 1, from->attributes().bitDepth),
          to(kX, kY, layers, 1, from->attributes().bitDepth)
    {
        // One thread a layer is better than many threads a layer.
        cv::setNumThreads(1);
        // So that no run is the first to touch the memory.
        std::copy_n(from->stackData(), from->sampleCount() * from->attributes().bytesPerSample(),
                    between.stackData());
        std::copy_n(from->stackData(), from->sampleCount() * from->attributes().bytesPerSample(),
                    to.stackData());
    }

    static int type(const ImageFile& stack) { return stack.attributes().hasWords() ? CV_16UC1 : CV_8UC1; }
    static cv::Mat layer(ImageFile& stack, std::int64_t z)
    {
        return cv::Mat(kY, kX, type(stack),
                       stack.stackData() + z * kX * kY * stack.attributes().bytesPerSample());
    }
    /// The whole stack with a layer as a row.
    static cv::Mat layersAsRows(ImageFile& stack)
    {
        return cv::Mat(stack.attributes().z, kX * kY, type(stack), stack.stackData());
    }

    void prepareResult(bool fresh)
    {
        if (fresh)
            to.setStackData(VoxelBuffer(to.sampleCount() * to.attributes().bytesPerSample()));
    }

    std::unique_ptr<ImageFile> from;
    ImageFile between;
    ImageFile to;
};

using Filter = std::function<void(const cv::Mat& from, cv::Mat& to)>;

void filterLayers(ImageFile& from, ImageFile& to, const Filter& filter)
{
    parallelFor(0, kZ, 1, [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t z = begin; z < end; ++z) {
            cv::Mat result = PeerStacks::layer(to, z);
            filter(PeerStacks::layer(from, z), result);
        }
    });
}

void filterBlocksAlongZ(ImageFile& from, ImageFile& to, const Filter& filter)
{
    constexpr int kColumns = 2048;
    const cv::Mat all = PeerStacks::layersAsRows(from);
    const cv::Mat results = PeerStacks::layersAsRows(to);
    parallelFor(0, kX * kY / kColumns, 4, [&](std::int64_t begin, std::int64_t end) {
        for (auto i = static_cast<int>(begin); i < static_cast<int>(end); ++i) {
            const cv::Range columns(i * kColumns, (i + 1) * kColumns);
            cv::Mat result = results.colRange(columns);
            filter(all.colRange(columns), result);
        }
    });
}

/// How the second pass of a composed filter goes over the layers: in one call for all, the way it comes to
/// mind, or in blocks of columns that stay in the cache.
enum class AlongZ { None, AtOnce, InBlocks };

void filterAlongZ(ImageFile& from, ImageFile& to, AlongZ way, const Filter& filter)
{
    if (way == AlongZ::InBlocks)
        return filterBlocksAlongZ(from, to, filter);
    cv::Mat results = PeerStacks::layersAsRows(to);
    cv::setNumThreads(parallelThreads());
    filter(PeerStacks::layersAsRows(from), results);
    cv::setNumThreads(1);
}

void setVoxels(benchmark::State& state, int layers = kZ)
{
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * kX * kY * layers);
}

void medianOpenCv2D(benchmark::State& state)
{
    PeerStacks stacks(static_cast<int>(state.range(0)));
    const auto size = static_cast<int>(state.range(1));
    for (auto _ : state) {
        stacks.prepareResult(state.range(2) != 0);
        filterLayers(*stacks.from, stacks.to,
                     [size](const cv::Mat& from, cv::Mat& to) { cv::medianBlur(from, to, size); });
    }
    setVoxels(state);
}

void meanOpenCv(benchmark::State& state, AlongZ way)
{
    PeerStacks stacks(static_cast<int>(state.range(0)));
    const auto size = static_cast<int>(state.range(1));
    const auto blur = [](const cv::Size& window) {
        return [window](const cv::Mat& from, cv::Mat& to) {
            cv::blur(from, to, window, cv::Point(-1, -1), cv::BORDER_REPLICATE);
        };
    };
    for (auto _ : state) {
        stacks.prepareResult(state.range(2) != 0);
        filterLayers(*stacks.from, way != AlongZ::None ? stacks.between : stacks.to, blur({size, size}));
        if (way != AlongZ::None)
            filterAlongZ(stacks.between, stacks.to, way, blur({1, size}));
    }
    setVoxels(state);
}

void maxOpenCv(benchmark::State& state, AlongZ way)
{
    PeerStacks stacks(static_cast<int>(state.range(0)));
    const auto size = static_cast<int>(state.range(1));
    const auto dilate = [](const cv::Size& window) {
        const cv::Mat element = cv::getStructuringElement(cv::MORPH_RECT, window);
        return [element](const cv::Mat& from, cv::Mat& to) { cv::dilate(from, to, element); };
    };
    for (auto _ : state) {
        stacks.prepareResult(state.range(2) != 0);
        filterLayers(*stacks.from, way != AlongZ::None ? stacks.between : stacks.to, dilate({size, size}));
        if (way != AlongZ::None)
            filterAlongZ(stacks.between, stacks.to, way, dilate({1, size}));
    }
    setVoxels(state);
}

void meanOpenCv2D(benchmark::State& state) { meanOpenCv(state, AlongZ::None); }
void meanOpenCvAtOnce3D(benchmark::State& state) { meanOpenCv(state, AlongZ::AtOnce); }
void meanOpenCvInBlocks3D(benchmark::State& state) { meanOpenCv(state, AlongZ::InBlocks); }
void maxOpenCv2D(benchmark::State& state) { maxOpenCv(state, AlongZ::None); }
void maxOpenCvAtOnce3D(benchmark::State& state) { maxOpenCv(state, AlongZ::AtOnce); }
void maxOpenCvInBlocks3D(benchmark::State& state) { maxOpenCv(state, AlongZ::InBlocks); }

/// Fewer layers: a whole stack would take minutes.
constexpr int kItkLayers = 10;

template <class Sample, template <class, class> class FilterOf>
void medianItk(benchmark::State& state)
{
    using Image = itk::Image<Sample, 3>;
    using ItkFilter = FilterOf<Image, Image>;
    PeerStacks stacks(static_cast<int>(state.range(0)), kItkLayers);
    itk::MultiThreaderBase::SetGlobalDefaultNumberOfThreads(static_cast<unsigned>(parallelThreads()));
    const auto import = itk::ImportImageFilter<Sample, 3>::New();
    typename Image::SizeType size;
    size[0] = kX;
    size[1] = kY;
    size[2] = kItkLayers;
    import->SetRegion(typename Image::RegionType(size));
    import->SetImportPointer(reinterpret_cast<Sample*>(stacks.from->stackData()),
                             static_cast<itk::SizeValueType>(stacks.from->sampleCount()), false);
    for (auto _ : state) {
        const auto filter = ItkFilter::New();
        typename ItkFilter::RadiusType radius;
        radius.Fill(static_cast<unsigned>(state.range(1) / 2));
        filter->SetRadius(radius);
        filter->SetInput(import->GetOutput());
        filter->Update();
        benchmark::DoNotOptimize(filter->GetOutput()->GetBufferPointer());
    }
    setVoxels(state, kItkLayers);
}

template <class In, class Out>
using Rank = itk::RankImageFilter<In, Out>;
template <class In, class Out>
using Median = itk::MedianImageFilter<In, Out>;

template <template <class, class> class FilterOf>
void medianItkOfBits(benchmark::State& state)
{
    if (state.range(0) > 8)
        medianItk<std::uint16_t, FilterOf>(state);
    else
        medianItk<std::uint8_t, FilterOf>(state);
}

void medianItkRank3D(benchmark::State& state) { medianItkOfBits<Rank>(state); }
void medianItkMedian3D(benchmark::State& state) { medianItkOfBits<Median>(state); }

using Row = benchmark::internal::Benchmark;

void shared(Row* row) { row->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime(); }

void bytesAndWords(Row* row)
{
    row->ArgNames({"bits", "size", "fresh"})->ArgsProduct({{8, 16}, {3, 9, 31}, {0, 1}})->Apply(shared);
}

void medianRows2D(Row* row)
{
    row->ArgNames({"bits", "size", "fresh"});
    row->ArgsProduct({{8}, {3, 5, 9, 31, 63}, {0, 1}})->ArgsProduct({{16}, {3, 5}, {0, 1}})->Apply(shared);
}

// The faster of the two for each depth.

void rankRows(Row* row) { row->ArgNames({"bits", "size"})->ArgsProduct({{8}, {3, 5, 9}})->Apply(shared); }

void medianRows3D(Row* row)
{
    row->ArgNames({"bits", "size"})->ArgsProduct({{16}, {3, 5, 9}})->Apply(shared);
}

BENCHMARK(maxOpenCv2D)->Apply(bytesAndWords);
BENCHMARK(maxOpenCvAtOnce3D)->Apply(bytesAndWords);
BENCHMARK(maxOpenCvInBlocks3D)->Apply(bytesAndWords);
BENCHMARK(meanOpenCv2D)->Apply(bytesAndWords);
BENCHMARK(meanOpenCvAtOnce3D)->Apply(bytesAndWords);
BENCHMARK(meanOpenCvInBlocks3D)->Apply(bytesAndWords);
BENCHMARK(medianOpenCv2D)->Apply(medianRows2D);
BENCHMARK(medianItkRank3D)->Apply(rankRows);
BENCHMARK(medianItkMedian3D)->Apply(medianRows3D);

} // namespace
} // namespace tirn::bench
