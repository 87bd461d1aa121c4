// The writer that XML output of the tree goes through: one per save, handed down the walk.
#pragma once

#include "lorvane/platform/Streams.h"
#include "lorvane/platform/System.h"

#include <cstddef>
#include <cstring>
#include <string_view>

namespace lorvane {

/// Collects the text of one save in a fixed buffer and writes it to the stream, converted to the
/// code page, whenever the buffer is full and at Flush: one conversion and one stream write per
/// block instead of per piece. A piece is never split between blocks, so a surrogate pair that
/// one piece holds always reaches the conversion whole.
///
/// The save that makes a writer calls Flush before it returns, so that the stream holds all the
/// text. A save that fails leaves in the stream the blocks written before the failure; what is
/// still collected goes with the writer, so nothing of it reaches a later save.
class TLxDOMWriter {
public:
  TLxDOMWriter(TStream* AStream, Word ACodePage) noexcept
      : FStream(AStream), FCodePage(ACodePage) {}
  TLxDOMWriter(const TLxDOMWriter&) = delete;
  TLxDOMWriter& operator=(const TLxDOMWriter&) = delete;

  void Write(std::u16string_view AText) {
    if (AText.size() <= Capacity - FUsed) {
      std::memcpy(FUnits + FUsed, AText.data(), AText.size() * sizeof(char16_t));
      FUsed += AText.size();
      return;
    }
    WriteLong(AText);
  }
  /// CR LF.
  void WriteLineEnd() { Write(u"\r\n"); }
  /// Two blanks per step.
  void WriteIndent(Integer ASteps);
  /// Writes what is collected, so that the stream's position and size are those of the text.
  void Flush();

  /// UTF-16 units collected and not yet written.
  std::size_t PendingUnits() const noexcept { return FUsed; }
  TStream* Stream() const noexcept { return FStream; }
  Word CodePage() const noexcept { return FCodePage; }

private:
  /// A piece that doesn't fit: what is collected goes first, then the piece, whole.
  void WriteLong(std::u16string_view AText);

  static constexpr std::size_t Capacity = 4096;
  TStream* FStream;
  Word FCodePage;
  std::size_t FUsed = 0;
  char16_t FUnits[Capacity];
};

} // namespace lorvane
