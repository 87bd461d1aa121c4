/// Streams of the core, through which all text of the library passes:
///   TLxMemoryStream       a stream face on a caller's block of memory, or a growing buffer
///   TLxStringStream       the string builder: text in a code page fixed at construction
///   TLxUTF8StreamAdapter  takes UTF-16 bytes and writes UTF-8 to another stream
#pragma once

#include "lorvane/platform/Streams.h"

#include <string_view>

namespace lorvane {

/// A stream over memory. Over a caller's block the stream never moves, grows or frees the block;
/// the block must outlive the stream. On memory of its own it grows as it is written.
class TLxMemoryStream : public TStream {
  LX_CLASS(TLxMemoryStream, TStream)
  /// Over a writable block of ASize bytes; position 0, size ASize. A write stays inside the
  /// block: past its end a Write writes up to the end and gives the shorter count, so that
  /// WriteBuffer raises EWriteError "Stream write error".
  TLxMemoryStream(void* AAddress, Int64 ASize);
  /// Over a read-only block: as above, and every Write gives 0.
  TLxMemoryStream(const void* AAddress, Int64 ASize);
  /// Empty, on memory of its own with room for ACapacity bytes before it first grows.
  explicit TLxMemoryStream(Int64 ACapacity);

  Int64 Read(void* ABuffer, Int64 ACount) override;
  Int64 Write(const void* ABuffer, Int64 ACount) override;
  /// A position below 0 becomes 0; one behind the end is allowed, and a write there fills the
  /// gap with zeros (on own memory).
  Int64 Seek(Int64 AOffset, TSeekOrigin AOrigin) override;
  Int64 GetSize() override { return FSize; }
  /// On own memory any size, new bytes zero. Over a block at most the block's size; more raises
  /// EStreamError "Stream size can't be changed".
  void SetSize(Int64 ANewSize) override;

  /// Writes the 16-bit value in little-endian order at the position (a character in 1200).
  void WriteWord(Word AValue) {
    if (FPosition <= FSize && FWriteLimit - FPosition >= 2) {
      FMemory[FPosition] = static_cast<Byte>(AValue);
      FMemory[FPosition + 1] = static_cast<Byte>(AValue >> 8);
      FPosition += 2;
      if (FPosition > FSize)
        FSize = FPosition;
      return;
    }
    WriteWordSlow(AValue);
  }

  /// The content: the caller's block, or own memory, which moves when it grows.
  Byte* Memory() noexcept { return FMemory; }
  const Byte* Memory() const noexcept { return FMemory; }
  bool OwnsMemory() const noexcept { return FOwnsMemory; }

protected:
  ~TLxMemoryStream() override;

  /// Own memory only: makes room for ACount bytes at the position (filling a gap behind the end
  /// with zeros) and gives their address; CommitWrite then moves on by the bytes written.
  Byte* PrepareWrite(Int64 ACount);
  void CommitWrite(Int64 ACount) noexcept {
    FPosition += ACount;
    if (FPosition > FSize)
      FSize = FPosition;
  }

  Byte* FMemory = nullptr;
  Int64 FSize = 0;
  Int64 FPosition = 0;
  /// Bytes that can be written without growing: the capacity of own memory, the size of a
  /// writable block, 0 for a read-only block.
  Int64 FWriteLimit = 0;
  bool FOwnsMemory = false;

private:
  Int64 FCapacity = 0; // of own memory, or the size of the caller's block
  void WriteWordSlow(Word AValue);
  void Reserve(Int64 ACapacity);
};

/// A string builder on memory of its own, in a code page fixed at construction (0 is the
/// process default). Add and AddChar append at the end of the content, whatever the position,
/// and leave the position there; the inherited Write copies raw bytes at the position.
/// On 65001 (and every code page but 1200) a high surrogate at the end of one Add and the low
/// surrogate at the start of the next still make one character; until the low half comes, a
/// lone high surrogate stands in the content as its replacement (U+FFFD in UTF-8, '?' else).
class TLxStringStream : public TLxMemoryStream {
  LX_CLASS(TLxStringStream, TLxMemoryStream)
  /// Empty, with room for ACapacity bytes.
  TLxStringStream(Word ACodePage, Int64 ACapacity);
  /// Holds a copy of the string's characters; code page 1200; position 0.
  explicit TLxStringStream(std::u16string_view AString);
  /// Holds a copy of the bytes, which are in ACodePage; position 0.
  TLxStringStream(std::string_view AString, Word ACodePage);
  /// Holds a copy of ALength bytes at AAddress, which are in ACodePage; position 0.
  TLxStringStream(const void* AAddress, Integer ALength, Word ACodePage);

