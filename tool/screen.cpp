#include "tool/screen.h"

#include <sys/ioctl.h>

#include <chrono>
#include <cstdio>
#include <mutex>
#include <unistd.h>
#include <utility>

namespace tool {
namespace {

constexpr std::size_t kUsualColumns = 80;
constexpr auto kPatience = std::chrono::milliseconds(100);
constexpr char kEraseLine[] = "\r\x1b[K";

// Never destroyed: the thread that takes the signals may outlive main().
struct Screen {
  std::timed_mutex mutex;
  std::string status;
  bool ended = false;
};

Screen& TheScreen() {
  static Screen& screen = *new Screen;
  return screen;
}

// In one call, so that the lines of several processes don't mix.
void Write(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stderr); }

void Clear(Screen& screen) {
  if (screen.status.empty()) return;
  screen.status.clear();
  Write(kEraseLine);
}

}  // namespace

void PrintErrorLine(std::string_view text) {
  Screen& screen = TheScreen();
  const std::lock_guard<std::timed_mutex> lock(screen.mutex);
  std::string line(screen.status.empty() ? "" : kEraseLine);
  line += text;
  line += '\n';
  Write(line + screen.status);
}

void ShowStatus(std::string text) {
  Screen& screen = TheScreen();
  const std::lock_guard<std::timed_mutex> lock(screen.mutex);
  if (screen.ended) return;
  screen.status = std::move(text);
  Write(kEraseLine + screen.status);
}

void ClearStatus() {
  Screen& screen = TheScreen();
  const std::lock_guard<std::timed_mutex> lock(screen.mutex);
  Clear(screen);
}

void EndStatus() {
  Screen& screen = TheScreen();
  // Whoever holds it may wait for a terminal that was stopped.
  const std::unique_lock<std::timed_mutex> lock(screen.mutex, kPatience);
  if (!lock) return;
  Clear(screen);
  screen.ended = true;
}

bool ErrorsGoToTerminal() { return isatty(STDERR_FILENO) != 0; }

std::size_t ColumnCount() {
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualColumns;
  return size.ws_col;
}

}  // namespace tool
