// Streams for tests: one that hands out its bytes in small pieces, and one that can't seek back.
#pragma once

#include "lorvane/platform/Streams.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace lorvane::test {

/// A stream over a byte string that gives at most AChunk bytes per Read, so that a reader on it
/// refills its buffer often. Without ASeekable, only asking for the position works.
class TChunkedStream : public TStream {
  LX_CLASS(TChunkedStream, TStream)
  TChunkedStream(std::string ABytes, Int64 AChunk, bool ASeekable = true)
      : FBytes(std::move(ABytes)), FChunk(AChunk), FSeekable(ASeekable) {}

  Int64 Read(void* ABuffer, Int64 ACount) override {
    const Int64 Count =
        std::max<Int64>(0, std::min({ACount, FChunk, Int64(FBytes.size()) - FPosition}));
    if (Count > 0)
      std::memcpy(ABuffer, FBytes.data() + FPosition, static_cast<std::size_t>(Count));
    FPosition += Count;
    return Count;
  }
  Int64 Write(const void*, Int64) override { return 0; }
  Int64 Seek(Int64 AOffset, TSeekOrigin AOrigin) override {
    if (AOrigin == soCurrent && AOffset == 0)
      return FPosition;
    if (!FSeekable)
      return -1;
    const Int64 Base = AOrigin == soBeginning ? 0
                       : AOrigin == soCurrent ? FPosition
                                              : Int64(FBytes.size());
    FPosition = std::max<Int64>(0, Base + AOffset);
    return FPosition;
  }

protected:
  ~TChunkedStream() override = default;

private:
  std::string FBytes;
  Int64 FChunk;
  bool FSeekable;
  Int64 FPosition = 0;
};

/// The bytes of a UTF-16 text in little-endian order.
inline std::string Utf16Bytes(std::u16string_view AText) {
  std::string Bytes(AText.size() * 2, '\0');
  for (std::size_t I = 0; I < AText.size(); ++I) {
    Bytes[2 * I] = static_cast<char>(AText[I] & 0xFF);
    Bytes[2 * I + 1] = static_cast<char>(AText[I] >> 8);
  }
  return Bytes;
}

} // namespace lorvane::test
