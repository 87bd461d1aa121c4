// The one writer of the JSON value tree: a walk over an explicit stack that collects UTF-16 text
// and hands it on in blocks.
#pragma once

#include "lorvane/json/LxJSONValues.h"

#include <memory>
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
  /// What was collected and not flushed.
  UnicodeString Text() const { return UnicodeString(FBuffer.get(), FLength); }

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
  /// Escaped: the units of a UTF-16 text, or units below U+0100 of one byte each.
  template <class Unit> void WriteEscaped(const Unit* AText, std::size_t ALength);
  void WriteEscaped(std::u16string_view AText) { WriteEscaped(AText.data(), AText.size()); }
  /// The short text of AValue, widened.
  void PutShort(const TLxJSONSimpleType* AValue);
  void WritePad(Integer ADepth);
  /// Where the next ACount units go: the text is collected in a buffer of our own, written to by
  /// pointer, which a string's appends can't match for the many short pieces of JSON.
  char16_t* Room(std::size_t ACount) {
    if (FCapacity - FLength < ACount)
      Grow(ACount);
    return FBuffer.get() + FLength;
  }
  void Grow(std::size_t ACount);
  void Put(std::u16string_view AText) {
    std::copy(AText.begin(), AText.end(), Room(AText.size()));
    FLength += AText.size();
  }
  void Put(char16_t AChar) {
    *Room(1) = AChar;
    ++FLength;
  }

  TStream* FTarget;
  bool FFormatted = false;
  std::unique_ptr<char16_t[]> FBuffer;
  std::size_t FLength = 0, FCapacity = 0;
  std::vector<TFrame> FStack;
};

/// AText escaped as AppendJSONEscaped escapes it, written at AOut, which has room for six units
/// per unit of AText; the end of what was written. The narrow form takes bytes as the units
/// below U+0100.
char16_t* EscapeInto(char16_t* AOut, const char16_t* AText, std::size_t ALength) noexcept;
char16_t* EscapeInto(char16_t* AOut, const char* AText, std::size_t ALength) noexcept;

/// SaveToStream of the tree's classes: on a failure, what was collected before it is still
/// written.
void SaveValue(TLxJSONBase* AValue, TStream* AStream, bool AFormatted, Integer ADepth,
               bool AAddLeadingSpace);
/// The text of AValue from depth 0 without leading space.
UnicodeString TextOf(TLxJSONBase* AValue, bool AFormatted);

} // namespace lorvane::jsonwriter
