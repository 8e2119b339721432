#include "tool/stages.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace tool {
namespace {

double SecondsBetween(Stages::Clock::time_point from, Stages::Clock::time_point to) {
  return std::chrono::duration<double>(to - from).count();
}

}  // namespace

void Stages::OnBegin(std::function<void()> told) { told_ = std::move(told); }

void Stages::Begin(Stage stage) {
  End();
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    current_ = stage;
    begin_ = Clock::now();
    // What can't be told while it runs is done when a later stage begins.
    if (stage >= Stage::Verifying)
      for (std::size_t place = 0; place < PlaceOf(stage); ++place) done_[place] = 1;
  }
  if (told_) told_();
}

void Stages::End() {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (current_) seconds_[PlaceOf(*current_)] += SecondsBetween(begin_, Clock::now());
  current_.reset();
}

void Stages::Plan(const Numbers& work) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const double sum = std::accumulate(work.begin(), work.end(), 0.0);
  if (!(sum > 0)) return;
  work_ = work;
  for (double& share : *work_) share /= sum;
  planned_ = Clock::now();
}

void Stages::SetDone(Stage stage, double share) {
  const std::lock_guard<std::mutex> lock(mutex_);
  double& done = done_[PlaceOf(stage)];
  done = std::max(done, std::min(share, 1.0));
}

std::optional<Stage> Stages::Current() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return current_;
}

double Stages::DoneLocked() const { return std::inner_product(work_->begin(), work_->end(), done_.begin(), 0.0); }

std::optional<double> Stages::Done() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (!work_) return std::nullopt;
  return DoneLocked();
}

std::optional<double> Stages::SecondsLeft() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (!work_ || DoneLocked() <= 0) return std::nullopt;
  return SecondsBetween(planned_, Clock::now()) * (1 / DoneLocked() - 1);
}

double Stages::SecondsInAll() const { return SecondsBetween(start_, Clock::now()); }

Stages::Numbers Stages::Seconds() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return seconds_;
}

}  // namespace tool
