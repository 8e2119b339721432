#include "readers/interrupt.h"

#include <csignal>
#include <pthread.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace readers {
namespace {

using Actions = std::list<std::function<void()>>;

// Neither is ever destroyed: the thread that takes the signals may outlive main().
std::recursive_mutex& ActionMutex() {
  static std::recursive_mutex& mutex = *new std::recursive_mutex;
  return mutex;
}

Actions& AllActions() {
  static Actions& actions = *new Actions;
  return actions;
}

}  // namespace

void WatchInterrupts() {
  static std::once_flag once;
  std::call_once(once, [] {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, number);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    // A signal handler may do next to nothing, so a thread of its own takes the signals.
    std::thread([signals] {
      int number = 0;
      sigwait(&signals, &number);
      const std::lock_guard<std::recursive_mutex> lock(ActionMutex());
      for (auto action = AllActions().rbegin(); action != AllActions().rend(); ++action) {
        try {
          (*action)();
        } catch (...) {  // the other actions shall run all the same
        }
      }
      _exit(128 + number);
    }).detach();
  });
}

InterruptAction::InterruptAction(std::function<void()> action) {
  const std::lock_guard<std::recursive_mutex> lock(ActionMutex());
  place_ = AllActions().insert(AllActions().end(), std::move(action));
}

InterruptAction::~InterruptAction() {
  const std::lock_guard<std::recursive_mutex> lock(ActionMutex());
  AllActions().erase(place_);
}

InterruptPause::InterruptPause() : lock_(ActionMutex()) {}

}  // namespace readers
