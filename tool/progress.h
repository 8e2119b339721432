// Shows how far an export is, on the error stream.
#pragma once

#include "readers/interrupt.h"
#include "tool/stages.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace tool {

enum class ProgressStyle { None, Bar, Plain };

enum class ProgressWish { Auto, None, Bar, Plain };

enum class Quietness { Quiet, Talking };

// A bar needs a terminal, and when nobody asked for it one that can rewrite a line; plain lines go anywhere.
// Nothing is shown when the command is quiet.
ProgressStyle ChooseProgress(ProgressWish wish, Quietness quietness);

// " 42 %", and how many seconds the rest takes when that can be told.
std::string ShareText(double done, std::optional<double> left);
// The line for a share of the work, with a word or two in front, no longer than `columns` if that can be.
std::string BarLine(const std::string& what, double done, std::optional<double> left, std::size_t columns);
// The line for a state of the stages, no longer than `columns`.
std::string BarLine(const Stages& stages, std::size_t columns);
std::string PlainLine(const Stages& stages);

// Draws in a thread of its own from its making to its end. The stages outlive it.
class Progress {
 public:
  Progress(Stages& stages, ProgressStyle style);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Runs before each drawing, to look how far the stages are; empty for none. Once this returns,
  // what was given before isn't running and won't again.
  void SetProbe(std::function<void()> probe);

 private:
  void Run();
  void Draw();

  Stages& stages_;
  const ProgressStyle style_;
  std::mutex mutex_;
  std::condition_variable ended_;
  std::function<void()> probe_;
  bool ending_ = false;
  std::optional<Stage> lastStage_;
  Stages::Clock::time_point lastLine_{};
  std::optional<readers::InterruptAction> clearing_;
  std::thread thread_;
};

}  // namespace tool
