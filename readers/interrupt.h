// What happens before SIGINT, SIGTERM or SIGHUP ends the program.
#pragma once

#include <functional>
#include <list>
#include <mutex>

namespace readers {

// From now on each of these signals ends the program with 128 + its number, after the actions below. To be called
// before the program starts threads of its own, which would take the signals themselves.
void WatchInterrupts();

// An action that such a signal runs as long as this lives, the newest first, in a thread of its own.
class InterruptAction {
 public:
  explicit InterruptAction(std::function<void()> action);
  ~InterruptAction();
  InterruptAction(const InterruptAction&) = delete;
  InterruptAction& operator=(const InterruptAction&) = delete;

 private:
  std::list<std::function<void()>>::iterator place_;
};

// A signal waits as long as this lives. Actions may come and go in the same thread.
class InterruptPause {
 public:
  InterruptPause();

 private:
  std::unique_lock<std::recursive_mutex> lock_;
};

}  // namespace readers
