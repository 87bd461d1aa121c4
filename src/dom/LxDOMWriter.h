// The one routine through which all XML output goes, and the pieces of formatting.
#pragma once

#include "lorvane/platform/Streams.h"

#include <string_view>

namespace lorvane::domwriter {

/// AText in the code page: UTF-16 little-endian units as they are for 1200, converted otherwise.
void Write(TStream* AStream, Word AStreamCodePage, std::u16string_view AText);
/// CR LF.
void WriteLineEnd(TStream* AStream, Word AStreamCodePage);
/// Two blanks per step.
void WriteIndent(TStream* AStream, Word AStreamCodePage, Integer ASteps);

} // namespace lorvane::domwriter
