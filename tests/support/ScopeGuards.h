// Guards that put a process-wide default back when a test's scope ends, also when the test fails
// or raises half-way: the regional settings, the default code page and the time zone (the
// document hooks have theirs in DocumentHooksScope.h).
#pragma once

#include "lorvane/platform/CodePages.h"
#include "lorvane/platform/SysUtils.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>

namespace lorvane::test {

/// Puts AVariable back to the value it had when the guard was made.
template <class T> class TRestoreValue {
public:
  explicit TRestoreValue(T& AVariable) : FVariable(AVariable), FSaved(AVariable) {}
  TRestoreValue(const TRestoreValue&) = delete;
  TRestoreValue& operator=(const TRestoreValue&) = delete;
  ~TRestoreValue() { FVariable = FSaved; }

private:
  T& FVariable;
  T FSaved;
};

/// The regional settings (FormatSettings) as they were, whatever the test sets in them.
class TFormatSettingsScope : public TRestoreValue<TFormatSettings> {
public:
  TFormatSettingsScope() : TRestoreValue(FormatSettings) {}
  /// Also sets the decimal separator for the scope.
  explicit TFormatSettingsScope(char16_t ADecimalSeparator) : TFormatSettingsScope() {
    FormatSettings.DecimalSeparator = ADecimalSeparator;
  }
};

/// The process's default code page for a scope.
class TDefaultCodePageScope {
public:
  TDefaultCodePageScope() : FSaved(GetDefaultCodePage()) {}
  explicit TDefaultCodePageScope(Word ACodePage) : TDefaultCodePageScope() {
    SetDefaultCodePage(ACodePage);
  }
  TDefaultCodePageScope(const TDefaultCodePageScope&) = delete;
  TDefaultCodePageScope& operator=(const TDefaultCodePageScope&) = delete;
  ~TDefaultCodePageScope() { SetDefaultCodePage(FSaved); }

private:
  Word FSaved;
};

/// The process's time zone (TZ) for a scope. Without the zone database APosixRule, the POSIX
/// rule of the same zone, stands in.
class TZoneScope {
public:
  explicit TZoneScope(const char* AZone, const char* APosixRule = nullptr) {
    if (const char* Old = std::getenv("TZ"))
      FOldZone = Old;
    Set(AZone, APosixRule);
  }
  TZoneScope(const TZoneScope&) = delete;
  TZoneScope& operator=(const TZoneScope&) = delete;
  ~TZoneScope() {
    if (FOldZone)
      setenv("TZ", FOldZone->c_str(), 1);
    else
      unsetenv("TZ");
    tzset();
  }

  /// Another zone within the same scope.
  static void Set(const char* AZone, const char* APosixRule = nullptr) {
    const bool HaveDatabase =
        !APosixRule || std::filesystem::exists(std::string("/usr/share/zoneinfo/") + AZone);
    setenv("TZ", HaveDatabase ? AZone : APosixRule, 1);
    tzset();
  }

private:
  std::optional<std::string> FOldZone;
};

} // namespace lorvane::test
