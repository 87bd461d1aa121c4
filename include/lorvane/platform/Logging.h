/// The logging service: named loggers that hand each line to the sink an application sets.
///   TLogLevel         the weight of a line
///   TLogSink          what receives the lines: the logger's name, the level and the text
///   TLogger           a named logger; Log and its level forms write one line
///   TLogService       the service: named loggers, the sink, the lowest level passed on
///   Logger, GetLogger the process's service, and one of its loggers by name
///
/// The library logs nothing by itself; the service is silent until an application sets a sink.
/// Loggers live as long as the process, so a reference to one may be kept. Thread-safe: a sink
/// is called outside the service's lock, possibly from several threads at once.
#pragma once

#include "lorvane/platform/System.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

namespace lorvane {

enum class TLogLevel : Byte { Debug, Info, Warning, Error };

using TLogSink = std::function<void(std::u16string_view ALogger, TLogLevel ALevel,
                                    std::u16string_view AMessage)>;

class TLogService;

class TLogger {
public:
  TLogger(const TLogger&) = delete;
  TLogger& operator=(const TLogger&) = delete;

  const UnicodeString& Name() const noexcept { return FName; }
  /// Hands the line to the service's sink when there is one and the level is at its threshold.
  void Log(TLogLevel ALevel, std::u16string_view AMessage) const;
  void Debug(std::u16string_view AMessage) const { Log(TLogLevel::Debug, AMessage); }
  void Info(std::u16string_view AMessage) const { Log(TLogLevel::Info, AMessage); }
  void Warning(std::u16string_view AMessage) const { Log(TLogLevel::Warning, AMessage); }
  void Error(std::u16string_view AMessage) const { Log(TLogLevel::Error, AMessage); }

private:
  friend class TLogService;
  TLogger(TLogService* AService, UnicodeString AName) : FService(AService), FName(AName) {}
  TLogService* FService;
  UnicodeString FName;
};

class TLogService {
public:
  TLogService() = default;
  TLogService(const TLogService&) = delete;
  TLogService& operator=(const TLogService&) = delete;

  /// The logger of that name, made on first request; names compare exactly.
  TLogger& GetLogger(std::u16string_view AName);
  /// Gives the sink it replaces; an empty function silences the service again.
  TLogSink SetSink(TLogSink ASink);
  /// Lines below this level are dropped (Debug, the lowest, at start).
  void SetLevel(TLogLevel ALevel);
  TLogLevel GetLevel() const;

private:
  friend class TLogger;
  void Write(const TLogger& ALogger, TLogLevel ALevel, std::u16string_view AMessage);

  mutable std::mutex FLock;
  TLogSink FSink;
  TLogLevel FLevel = TLogLevel::Debug;
  std::vector<std::unique_ptr<TLogger>> FLoggers;
};

/// The process's logging service.
TLogService& Logger();
/// Logger().GetLogger(AName).
TLogger& GetLogger(std::u16string_view AName);

} // namespace lorvane