  Word GetCodePage() const noexcept { return FCodePage; }

  /// Appends the text converted from UTF-16 to the stream's code page.
  void Add(std::u16string_view AString);
  /// Appends the bytes without conversion.
  void Add(std::string_view AString);
  /// As Add for one character; 1200 and ASCII on 65001 take no call.
  void AddChar(WideChar AChar) {
    if (FForm == TTextForm::Wide) {
      FPosition = FSize;
      WriteWord(AChar);
      return;
    }
    if (FForm == TTextForm::UTF8 && AChar < 0x80 && FSize < FWriteLimit) {
      FMemory[FSize++] = static_cast<Byte>(AChar);
      FPosition = FSize;
      return;
    }
    AddCharSlow(AChar);
  }

  /// The whole content decoded from the stream's code page.
  UnicodeString GetWString() const;
  UnicodeString GetAsString() const { return GetWString(); }
  /// The whole content as bytes, unconverted.
  RawByteString GetAString() const;
  /// The whole content, one character for each byte (for ASCII data such as Base64 text).
  UnicodeString GetDataString() const;
  /// The whole content as UTF-8.
  RawByteString GetAsUTF8() const;
  /// The whole content in ACodePage (meant for a stream in 1200; any stream's text converts).
  RawByteString StringData(Word ACodePage) const;

  Int64 Write(const void* ABuffer, Int64 ACount) override;
  Int64 Seek(Int64 AOffset, TSeekOrigin AOrigin) override;
  void SetSize(Int64 ANewSize) override;

protected:
  ~TLxStringStream() override = default;

private:
  enum class TTextForm : Byte { Wide, UTF8, Other };
  static TTextForm FormOf(Word ACodePage) noexcept;

  void AddCharSlow(WideChar AChar);
  void AppendText(std::u16string_view AText);
  void AppendEncoded(std::u16string_view AText);
  void AppendBytes(const void* ABytes, Int64 ACount);

  Word FCodePage;
  TTextForm FForm;
  // A high surrogate that ended the last Add, and where its stand-in lies.
  char16_t FPendingHigh = 0;
  Int64 FPendingStart = 0;
  Int64 FPendingEnd = 0;
};

/// Takes UTF-16 bytes (little endian) through Write or CopyFrom and writes them as UTF-8 to the
/// target at the target's position. A surrogate pair or a UTF-16 unit split across two writes
/// comes out whole; a lone surrogate becomes U+FFFD. Write-only: Read raises EStreamError, and
/// Seek can only report the count of bytes taken.
class TLxUTF8StreamAdapter : public TStream {
  LX_CLASS(TLxUTF8StreamAdapter, TStream)
  /// AOwnsTarget: Free frees the target too. AWriteMark: cLxUTF8 goes to the target once, just
  /// before the first bytes (at the first Write of at least one byte).
  TLxUTF8StreamAdapter(TStream* ATarget, bool AOwnsTarget, bool AWriteMark);

  /// Raises EStreamError "The UTF-8 adapter can only be written".
  Int64 Read(void* ABuffer, Int64 ACount) override;
  /// Takes all ACount bytes and gives ACount; a failing target raises what its WriteBuffer does.
  Int64 Write(const void* ABuffer, Int64 ACount) override;
  /// Gives the count of UTF-16 bytes taken so far; any seek that would move raises EStreamError
  /// "The UTF-8 adapter can't seek".
  Int64 Seek(Int64 AOffset, TSeekOrigin AOrigin) override;

  /// Ends the text: a high surrogate still waiting for its low half goes out as U+FFFD, half a
  /// UTF-16 unit is dropped. Free does it too, but can't report a failing target; call Flush
  /// first where that matters.
  void Flush();
  TStream* GetTarget() const noexcept { return FTarget; }

protected:
  void BeforeDestruction() override;
  ~TLxUTF8StreamAdapter() override;

private:
  TStream* FTarget;
  bool FOwnsTarget;
  bool FMarkPending;
  bool FHasOddByte = false;
  Byte FOddByte = 0;
  char16_t FPendingHigh = 0;
  Int64 FTaken = 0;
};

} // namespace lorvane
