#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <new>
#include <utility>

namespace tirn {

/// Zeroed memory for `bytes`; large blocks come straight from the system, whose pages cost nothing until they
/// are written. Throws std::bad_alloc.
void* takeHistogramMemory(std::size_t bytes);
void giveHistogramMemory(void* memory, std::size_t bytes) noexcept;

/// While one lives, this thread's large histograms are put on huge pages: for those whose counters will
/// nearly all be written.
class DenseHistograms
{
public:
    explicit DenseHistograms(bool dense);
    ~DenseHistograms();
    DenseHistograms(const DenseHistograms&) = delete;
    DenseHistograms& operator=(const DenseHistograms&) = delete;
};

/// Stands for an element that keeps what its memory holds.
struct AlreadyZero
{};

/// The allocator of histograms. A histogram of 65536 counters for each of some hundred layers is mostly
/// zeros; elements made from AlreadyZero leave them untouched.
template <class T>
class HistogramAllocator
{
public:
    using value_type = T;

    HistogramAllocator() = default;
    template <class U>
    HistogramAllocator(const HistogramAllocator<U>&) noexcept
    {}

    T* allocate(std::size_t count)
    {
        if (count > static_cast<std::size_t>(-1) / sizeof(T))
            throw std::bad_alloc();
        return static_cast<T*>(takeHistogramMemory(count * sizeof(T)));
    }
    void deallocate(T* memory, std::size_t count) noexcept { giveHistogramMemory(memory, count * sizeof(T)); }

    template <class U>
    void construct(U*, AlreadyZero) noexcept
    {}
    template <class U, class... Arguments>
    void construct(U* element, Arguments&&... arguments)
    {
        ::new (static_cast<void*>(element)) U(std::forward<Arguments>(arguments)...);
    }

    bool operator==(const HistogramAllocator&) const { return true; }
};

/// Iterates over as many AlreadyZero as wanted, for the range constructor of a vector.
class AlreadyZeroIterator
{
public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = AlreadyZero;
    using difference_type = std::ptrdiff_t;
    using pointer = const AlreadyZero*;
    using reference = AlreadyZero;

    explicit AlreadyZeroIterator(difference_type position) : m_position(position) {}
    AlreadyZero operator*() const { return {}; }
    AlreadyZeroIterator& operator++()
    {
        ++m_position;
        return *this;
    }
    AlreadyZeroIterator operator++(int) { return AlreadyZeroIterator(m_position++); }
    AlreadyZeroIterator& operator+=(difference_type count)
    {
        m_position += count;
        return *this;
    }
    difference_type operator-(const AlreadyZeroIterator& other) const
    {
        return m_position - other.m_position;
    }
    bool operator==(const AlreadyZeroIterator&) const = default;

private:
    difference_type m_position;
};

} // namespace tirn
