#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include <QString>

namespace tirn::test {

/// Something that takes any bytes at all, and must neither crash, hang, nor take memory that they do not
/// justify.
struct FuzzTarget
{
    const char* name;
    void (*run)(const QString& fileName);
    /// The ending of the file that the bytes are put into.
    const char* ending;
};

/// All readers of stacks, palettes and sessions.
std::span<const FuzzTarget> fuzzTargets();

/// Puts the bytes into a file and hands it to the target, with the log silent.
void runFuzzTarget(const FuzzTarget& target, const std::uint8_t* bytes, std::size_t size);

} // namespace tirn::test
