/// Synchronization objects of the runtime: TCriticalSection, a re-entrant lock.
#pragma once

#include "lorvane/platform/System.h"

#include <mutex>

namespace lorvane {

/// A lock that the thread holding it may enter again; each Enter needs its Leave. Leave by a
/// thread that doesn't hold the lock is undefined, as for the platform's lock.
class TCriticalSection : public TObject {
  LX_CLASS(TCriticalSection, TObject)
  TCriticalSection() = default;

  void Enter() { FMutex.lock(); }
  void Leave() { FMutex.unlock(); }
  /// Enters without waiting; false when another thread holds the lock.
  bool TryEnter() { return FMutex.try_lock(); }

protected:
  ~TCriticalSection() override = default;

private:
  std::recursive_mutex FMutex;
};

} // namespace lorvane
