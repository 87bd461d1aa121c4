// The start-up runs once, before the first use of a registry, and may register through the
// registries' public setters. This program links the classes module without the umbrella, so it
// provides the start-up routine itself.
#include "lorvane/classes/LxLibraryStartup.h"
#include "lorvane/classes/LxDocumentHooks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace lorvane {

namespace {
std::atomic<int> StartupRuns{0};
bool StartupSawItsOwnMaker = false;
} // namespace

// Registers a maker through the public setter and reads it back, both from inside the start-up:
// neither may wait for the start-up to finish.
void RunLibraryStartup() {
  ++StartupRuns;
  SetCreateXMLDoc([](const UnicodeString&) { return IPtr<IInterface>(); });
  StartupSawItsOwnMaker = CreateXMLDocument(u"<a/>") == nullptr;
}

namespace {

TEST(LibraryStartup, RunsOnceWhateverTheNumberOfThreadsAndCalls) {
  std::vector<std::thread> Threads;
  for (int I = 0; I < 4; ++I)
    Threads.emplace_back([] {
      for (int J = 0; J < 100; ++J)
        EnsureLibraryStarted();
    });
  for (std::thread& T : Threads)
    T.join();
  EXPECT_EQ(StartupRuns.load(), 1);
  EXPECT_TRUE(StartupSawItsOwnMaker) << "a registration from inside the start-up stands";
}

} // namespace
} // namespace lorvane
