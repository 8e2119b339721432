#include "tool/progress.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdio>
#include <string>

namespace tool {
namespace {
constexpr std::uint64_t kRedraw = 16384;  // steps between two drawings
constexpr std::uint64_t kWidth = 40;
}  // namespace

ProgressBar::~ProgressBar() {
  if (drawn_ == 0) return;
  Draw();
  std::fputs("\n", stderr);
}

zyresult ProgressBar::Initialize(std::uint32_t steps) {
  total_ = steps;
  return ZYe_OK;
}

zyresult ProgressBar::Step(std::uint32_t steps) {
  done_ += steps;
  if (done_ - drawn_ >= kRedraw) Draw();
  return ZYe_OK;
}

void ProgressBar::Draw() {
  drawn_ = done_;
  if (total_ == 0) {
    std::fputs(fmt::format("\r{} points and polygons read", done_).c_str(), stderr);
    return;
  }
  const std::uint64_t filled = std::min(kWidth, done_ * kWidth / total_);
  const std::string bar = fmt::format("\r[{:<{}}] {:3}%", std::string(filled, '#'), kWidth,
                                      std::min<std::uint64_t>(100, done_ * 100 / total_));
  std::fputs(bar.c_str(), stderr);
}

}  // namespace tool
