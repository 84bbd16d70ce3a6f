#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

namespace tirn {

constexpr std::size_t kVectorAlignment = 64;

/// Puts a vector's elements where no access to a whole vector of the processor's crosses a cache line.
template <class T>
struct AlignedAllocator
{
    using value_type = T;

    AlignedAllocator() = default;
    template <class U>
    AlignedAllocator(const AlignedAllocator<U>&) noexcept
    {}
    T* allocate(std::size_t count)
    {
        if (count > static_cast<std::size_t>(-1) / sizeof(T))
            throw std::bad_array_new_length();
        return static_cast<T*>(::operator new (count * sizeof(T), std::align_val_t{kVectorAlignment}));
    }
    void deallocate(T* memory, std::size_t) noexcept
    {
        ::operator delete (memory, std::align_val_t{kVectorAlignment});
    }
    bool operator==(const AlignedAllocator&) const { return true; }
};

template <class T>
using AlignedVector = std::vector<T, AlignedAllocator<T>>;

/// The elements from the start of a row to that of the next, when all rows are to be aligned.
template <class T>
constexpr std::int64_t alignedPitch(std::int64_t count)
{
    constexpr auto kElements = static_cast<std::int64_t>(kVectorAlignment / sizeof(T));
    return (count + kElements - 1) / kElements * kElements;
}

} // namespace tirn
