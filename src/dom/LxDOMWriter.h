// The one routine through which all XML output goes, and the pieces of formatting.
#pragma once

#include "lorvane/platform/Streams.h"
#include "lorvane/platform/System.h"

#include <string_view>

namespace lorvane::domwriter {

/// AText in the code page: UTF-16 little-endian units as they are for 1200, converted otherwise.
/// Inside a TBufferedOutput for the same stream and code page the text is collected and goes out
/// in blocks.
void Write(TStream* AStream, Word AStreamCodePage, std::u16string_view AText);

/// Collects what is written to AStream in ACodePage during its life and writes it in blocks: one
/// conversion and one stream write per block instead of per piece. Finish writes the rest; a
/// failure on the way still writes what was collected before it (the destructor does, quietly).
class TBufferedOutput {
public:
  TBufferedOutput(TStream* AStream, Word ACodePage);
  ~TBufferedOutput();
  TBufferedOutput(const TBufferedOutput&) = delete;
  TBufferedOutput& operator=(const TBufferedOutput&) = delete;
  void Finish();
};

/// Writes what is collected for AStream, so that its position and size are those of the text.
void Flush(TStream* AStream);
/// UTF-16 units collected for AStream and not yet written.
std::size_t PendingUnits(TStream* AStream);
/// CR LF.
void WriteLineEnd(TStream* AStream, Word AStreamCodePage);
/// Two blanks per step.
void WriteIndent(TStream* AStream, Word AStreamCodePage, Integer ASteps);

} // namespace lorvane::domwriter
