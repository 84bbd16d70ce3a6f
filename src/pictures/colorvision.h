#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace tirn {

/// Whose colour vision a picture is shown with. The numbers are positions in lists.
enum class ColorVision { Normal = 0, Protan = 1, Deutan = 2, Tritan = 3 };

/// Their names in these lists.
inline constexpr const char* kColorVisionNames[] = {"Normal", "Protan", "Deutan", "Tritan"};

using ColorMatrix = std::array<std::array<double, 3>, 3>;

/// What becomes of linear red, green and blue for people who lack one kind of cones: the matrices for full
/// severity of G. M. Machado, M. M. Oliveira and L. A. F. Fernandes, "A Physiologically-based Model for
/// Simulation of Color Vision Deficiency", IEEE Transactions on Visualization and Computer Graphics 15
/// (2009).
const ColorMatrix& visionMatrix(ColorVision vision);

/// Changes sRGB pixels, four bytes each, red first, to what is seen. The fourth byte stays; where
/// `premultiplied` it is an opacity that the colours have been multiplied by.
void seeAs(ColorVision vision, std::span<std::uint8_t> rgba, bool premultiplied);

} // namespace tirn
