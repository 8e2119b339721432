// How much a host has been asked for, for who shows progress meanwhile.
#pragma once

#include <atomic>
#include <cstdint>

namespace headless {

// A counter that one thread advances and any may read.
class DemandCount {
 public:
  // No atomic addition, which would cost a bus lock at each of millions of calls.
  void Add() { count_.store(count_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed); }
  std::uint64_t Get() const { return count_.load(std::memory_order_relaxed); }

 private:
  std::atomic<std::uint64_t> count_{0};
};

struct Demand {
  DemandCount triangles;  // of meshes, handed out
  DemandCount reads;      // of channels at a time, begun
};

}  // namespace headless
