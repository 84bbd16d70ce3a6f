#include "image/interleave.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "base/parallel.h"
#include "image/targetclones.h"

namespace tirn {

namespace {

/// Samples a channel that one thread handles at a time.
constexpr std::int64_t kGrain = std::int64_t{1} << 18;

template <int Channels, class Sample>
TIRN_INLINE void weave(const Sample* const* channels, std::int64_t count, Sample* __restrict destination)
{
    const Sample* sources[Channels];
    std::copy_n(channels, Channels, sources);
    for (std::int64_t i = 0; i < count; ++i) {
        for (int c = 0; c < Channels; ++c)
            destination[i * Channels + c] = sources[c][i];
    }
}

template <class Sample>
TIRN_INLINE void weaveAny(const Sample* const* channels, int channelCount, std::int64_t count,
                          Sample* __restrict destination)
{
    switch (channelCount) {
    case 1:
        std::memcpy(destination, channels[0], static_cast<std::size_t>(count) * sizeof(Sample));
        return;
    case 2:
        return weave<2>(channels, count, destination);
    case 3:
        return weave<3>(channels, count, destination);
    case 4:
        return weave<4>(channels, count, destination);
    default:
        for (int c = 0; c < channelCount; ++c) {
            for (std::int64_t i = 0; i < count; ++i)
                destination[i * channelCount + c] = channels[c][i];
        }
    }
}

template <int Channels, class Sample>
TIRN_INLINE void unweave(const Sample* source, std::int64_t count, Sample* const* channels)
{
    // One pass a channel: a strided load and a plain store is what compilers turn into whole vectors.
    for (int c = 0; c < Channels; ++c) {
        Sample* __restrict destination = channels[c];
        for (std::int64_t i = 0; i < count; ++i)
            destination[i] = source[i * Channels + c];
    }
}

template <class Sample>
TIRN_INLINE void unweaveAny(const Sample* source, int channelCount, std::int64_t count,
                            Sample* const* channels)
{
    switch (channelCount) {
    case 1:
        std::memcpy(channels[0], source, static_cast<std::size_t>(count) * sizeof(Sample));
        return;
    case 2:
        return unweave<2>(source, count, channels);
    case 3:
        return unweave<3>(source, count, channels);
    case 4:
        return unweave<4>(source, count, channels);
    default:
        for (int c = 0; c < channelCount; ++c) {
            for (std::int64_t i = 0; i < count; ++i)
                channels[c][i] = source[i * channelCount + c];
        }
    }
}

using Bytes = std::uint8_t;
using Words = std::uint16_t;

TIRN_TARGET_CLONES void weaveBytes(const Bytes* const* channels, int channelCount, std::int64_t count,
                                   Bytes* to)
{
    weaveAny(channels, channelCount, count, to);
}

TIRN_TARGET_CLONES void weaveWords(const Words* const* channels, int channelCount, std::int64_t count,
                                   Words* to)
{
    weaveAny(channels, channelCount, count, to);
}

TIRN_TARGET_CLONES void unweaveBytes(const Bytes* from, int channelCount, std::int64_t count,
                                     Bytes* const* to)
{
    unweaveAny(from, channelCount, count, to);
}

TIRN_TARGET_CLONES void unweaveWords(const Words* from, int channelCount, std::int64_t count,
                                     Words* const* to)
{
    unweaveAny(from, channelCount, count, to);
}

TIRN_TARGET_CLONES void swapPairs(std::uint16_t* words, std::int64_t count)
{
    for (std::int64_t i = 0; i < count; ++i)
        words[i] = static_cast<std::uint16_t>(words[i] << 8 | words[i] >> 8);
}

/// The channels' pointers moved on by `begin` samples.
template <class Sample, class Pointer, class Span>
std::vector<Pointer> advanced(Span channels, std::int64_t begin)
{
    std::vector<Pointer> pointers;
    for (auto* channel : channels)
        pointers.push_back(reinterpret_cast<Pointer>(channel) + begin);
    return pointers;
}

template <class Sample, class Kernel>
void interleaveWith(Kernel kernel, std::span<const std::byte* const> channels, std::int64_t count, void* to)
{
    const int channelCount = static_cast<int>(channels.size());
    auto* destination = static_cast<Sample*>(to);
    parallelFor(0, count, kGrain, [&](std::int64_t begin, std::int64_t end) {
        const auto sources = advanced<Sample, const Sample*>(channels, begin);
        kernel(sources.data(), channelCount, end - begin, destination + begin * channelCount);
    });
}

template <class Sample, class Kernel>
void deinterleaveWith(Kernel kernel, const void* from, std::int64_t count,
                      std::span<std::byte* const> channels)
{
    const int channelCount = static_cast<int>(channels.size());
    const auto* source = static_cast<const Sample*>(from);
    parallelFor(0, count, kGrain, [&](std::int64_t begin, std::int64_t end) {
        const auto destinations = advanced<Sample, Sample*>(channels, begin);
        kernel(source + begin * channelCount, channelCount, end - begin, destinations.data());
    });
}

} // namespace

void interleave8(std::span<const std::byte* const> channels, std::int64_t count, void* destination)
{
    interleaveWith<Bytes>(weaveBytes, channels, count, destination);
}

void interleave16(std::span<const std::byte* const> channels, std::int64_t count, void* destination)
{
    interleaveWith<Words>(weaveWords, channels, count, destination);
}

void deinterleave8(const void* source, std::int64_t count, std::span<std::byte* const> channels)
{
    deinterleaveWith<Bytes>(unweaveBytes, source, count, channels);
}

void deinterleave16(const void* source, std::int64_t count, std::span<std::byte* const> channels)
{
    deinterleaveWith<Words>(unweaveWords, source, count, channels);
}

void swapBytes(void* buffer, std::int64_t count, int size)
{
    auto* bytes = static_cast<std::uint8_t*>(buffer);
    parallelFor(0, count, kGrain, [&](std::int64_t begin, std::int64_t end) {
        if (size == 2 && reinterpret_cast<std::uintptr_t>(bytes) % 2 == 0) {
            swapPairs(reinterpret_cast<std::uint16_t*>(bytes) + begin, end - begin);
            return;
        }
        for (std::int64_t i = begin; i < end; ++i)
            std::reverse(bytes + i * size, bytes + (i + 1) * size);
    });
}

} // namespace tirn
