/// The library's start-up: the registrations that its modules put into shared registries (the
/// document makers of the document hooks, and what later modules register), made once per
/// process before any such registry is first read or written.
///   EnsureLibraryStarted   runs the start-up if it hasn't run; every shared registry calls it
///   RunLibraryStartup      the registrations themselves
///
/// A registry lives in the lowest module that needs it and knows nothing of the modules that fill
/// it; the routine that fills them is the library umbrella's, the one place that knows every
/// module. Nothing runs from a static constructor: those are dropped from static archives and run
/// in no defined order.
#pragma once

namespace lorvane {

/// Runs RunLibraryStartup once per process. Other threads wait until it has finished; a call
/// from inside it (a registration that goes through a registry's public setter) returns at once.
/// If the start-up raises, the exception passes to the caller and the next call tries again.
void EnsureLibraryStarted();

/// Defined by the library umbrella (lorvane::lorvane). A program that links single modules
/// without the umbrella (the modules' own tests) defines it with the registrations it wants.
void RunLibraryStartup();

} // namespace lorvane
