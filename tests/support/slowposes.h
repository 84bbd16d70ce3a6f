#pragma once

#include <array>
#include <optional>

namespace tirn::test {

using Pose = std::array<double, 3>;

/// The angles of frame f of a rotation: `item` is the axis's place in the list, F the frames a rotation, R
/// the rotations, b the base.
Pose slowRotation(int item, int f, int F, int R, const Pose& b);

/// The angles of frame f of T while rocking: A degrees, M frames a move, R rotations. Nothing where the pose
/// stays what it was.
std::optional<Pose> slowRocking(int item, int f, int T, int A, int M, int R, const Pose& b);

/// The low and the high side of the cut box in frame f of T of a pass through.
std::array<int, 2> slowPass(int type, int f, int T, int low, int high);

/// The offset of one axis of a rocking time frame at frame i of N, with C swings of `a` degrees. Nothing
/// where the angle stays what it was.
std::optional<double> slowSwing(int i, int N, int C, double a, double b);

} // namespace tirn::test
