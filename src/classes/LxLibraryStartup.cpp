// Runs the library's start-up once, tolerating registrations that re-enter it.
#include "lorvane/classes/LxLibraryStartup.h"

#include <atomic>
#include <mutex>

namespace lorvane {

namespace {

struct TStartupState {
  std::atomic<bool> Done{false};
  // Recursive, so that a registration made from inside the start-up, on the same thread, reaches
  // the Running check instead of waiting for itself.
  std::recursive_mutex Lock;
  bool Running = false;
};

TStartupState& State() {
  static TStartupState Instance;
  return Instance;
}

} // namespace

void EnsureLibraryStarted() {
  TStartupState& S = State();
  if (S.Done.load(std::memory_order_acquire))
    return;
  const std::lock_guard<std::recursive_mutex> Guard(S.Lock);
  if (S.Done.load(std::memory_order_relaxed) || S.Running)
    return;
  S.Running = true;
  try {
    RunLibraryStartup();
  } catch (...) {
    S.Running = false;
    throw;
  }
  S.Running = false;
  S.Done.store(true, std::memory_order_release);
}

} // namespace lorvane
