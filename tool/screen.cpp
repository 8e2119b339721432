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

bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

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

std::string PlainText(std::string_view text) {
  std::string plain(text);
  for (std::size_t place = 0; place < plain.size(); ++place) {
    // U+0080 to U+009F are control characters too.
    const bool isSecondSet =
        place > 0 && plain[place - 1] == '\xC2' && static_cast<unsigned char>(plain[place]) < 0xA0;
    if (isSecondSet) plain[place - 1] = '?';
    if (isSecondSet || IsControl(plain[place])) plain[place] = '?';
  }
  return plain;
}

void PrintErrorLine(std::string_view text) {
  Screen& screen = TheScreen();
  const std::lock_guard<std::timed_mutex> lock(screen.mutex);
  std::string line(screen.status.empty() ? "" : kEraseLine);
  line += PlainText(text);
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
