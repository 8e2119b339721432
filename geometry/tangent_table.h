// The table of distinct tangent bases. Its oddities are a settled property of the output:
// - it hashes all six floats but compares only the first four, so two bases that differ in bitangent y or z
//   alone are one entry when they share a bucket and two when they don't;
// - it isn't emptied between the meshes of a save. The k-th map of every mesh uses the k-th table, so a basis
//   that an earlier mesh entered yields the index it had there.
#pragma once

#include "geometry/value_table.h"

#include <array>
#include <cstdint>
#include <vector>

using TangentBasis = std::array<float, 6>;  // tangent x, y, z, bitangent x, y, z

class TangentTable {
 public:
  // The index of the basis; one that isn't in the table is appended to `data` and gets its place there.
  std::uint32_t Fold(const TangentBasis& basis, std::vector<TangentBasis>& data);

 private:
  struct Entry {
    TangentBasis basis;
    std::uint64_t hash;
    std::uint32_t index;
  };

  void Grow();

  // A power of two of buckets, at most one entry per bucket on average.
  std::vector<std::vector<Entry>> buckets_ = std::vector<std::vector<Entry>>(kFirstBuckets);
  std::size_t size_ = 0;
};
