// The allocating functions, one call of which fails when told so.
#include "tests/support/fault_state.h"

#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <new>
#include <pthread.h>

namespace test_support {
namespace {

// Set while an allocating function runs: one may be made of another.
__attribute__((tls_model("initial-exec"))) thread_local bool nested = false;

class Allocation {
 public:
  Allocation() : outer_(!nested) { nested = true; }
  ~Allocation() {
    if (outer_) nested = false;
  }
  Allocation(const Allocation&) = delete;
  Allocation& operator=(const Allocation&) = delete;

  // To be asked once. `caller` is where the allocating function returns to.
  bool Fails(const void* caller) const {
    FaultState* const state = faultState;
    if (!outer_ || !state || !state->active) return false;
    const std::uint64_t place = ++state->allocations;
    Trace(*state, place, caller);
    const FaultPlan& plan = state->plan;
    const bool fails = plan.place != 0 && ((plan.kind == FaultKind::Allocation && place == plan.place) ||
                                           (plan.kind == FaultKind::Exhaustion && place >= plan.place));
    if (!fails) return false;
    state->result.hit = 1;
    errno = ENOMEM;
    return true;
  }

 private:
  static void Trace(FaultState& state, std::uint64_t place, const void* caller) {
    constexpr std::uint64_t kMix = 0x9E3779B97F4A7C15;
    state.history = (state.history << 1) + reinterpret_cast<std::uintptr_t>(caller) * kMix;
    if (place <= state.trace.size()) state.trace[place - 1] = state.history;
  }

  bool outer_;
};

#define CALLER __builtin_return_address(0)

// dlsym() allocates itself where it fails, and here it doesn't.
template <class Function>
Function* Next(Function*& function, const char* name) {
  if (!function) function = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
  return function;
}

template <class... Arguments>
void* Throwing(const void* caller, void* (*&function)(Arguments...), const char* name, Arguments... arguments) {
  {
    const Allocation allocation;
    if (!allocation.Fails(caller)) return Next(function, name)(arguments...);
  }
  // As the real one does it, but that there is no second try.
  if (const std::new_handler handler = std::get_new_handler()) handler();
  throw std::bad_alloc();
}

}  // namespace
}  // namespace test_support

using test_support::Allocation;
using test_support::Next;
using test_support::Throwing;

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED void* malloc(std::size_t size) {
  static void* (*next)(std::size_t);
  const Allocation allocation;
  return allocation.Fails(CALLER) ? nullptr : Next(next, "malloc")(size);
}

EXPORTED void* calloc(std::size_t count, std::size_t size) {
  static void* (*next)(std::size_t, std::size_t);
  const Allocation allocation;
  return allocation.Fails(CALLER) ? nullptr : Next(next, "calloc")(count, size);
}

EXPORTED void* realloc(void* old, std::size_t size) {
  static void* (*next)(void*, std::size_t);
  const Allocation allocation;
  return allocation.Fails(CALLER) ? nullptr : Next(next, "realloc")(old, size);
}

EXPORTED int posix_memalign(void** address, std::size_t alignment, std::size_t size) {
  static int (*next)(void**, std::size_t, std::size_t);
  const Allocation allocation;
  return allocation.Fails(CALLER) ? ENOMEM : Next(next, "posix_memalign")(address, alignment, size);
}

EXPORTED void* aligned_alloc(std::size_t alignment, std::size_t size) {
  static void* (*next)(std::size_t, std::size_t);
  const Allocation allocation;
  return allocation.Fails(CALLER) ? nullptr : Next(next, "aligned_alloc")(alignment, size);
}

EXPORTED void* _Znwm(std::size_t size) {
  static void* (*next)(std::size_t);
  return Throwing(CALLER, next, "_Znwm", size);
}

EXPORTED void* _Znam(std::size_t size) {
  static void* (*next)(std::size_t);
  return Throwing(CALLER, next, "_Znam", size);
}

EXPORTED void* _ZnwmSt11align_val_t(std::size_t size, std::size_t alignment) {
  static void* (*next)(std::size_t, std::size_t);
  return Throwing(CALLER, next, "_ZnwmSt11align_val_t", size, alignment);
}

EXPORTED void* _ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t& nothrow) {
  static void* (*next)(std::size_t, const std::nothrow_t&);
  const Allocation allocation;
  return allocation.Fails(CALLER) ? nullptr : Next(next, "_ZnwmRKSt9nothrow_t")(size, nothrow);
}

// The sanitizers call it when a thread starts, and give up where it finds no memory.
EXPORTED int pthread_getattr_np(pthread_t thread, pthread_attr_t* attributes) {
  static int (*next)(pthread_t, pthread_attr_t*);
  const Allocation uncounted;
  return Next(next, "pthread_getattr_np")(thread, attributes);
}
