// The one writer of the JSON value tree: a walk over an explicit stack that collects text, UTF-16
// or UTF-8, and hands it on in blocks.
#pragma once

#include "lorvane/json/LxJSONValues.h"
#include "json/internal/JSONEscape.h"

#include <memory>
#include <string_view>
#include <vector>

namespace lorvane::jsonwriter {

/// Writes values as the tree's SaveToStream describes, in units of TUnit: char16_t for UTF-16,
/// char for UTF-8 bytes. With a target stream the text goes there in blocks (Flush writes the
/// rest); without one it stays in Text().
template <class TUnit> class TBasicWriter {
public:
  /// AWriteMark (UTF-8 only): the byte order mark goes out just before the first bytes.
  explicit TBasicWriter(TStream* ATarget, bool AWriteMark = false);
  TBasicWriter(const TBasicWriter&) = delete;
  TBasicWriter& operator=(const TBasicWriter&) = delete;

  void Write(TLxJSONBase* AValue, bool AFormatted, Integer ADepth, bool AAddLeadingSpace);
  void Flush();
  /// Ends the text: a high surrogate still waiting for its low half goes out as U+FFFD, as the
  /// UTF-8 stream adapter ends it.
  void Finish();
  /// What was collected and not flushed.
  std::basic_string_view<TUnit> Text() const { return {FBuffer.get(), FLength}; }

private:
  struct TFrame {
    TLxJSONBase* Node;
    std::size_t Next;
    Integer Depth;
    bool AddLeadingSpace;
    bool Bracketed; // an object or array; else the children follow each other as they are
  };

  /// Writes ANode, or its start when it has children to visit: then true, with its frame pushed.
  bool Open(TLxJSONBase* ANode, Integer ADepth, bool AAddLeadingSpace);
  void Close(const TFrame& AFrame);
  void WriteSimple(TLxJSONSimpleType* AValue);
  /// Escaped: the units of a UTF-16 text, or units below U+0100 of one byte each.
  template <class Unit>
  [[gnu::always_inline]] void WriteEscaped(const Unit* AText, std::size_t ALength);
  void WriteEscaped(std::u16string_view AText) { WriteEscaped(AText.data(), AText.size()); }
  /// The short text of AValue, one unit per byte.
  void PutShort(const TLxJSONSimpleType* AValue);
  void WritePad(Integer ADepth);
  /// A member's name in quotes with the colon and blank behind it; the text of names met lately
  /// is kept, so that the many members that share a name copy it instead of escaping it again.
  void PutName(const TJSONName& AName);
  /// Where the next ACount units go: the text is collected in a buffer of our own, written to by
  /// pointer, which a string's appends can't match for the many short pieces of JSON.
  TUnit* Room(std::size_t ACount) {
    // FLimit is 0 while a high surrogate waits: what follows here is never its low half, so the
    // slow road puts out U+FFFD first and the fast one needs no test of its own.
    if (FLength + ACount > FLimit)
      Grow(ACount);
    return FBuffer.get() + FLength;
  }
  void Grow(std::size_t ACount);
  void Reserve(std::size_t ACount);
  /// ASCII text that the writer itself makes.
  void Put(std::u16string_view AText) {
    TUnit* Out = Room(AText.size());
    for (const char16_t C : AText)
      *Out++ = static_cast<TUnit>(C);
    FLength += AText.size();
  }
  void Put(char16_t AChar) {
    *Room(1) = static_cast<TUnit>(AChar);
    ++FLength;
  }
  /// Any text, encoded: a value's own text, which may hold any unit.
  void PutText(std::u16string_view AText);
  void PutPendingHigh();

  TStream* FTarget;
  bool FMarkPending;
  bool FFormatted = false;
  char16_t FPendingHigh = 0;
  std::unique_ptr<TUnit[]> FBuffer;
  std::size_t FLength = 0, FCapacity = 0, FLimit = 0;
  std::vector<TFrame> FStack;
  struct TNameEntry {
    const void* Key = nullptr;
    std::size_t Length;
    TUnit Text[48];
  };
  std::unique_ptr<TNameEntry[]> FNames;
};

using TWriter = TBasicWriter<char16_t>;
using TUTF8Writer = TBasicWriter<char>;

/// SaveToStream of the tree's classes: on a failure, what was collected before it is still
/// written.
void SaveValue(TLxJSONBase* AValue, TStream* AStream, bool AFormatted, Integer ADepth,
               bool AAddLeadingSpace);
/// As SaveValue from depth 0 without leading space, in UTF-8 straight to AStream: the bytes that
/// the UTF-8 stream adapter would make of SaveValue's text, byte order mark included.
void SaveValueUTF8(TLxJSONBase* AValue, TStream* AStream, bool AFormatted, bool AWriteMark);
/// The text of AValue from depth 0 without leading space.
UnicodeString TextOf(TLxJSONBase* AValue, bool AFormatted);

} // namespace lorvane::jsonwriter
