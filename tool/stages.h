// The stages of an export: how long each takes, and how far they are.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>

namespace tool {

enum class Stage { Reading, Scanning, Sampling, Writing, Verifying, Moving };
inline constexpr std::size_t kStageCount = 6;

// By Stage.
inline constexpr const char* kStageNames[kStageCount] = {"reading", "scanning",  "sampling",
                                                         "writing", "verifying", "moving"};

constexpr std::size_t PlaceOf(Stage stage) { return static_cast<std::size_t>(stage); }

// May be asked from any thread.
class Stages {
 public:
  using Clock = std::chrono::steady_clock;
  using Numbers = std::array<double, kStageCount>;  // by Stage

  // Is called at the beginning of each stage, in the thread that begins it.
  void OnBegin(std::function<void()> told);

  // Ends the stage in force. A stage may come again; its times add up.
  void Begin(Stage stage);
  void End();

  // How the work that follows the reading divides into stages, in any unit.
  void Plan(const Numbers& work);
  // How much of a stage is done, 0 to 1. Less than before is passed over.
  void SetDone(Stage stage, double share);

  std::optional<Stage> Current() const;
  // Of the planned work; none before the plan.
  std::optional<double> Done() const;
  // By what is done and the time since the plan; none before anything is done.
  std::optional<double> SecondsLeft() const;
  double SecondsInAll() const;
  Numbers Seconds() const;  // 0 for stages that didn't come

 private:
  double DoneLocked() const;

  mutable std::mutex mutex_;
  Clock::time_point start_ = Clock::now();
  Clock::time_point begin_{}, planned_{};
  std::function<void()> told_;  // in the hands of one thread, and so without the mutex
  std::optional<Stage> current_;
  std::optional<Numbers> work_;  // sums to 1
  Numbers done_{};
  Numbers seconds_{};
};

}  // namespace tool
