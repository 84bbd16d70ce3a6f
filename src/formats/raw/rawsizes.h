#pragma once

#include <cstdint>
#include <optional>

#include <QString>

namespace tirn {

/// What is said of a headerless file, and which of its layers are wanted.
struct RawImport
{
    std::int64_t offset = 0;
    int x = 1;
    int y = 1;
    int z = 1;
    int channels = 1;
    /// The position in the list of depths, which begins with 8 bits.
    int depthItem = 0;
    int first = 0;
    int last = 0;
    int step = 1;

    int bitDepth() const { return depthItem + 8; }
};

/// The bytes that a file must have to hold what is said.
std::int64_t specifiedRawSize(const RawImport& import);

/// The first reason not to import a file, empty when there is none; no size stands for no file.
QString rawImportProblem(const RawImport& import, const QString& fileName,
                         std::optional<std::int64_t> fileSize);

} // namespace tirn
