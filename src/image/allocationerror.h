#pragma once

#include <new>

namespace tirn {

/// Memory for voxels could not be had; `what` says for which operation. The text is a literal.
class AllocationError : public std::bad_alloc
{
public:
    explicit AllocationError(const char* text) : m_text(text) {}
    const char* what() const noexcept override { return m_text; }

private:
    const char* m_text;
};

} // namespace tirn
