/// Byte streams: the abstract TStream with 64-bit positions, TMemoryStream on memory of its own,
/// and TFileStream with the platform's 16-bit open modes.
#pragma once

#include "lorvane/platform/SysUtils.h"

#include <vector>

namespace lorvane {

enum class TSeekOrigin : Byte { soBeginning, soCurrent, soEnd };
using enum TSeekOrigin;

class TStream : public TObject {
  LX_CLASS(TStream, TObject)
  /// Reads up to ACount bytes; gives the count read (0 at the end).
  virtual Int64 Read(void* ABuffer, Int64 ACount) = 0;
  /// Writes up to ACount bytes; gives the count written.
  virtual Int64 Write(const void* ABuffer, Int64 ACount) = 0;
  /// Gives the new position.
  virtual Int64 Seek(Int64 AOffset, TSeekOrigin AOrigin) = 0;

  Int64 GetPosition() { return Seek(0, soCurrent); }
  void SetPosition(Int64 AValue) { Seek(AValue, soBeginning); }
  virtual Int64 GetSize();
  virtual void SetSize(Int64 ANewSize);

  /// Reads exactly ACount bytes or raises EReadError "Stream read error".
  void ReadBuffer(void* ABuffer, Int64 ACount);
  /// Writes exactly ACount bytes or raises EWriteError "Stream write error".
  void WriteBuffer(const void* ABuffer, Int64 ACount);
  /// Copies ACount bytes from ASource's position; with 0, the whole of ASource from its start.
  /// Gives the count copied.
  virtual Int64 CopyFrom(TStream* ASource, Int64 ACount);

protected:
  ~TStream() override = default;
};

/// A growing stream on memory that it owns.
class TMemoryStream : public TStream {
  LX_CLASS(TMemoryStream, TStream)
  TMemoryStream() = default;
  Int64 Read(void* ABuffer, Int64 ACount) override;
  Int64 Write(const void* ABuffer, Int64 ACount) override;
  Int64 Seek(Int64 AOffset, TSeekOrigin AOrigin) override;
  Int64 GetSize() override { return FSize; }
  void SetSize(Int64 ANewSize) override;
  void Clear();
  /// The content; valid until the next write or size change.
  Byte* Memory() noexcept { return FData.data(); }
  const Byte* Memory() const noexcept { return FData.data(); }
  void LoadFromStream(TStream* AStream);
  void SaveToStream(TStream* AStream);
  void LoadFromFile(const TFileName& AFileName);
  void SaveToFile(const TFileName& AFileName);

protected:
  ~TMemoryStream() override = default;

private:
  std::vector<Byte> FData; // capacity; FSize bytes of it are content
  Int64 FSize = 0;
  Int64 FPosition = 0;
};

// The platform's open modes: one access mode, or'ed with one share mode.
constexpr Word fmCreate = 0xFF00;
constexpr Word fmOpenRead = 0x0000;
constexpr Word fmOpenWrite = 0x0001;
constexpr Word fmOpenReadWrite = 0x0002;
constexpr Word fmShareCompat = 0x0000;
constexpr Word fmShareExclusive = 0x0010;
constexpr Word fmShareDenyWrite = 0x0020;
constexpr Word fmShareDenyRead = 0x0030;
constexpr Word fmShareDenyNone = 0x0040;

/// A stream on a file. fmCreate makes (or empties) the file; otherwise the low bits choose read,
/// write or both. Share flags are accepted and have no effect here. A file that can't be made
/// raises EFCreateError, one that can't be opened EFOpenError.
class TFileStream : public TStream {
  LX_CLASS(TFileStream, TStream)
  TFileStream(const TFileName& AFileName, Word AMode);
  Int64 Read(void* ABuffer, Int64 ACount) override;
  Int64 Write(const void* ABuffer, Int64 ACount) override;
  Int64 Seek(Int64 AOffset, TSeekOrigin AOrigin) override;
  void SetSize(Int64 ANewSize) override;
  const TFileName& FileName() const noexcept { return FFileName; }

protected:
  ~TFileStream() override;

private:
  TFileName FFileName;
  int FHandle = -1;
};

} // namespace lorvane
