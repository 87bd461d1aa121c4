// The logging service: named loggers over one sink that the application sets.
#include "lorvane/platform/Logging.h"

namespace lorvane {

void TLogger::Log(TLogLevel ALevel, std::u16string_view AMessage) const {
  FService->Write(*this, ALevel, AMessage);
}

TLogger& TLogService::GetLogger(std::u16string_view AName) {
  const std::lock_guard<std::mutex> Guard(FLock);
  for (const std::unique_ptr<TLogger>& Each : FLoggers)
    if (Each->Name() == AName)
      return *Each;
  FLoggers.push_back(std::unique_ptr<TLogger>(new TLogger(this, UnicodeString(AName))));
  return *FLoggers.back();
}

TLogSink TLogService::SetSink(TLogSink ASink) {
  const std::lock_guard<std::mutex> Guard(FLock);
  std::swap(FSink, ASink);
  return ASink;
}

void TLogService::SetLevel(TLogLevel ALevel) {
  const std::lock_guard<std::mutex> Guard(FLock);
  FLevel = ALevel;
}

TLogLevel TLogService::GetLevel() const {
  const std::lock_guard<std::mutex> Guard(FLock);
  return FLevel;
}

void TLogService::Write(const TLogger& ALogger, TLogLevel ALevel, std::u16string_view AMessage) {
  TLogSink Sink;
  {
    const std::lock_guard<std::mutex> Guard(FLock);
    if (!FSink || ALevel < FLevel)
      return;
    // A copy, so that the sink runs unlocked: it may log or replace itself.
    Sink = FSink;
  }
  Sink(ALogger.Name(), ALevel, AMessage);
}

TLogService& Logger() {
  // Never destroyed: loggers may be used from static destructors of applications.
  static TLogService* Service = new TLogService();
  return *Service;
}

TLogger& GetLogger(std::u16string_view AName) { return Logger().GetLogger(AName); }

} // namespace lorvane
