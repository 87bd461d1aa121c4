// The one writer of the JSON value tree: a walk over an explicit stack that collects UTF-16 text
// and hands it on in blocks.
#pragma once

#include "lorvane/json/LxJSONValues.h"

#include <string_view>
#include <vector>

namespace lorvane::jsonwriter {

/// Writes values as the tree's SaveToStream describes. With a target stream the text goes there
/// in blocks (Flush writes the rest); without one it stays in Text().
class TWriter {
public:
  explicit TWriter(TStream* ATarget);
  TWriter(const TWriter&) = delete;
  TWriter& operator=(const TWriter&) = delete;

  void Write(TLxJSONBase* AValue, bool AFormatted, Integer ADepth, bool AAddLeadingSpace);
  void Flush();
  UnicodeString& Text() noexcept { return FText; }

private:
  struct TFrame {
    TLxJSONBase* Node;
    std::size_t Next;
    Integer Depth;
    bool AddLeadingSpace;
    bool Bracketed; // an object or array; else the children follow each other as they are
  };

  void Open(TLxJSONBase* ANode, Integer ADepth, bool AAddLeadingSpace);
  void Close(const TFrame& AFrame);
  void WriteSimple(TLxJSONSimpleType* AValue);
  void WriteEscaped(std::u16string_view AText);
  /// Units of one byte each, widened.
  void PutNarrow(const char* AText, std::size_t ALength);
  void WritePad(Integer ADepth);
  void Put(std::u16string_view AText) { FText.append(AText); }
  void Put(char16_t AChar) { FText.push_back(AChar); }

  TStream* FTarget;
  bool FFormatted = false;
  UnicodeString FText;
  std::vector<TFrame> FStack;
};

/// SaveToStream of the tree's classes: on a failure, what was collected before it is still
/// written.
void SaveValue(TLxJSONBase* AValue, TStream* AStream, bool AFormatted, Integer ADepth,
               bool AAddLeadingSpace);
/// The text of AValue from depth 0 without leading space.
UnicodeString TextOf(TLxJSONBase* AValue, bool AFormatted);

} // namespace lorvane::jsonwriter
