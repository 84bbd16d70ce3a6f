#pragma once

#include <cstdint>

/// The private tables of a MetaMorph file, shared by its reader and its writer.
namespace tirn::metamorph {

/// A plane's record in the table of planes: distance as numerator and denominator, then four dates and times.
constexpr std::int64_t kPlaneBytes = 24;
/// A file has one directory; more than these are voxels that look like some.
constexpr int kMostDirectories = 1024;
/// Ids in the table of calibrations, which holds pairs of an id and a value.
constexpr std::uint32_t kXCalibration = 4;
constexpr std::uint32_t kYCalibration = 5;
constexpr std::uint32_t kCalibrationUnits = 6;

} // namespace tirn::metamorph
