#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "image/targetclones.h"

namespace tirn {

/// The larger or the smaller of two samples, and what loses against everything.
struct Larger
{
    template <class Sample>
    static Sample of(Sample a, Sample b)
    {
        return a > b ? a : b;
    }
    template <class Sample>
    static constexpr Sample start()
    {
        return Sample{0};
    }
};

struct Smaller
{
    template <class Sample>
    static Sample of(Sample a, Sample b)
    {
        return a < b ? a : b;
    }
    template <class Sample>
    static constexpr Sample start()
    {
        return static_cast<Sample>(~Sample{0});
    }
};

template <class Choice, class Sample>
TIRN_INLINE void chooseRow(const Sample* a, const Sample* b, std::int64_t count, Sample* to)
{
#pragma GCC ivdep
    for (std::int64_t i = 0; i < count; ++i)
        to[i] = Choice::of(a[i], b[i]);
}

/// The extremum of `window` neighbouring rows for a sequence of rows, at three comparisons a sample whatever
/// the window (van Herk and Gil-Werman): rows come in blocks of the window's size, and each window is the end
/// of one block and the beginning of the next.
template <class Choice, class Sample>
class RunningExtremum
{
public:
    RunningExtremum(int window, std::int64_t count)
        : m_window(window), m_count(count), m_block(static_cast<std::size_t>(window * count)),
          m_front(static_cast<std::size_t>(count))
    {}

    /// Where the next row goes before push().
    Sample* slot() { return row(static_cast<int>(m_rows % m_window)); }

    /// Takes the row in slot() in. From the window-th row on, `to` becomes the extremum of the last `window`
    /// rows; it is not touched before. True when it was.
    TIRN_INLINE bool push(Sample* to)
    {
        const auto place = static_cast<int>(m_rows % m_window);
        const Sample* in = row(place);
        ++m_rows;
        if (place == 0)
            std::copy_n(in, m_count, m_front.data());
        else
            chooseRow<Choice>(m_front.data(), in, m_count, m_front.data());
        const bool full = m_rows >= m_window;
        if (full && place == m_window - 1)
            std::copy_n(m_front.data(), m_count, to);
        else if (full)
            chooseRow<Choice>(row(place + 1), m_front.data(), m_count, to);
        if (place == m_window - 1) {
            for (int i = m_window - 2; i >= 0; --i)
                chooseRow<Choice>(row(i), row(i + 1), m_count, row(i));
        }
        return full;
    }

private:
    Sample* row(int index) { return m_block.data() + index * m_count; }

    int m_window;
    std::int64_t m_count;
    std::int64_t m_rows = 0;
    /// The rows of the present block up to the last one pushed, then the ends of the block before it: the
    /// extremum of a row and all behind it in its block.
    std::vector<Sample> m_block;
    /// The extremum of the present block so far.
    std::vector<Sample> m_front;
};

/// What a row of extremumAlongRow has behind its samples, so that it works on whole vectors only.
constexpr std::int64_t kExtremumSlack = 64;

/// `to[i]` becomes the extremum of row[i], row[i + step], ... for `window` samples, for i below `count`. The
/// row has count + (window - 1) * step samples and kExtremumSlack more of any value, and is overwritten.
/// Spans double until they reach half the window.
template <class Choice, class Sample>
TIRN_INLINE void extremumAlongRow(Sample* row, std::int64_t count, int window, std::int64_t step, Sample* to)
{
    std::int64_t length = count + (window - 1) * step;
    int span = 1;
    for (; span * 2 <= window; span *= 2) {
        length -= span * step;
        const std::int64_t whole = (length + kExtremumSlack - 1) / kExtremumSlack * kExtremumSlack;
        chooseRow<Choice>(row, row + span * step, whole, row);
    }
    chooseRow<Choice>(row, row + (window - span) * step, count, to);
}

} // namespace tirn
