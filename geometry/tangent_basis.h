// From a tangent and a bitangent of the host to a vertex's TANGENT.
//
// All arithmetic is in f32 after every single operation, sums from left to right, unless told otherwise.
#pragma once

#include "geometry/tangent_table.h"

#include <array>

using Normal3f = std::array<float, 3>;

// Whether the basis passes for orthonormal. The test compares the sum of the components of tangent x bitangent
// with that of the normal's, and has one side only: this is its settled form, and a basis that is off by a
// positive amount passes. A tangent of exactly (0, 0, 0) takes no part and passes.
bool PassesAsOrthonormal(const TangentBasis& basis, const Normal3f& normal);

// x, y, z: the tangent, normalised, (1, 0, 0) for one without length. w: -1 when (normal x tangent) . bitangent
// is below 0, else 1.
std::array<float, 4> TangentOf(const TangentBasis& basis, const Normal3f& normal);
