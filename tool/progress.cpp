#include "tool/progress.h"

#include "tool/screen.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>
#include <string_view>
#include <utility>

namespace tool {
namespace {

constexpr auto kRedraw = std::chrono::milliseconds(100);
constexpr auto kPlainPause = std::chrono::seconds(5);  // between two lines of one stage
constexpr std::size_t kWidestBar = 40;
constexpr std::size_t kTextColumns = 36;  // of a line besides the bar
constexpr std::size_t kWhatColumns = 10;  // of these, in front of the bar
constexpr char kColour[] = "\x1b[36m";
constexpr char kColourEnd[] = "\x1b[0m";

bool IsSet(const char* name) {
  const char* value = std::getenv(name);
  return value && *value != '\0';
}

std::string TimeText(double seconds) {
  const auto whole = static_cast<long long>(std::min(std::ceil(seconds), 359999.0));
  if (whole >= 3600) return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
  return fmt::format("{}:{:02}", whole / 60, whole % 60);
}

const char* StageName(const Stages& stages) {
  const std::optional<Stage> stage = stages.Current();
  return stage ? kStageNames[PlaceOf(*stage)] : "";
}

}  // namespace

ProgressStyle ChooseProgress(ProgressWish wish, Quietness quietness) {
  if (quietness == Quietness::Quiet || wish == ProgressWish::None) return ProgressStyle::None;
  if (wish == ProgressWish::Plain) return ProgressStyle::Plain;
  if (!ErrorsGoToTerminal()) return ProgressStyle::None;
  const char* terminal = std::getenv("TERM");
  const bool canRewrite = terminal && *terminal != '\0' && std::string_view(terminal) != "dumb";
  return canRewrite || wish == ProgressWish::Bar ? ProgressStyle::Bar : ProgressStyle::None;
}

std::string ShareText(double done, std::optional<double> left) {
  return fmt::format("{:3} %{}", static_cast<int>(100 * done), left ? "  " + TimeText(*left) + " left" : "");
}

std::string BarLine(const std::string& what, double done, std::optional<double> left, std::size_t columns) {
  const std::size_t text = kTextColumns - kWhatColumns + std::max(what.size() + 2, kWhatColumns);
  const std::size_t width = columns > text ? std::min(columns - text, kWidestBar) : 0;
  const auto filled = static_cast<std::size_t>(static_cast<double>(width) * done);
  std::string bar = std::string(filled, '#');
  if (!IsSet("NO_COLOR")) bar = kColour + bar + kColourEnd;
  if (width > 0) bar = "[" + bar + std::string(width - filled, ' ') + "] ";
  return fmt::format("{:<{}}", what + "  ", kWhatColumns) + (width > 0 ? bar : "") + ShareText(done, left);
}

std::string BarLine(const Stages& stages, std::size_t columns) {
  const std::optional<double> done = stages.Done();
  if (!done) return fmt::format("{:<{}}{}", StageName(stages), kWhatColumns, TimeText(stages.SecondsInAll()));
  return BarLine(StageName(stages), *done, stages.SecondsLeft(), columns);
}

std::string PlainLine(const Stages& stages) {
  const std::optional<double> done = stages.Done();
  return fmt::format("vornel: {}{}", StageName(stages), done ? ShareText(*done, stages.SecondsLeft()) : "");
}

Progress::Progress(Stages& stages, ProgressStyle style) : stages_(stages), style_(style) {
  if (style_ == ProgressStyle::None) return;
  if (style_ == ProgressStyle::Bar) clearing_.emplace(EndStatus);
  stages_.OnBegin([this] {
    const std::lock_guard<std::mutex> lock(mutex_);
    Draw();
  });
  thread_ = std::thread([this] { Run(); });
}

Progress::~Progress() {
  if (!thread_.joinable()) return;
  stages_.OnBegin({});
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ending_ = true;
  }
  ended_.notify_one();
  thread_.join();
  if (style_ == ProgressStyle::Bar) ClearStatus();
}

void Progress::SetProbe(std::function<void()> probe) {
  const std::lock_guard<std::mutex> lock(mutex_);
  probe_ = std::move(probe);
}

void Progress::Run() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!ending_) {
    try {
      Draw();
    } catch (const std::bad_alloc&) {  // the work itself may still get through
    }
    ended_.wait_for(lock, kRedraw);
  }
}

void Progress::Draw() {
  if (probe_) probe_();
  const std::optional<Stage> stage = stages_.Current();
  if (!stage) return;
  if (style_ == ProgressStyle::Bar) return ShowStatus(BarLine(stages_, ColumnCount()));
  const auto now = Stages::Clock::now();
  if (stage == lastStage_ && now - lastLine_ < kPlainPause) return;
  lastStage_ = stage;
  lastLine_ = now;
  PrintErrorLine(PlainLine(stages_));
}

}  // namespace tool
