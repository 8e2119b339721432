#include "tool/batch_run.h"

#include "tool/batch_children.h"
#include "tool/batch_record.h"
#include "tool/screen.h"

#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kPlainPause = std::chrono::seconds(5);  // between two lines of progress

double SecondsSince(Clock::time_point begin) {
  return std::chrono::duration<double>(Clock::now() - begin).count();
}

class BatchRun {
 public:
  BatchRun(const std::vector<BatchLine>& lines, const BatchPlan& plan) : lines_(lines), plan_(plan) {
    if (plan_.progress == ProgressStyle::Bar) clearing_.emplace(EndStatus);
  }

  std::vector<BatchResult> Run() {
    Show();
    std::vector<std::thread> threads;
    for (std::size_t job = 0; job < std::min(plan_.jobs, lines_.size()); ++job)
      threads.emplace_back([this] {
        while (const BatchLine* line = Next()) Finish(RunOne(*line), *line);
      });
    for (std::thread& thread : threads) thread.join();
    ClearStatus();
    return std::move(results_);
  }

 private:
  const BatchLine* Next() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (next_ == lines_.size() || (failed_ && plan_.onFailure == OnFailure::Stop)) return nullptr;
    return &lines_[next_++];
  }

  ChildOutcome RunOne(const BatchLine& line) {
    const Clock::time_point begin = Clock::now();
    ChildOutcome outcome{ResultOf(line), {}};
    try {
      if (plan_.redo == Redo::WhenChanged && !WhyToExport(line))
        outcome.result.status = BatchStatus::Skipped;
      else
        outcome = children_.Export(line);
    } catch (const std::exception& error) {
      outcome.result.status = BatchStatus::Failed;
      outcome.result.exitCode = kOutput;
      outcome.result.error = line.output + ": " + error.what();
    }
    outcome.result.seconds = SecondsSince(begin);
    return outcome;
  }

  void Finish(ChildOutcome outcome, const BatchLine& line) {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const std::string& message : outcome.messages)
      PrintErrorLine(fmt::format("{}:{}: {}", plan_.name, line.number, message));
    failed_ = failed_ || outcome.result.status == BatchStatus::Failed;
    results_.push_back(std::move(outcome.result));
    plan_.finished(results_.back());
    Show();
  }

  void Show() {
    if (plan_.progress == ProgressStyle::None) return;
    const double done =
        static_cast<double>(results_.size()) / static_cast<double>(std::max<std::size_t>(lines_.size(), 1));
    std::optional<double> left;
    if (done > 0) left = SecondsSince(begin_) * (1 / done - 1);
    const std::string count = fmt::format("{} of {}", results_.size(), lines_.size());
    if (plan_.progress == ProgressStyle::Bar) return ShowStatus(BarLine(count, done, left, ColumnCount()));
    if (lastLine_ && Clock::now() - *lastLine_ < kPlainPause) return;
    lastLine_ = Clock::now();
    PrintErrorLine("vornel: " + count + " " + ShareText(done, left));
  }

  const std::vector<BatchLine>& lines_;
  const BatchPlan& plan_;
  const Clock::time_point begin_ = Clock::now();
  std::mutex mutex_;
  std::size_t next_ = 0;
  bool failed_ = false;
  std::vector<BatchResult> results_;
  std::optional<Clock::time_point> lastLine_;
  BatchChildren children_;
  std::optional<readers::InterruptAction> clearing_;
};

}  // namespace

std::vector<BatchResult> RunLines(const std::vector<BatchLine>& lines, const BatchPlan& plan) {
  return BatchRun(lines, plan).Run();
}

}  // namespace tool
