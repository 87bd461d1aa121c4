// JSON output of the value tree: one loop over an explicit stack, text collected in blocks.
#include "json/LxJSONWriter.h"

#include "lorvane/classes/LxVariants.h"
#include "lorvane/core/LxEncoding.h"
#include "lorvane/json/LxJSONOutput.h"
#include "lorvane/json/LxJSONStrings.h"
#include "lorvane/types/LxMainTypeKind.h"
#include "lorvane/xmlutils/LxXMLValues.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

namespace lorvane::jsonwriter {

namespace {

constexpr std::size_t BlockSize = 32768;
constexpr bool IsHigh(char16_t AUnit) noexcept { return AUnit >= 0xD800 && AUnit <= 0xDBFF; }
constexpr bool IsLow(char16_t AUnit) noexcept { return AUnit >= 0xDC00 && AUnit <= 0xDFFF; }

// One code point as UTF-8 at AOut; the end of what was written.
char* PutUTF8(char32_t ACode, char* AOut) noexcept {
  if (ACode < 0x80) {
    *AOut++ = static_cast<char>(ACode);
  } else if (ACode < 0x800) {
    *AOut++ = static_cast<char>(0xC0 | (ACode >> 6));
    *AOut++ = static_cast<char>(0x80 | (ACode & 0x3F));
  } else if (ACode < 0x10000) {
    *AOut++ = static_cast<char>(0xE0 | (ACode >> 12));
    *AOut++ = static_cast<char>(0x80 | ((ACode >> 6) & 0x3F));
    *AOut++ = static_cast<char>(0x80 | (ACode & 0x3F));
  } else {
    *AOut++ = static_cast<char>(0xF0 | (ACode >> 18));
    *AOut++ = static_cast<char>(0x80 | ((ACode >> 12) & 0x3F));
    *AOut++ = static_cast<char>(0x80 | ((ACode >> 6) & 0x3F));
    *AOut++ = static_cast<char>(0x80 | (ACode & 0x3F));
  }
  return AOut;
}

constexpr char32_t Replacement = 0xFFFD;

} // namespace

template <class TUnit>
TBasicWriter<TUnit>::TBasicWriter(TStream* ATarget, bool AWriteMark)
    : FTarget(ATarget), FMarkPending(AWriteMark) {
  if (FTarget)
    Reserve(BlockSize + 1024);
}

template <class TUnit> void TBasicWriter<TUnit>::Reserve(std::size_t ACount) {
  if (FCapacity - FLength >= ACount)
    return;
  const std::size_t Capacity = std::max({FCapacity * 2, FLength + ACount, std::size_t{256}});
  std::unique_ptr<TUnit[]> Buffer(new TUnit[Capacity]);
  std::copy(FBuffer.get(), FBuffer.get() + FLength, Buffer.get());
  FBuffer = std::move(Buffer);
  FCapacity = Capacity;
  FLimit = FPendingHigh ? 0 : FCapacity;
}

template <class TUnit> void TBasicWriter<TUnit>::Grow(std::size_t ACount) {
  if (FPendingHigh)
    PutPendingHigh();
  Reserve(ACount);
}

template <class TUnit> void TBasicWriter<TUnit>::PutPendingHigh() {
  // Only UTF-8 output holds a surrogate back.
  if constexpr (std::is_same_v<TUnit, char>) {
    FPendingHigh = 0;
    FLimit = FCapacity;
    Reserve(3);
    FLength =
        static_cast<std::size_t>(PutUTF8(Replacement, FBuffer.get() + FLength) - FBuffer.get());
  }
}

template <class TUnit> void TBasicWriter<TUnit>::PutText(std::u16string_view AText) {
  if constexpr (std::is_same_v<TUnit, char16_t>) {
    Reserve(AText.size());
    std::copy(AText.begin(), AText.end(), FBuffer.get() + FLength);
    FLength += AText.size();
  } else {
    // As the UTF-8 adapter converts: pairs join, also across two texts; lone halves become
    // U+FFFD; a high surrogate at the end waits for what comes next.
    if (AText.empty())
      return;
    Reserve(AText.size() * 3 + 3);
    char* Out = FBuffer.get() + FLength;
    std::size_t At = 0;
    if (FPendingHigh) {
      const char16_t High = std::exchange(FPendingHigh, 0);
      FLimit = FCapacity;
      if (IsLow(AText[0])) {
        Out = PutUTF8(0x10000 + ((char32_t(High) - 0xD800) << 10) + (AText[0] - 0xDC00), Out);
        At = 1;
      } else {
        Out = PutUTF8(Replacement, Out);
      }
    }
    for (; At < AText.size(); ++At) {
      const char16_t C = AText[At];
      if (IsHigh(C)) {
        if (At + 1 == AText.size()) {
          FPendingHigh = C;
          FLimit = 0;
        } else if (IsLow(AText[At + 1])) {
          Out = PutUTF8(0x10000 + ((char32_t(C) - 0xD800) << 10) + (AText[At + 1] - 0xDC00), Out);
          ++At;
        } else {
          Out = PutUTF8(Replacement, Out);
        }
      } else {
        Out = PutUTF8(IsLow(C) ? Replacement : char32_t(C), Out);
      }
    }
    FLength = static_cast<std::size_t>(Out - FBuffer.get());
  }
}

template <class TUnit> void TBasicWriter<TUnit>::Flush() {
  if (!FTarget || FLength == 0)
    return;
  // Emptied first: a failing stream must not be handed the same text again.
  const std::size_t Length = std::exchange(FLength, 0);
  if (FMarkPending) {
    FMarkPending = false;
    FTarget->WriteBuffer(cLxUTF8.data(), static_cast<Int64>(cLxUTF8.size()));
  }
  FTarget->WriteBuffer(FBuffer.get(), static_cast<Int64>(Length * sizeof(TUnit)));
}

template <class TUnit> void TBasicWriter<TUnit>::Finish() {
  if (FPendingHigh)
    PutPendingHigh();
}

template <class TUnit>
void TBasicWriter<TUnit>::Write(TLxJSONBase* AValue, bool AFormatted, Integer ADepth,
                                bool AAddLeadingSpace) {
  FFormatted = AFormatted;
  FStack.clear();
  Open(AValue, ADepth, AAddLeadingSpace);
  while (!FStack.empty()) {
    // The children of the innermost open value in one loop; a child that opens a frame of its
    // own interrupts it, and the loop resumes here when that one is done.
    TFrame& Top = FStack.back();
    TLxJSONBase* const* Children = Top.Node->FObjects.begin();
    const std::size_t Count = Top.Node->FObjects.size();
    const Integer Depth = Top.Depth;
    bool Opened = false;
    if (Top.Bracketed) {
      for (std::size_t Index = Top.Next; Index < Count; ++Index) {
        if (FTarget && FLength >= BlockSize)
          Flush();
        if (Index > 0)
          Put(u", ");
        // Only the first entry is indented: the entries of one level share a line.
        if (Open(Children[Index], Depth + 1, Index == 0)) {
          // Top is gone with the push: the frame below is found again by its index.
          FStack[FStack.size() - 2].Next = Index + 1;
          Opened = true;
          break;
        }
      }
    } else {
      const bool LeadingSpace = Top.AddLeadingSpace;
      for (std::size_t Index = Top.Next; Index < Count; ++Index) {
        if (FTarget && FLength >= BlockSize)
          Flush();
        if (Open(Children[Index], Depth, LeadingSpace)) {
          FStack[FStack.size() - 2].Next = Index + 1;
          Opened = true;
          break;
        }
      }
    }
    if (Opened)
      continue;
    if (FStack.back().Bracketed)
      Close(FStack.back());
    FStack.pop_back();
  }
}

template <class TUnit>
bool TBasicWriter<TUnit>::Open(TLxJSONBase* ANode, Integer ADepth, bool AAddLeadingSpace) {
  // A path's result lists nil for "$" on a document without a root.
  if (!ANode) {
    if (AAddLeadingSpace)
      WritePad(ADepth);
    Put(u"null");
    return false;
  }
  for (;;) {
    switch (ANode->FKind) {
    case TLxJSONBase::TKind::Simple:
      if (AAddLeadingSpace)
        WritePad(ADepth);
      WriteSimple(static_cast<TLxJSONSimpleType*>(ANode));
      return false;
    case TLxJSONBase::TKind::Member: {
      auto* Member = static_cast<TLxJSONMember*>(ANode);
      if (AAddLeadingSpace)
        WritePad(ADepth);
      PutName(Member->FName);
      if (!Member->FValue) {
        Put(u"null");
        return false;
      }
      ANode = Member->FValue;
      AAddLeadingSpace = false;
      continue;
    }
    case TLxJSONBase::TKind::Object:
    case TLxJSONBase::TKind::Array: {
      const bool IsObject = ANode->FKind == TLxJSONBase::TKind::Object;
      if (AAddLeadingSpace)
        WritePad(ADepth);
      if (FFormatted)
        Put(IsObject ? u"{ \r\n" : u"[\r\n");
      else
        Put(IsObject ? u'{' : u'[');
      FStack.push_back({ANode, 0, ADepth, AAddLeadingSpace, true});
      return true;
    }
    default:
      FStack.push_back({ANode, 0, ADepth, AAddLeadingSpace, false});
      return true;
    }
  }
}

template <class TUnit> void TBasicWriter<TUnit>::Close(const TFrame& AFrame) {
  if (FFormatted) {
    Put(u"\r\n");
    WritePad(AFrame.Depth);
  }
  Put(AFrame.Node->FKind == TLxJSONBase::TKind::Object ? u'}' : u']');
}

template <class TUnit> void TBasicWriter<TUnit>::PutName(const TJSONName& AName) {
  constexpr std::size_t Slots = 256, Room = sizeof(TNameEntry::Text) / sizeof(TUnit);
  const void* Key = AName.Identity();
  if (!FNames)
    FNames.reset(new TNameEntry[Slots]);
  const std::uintptr_t Bits = reinterpret_cast<std::uintptr_t>(Key);
  TNameEntry& Entry = FNames[((Bits >> 4) ^ (Bits >> 12)) % Slots];
  if (Key && Entry.Key == Key) {
    // The whole room in one copy of fixed size.
    std::memcpy(this->Room(Room), Entry.Text, sizeof Entry.Text);
    FLength += Entry.Length;
    return;
  }
  // Kept from the quote on: anything the writer puts out before it isn't part of the name.
  Put(u'"');
  const std::size_t Start = FLength - 1;
  WriteEscaped(AName.View());
  Put(u"\": ");
  const std::size_t Length = FLength - Start;
  if (Key && Length <= Room) {
    Entry.Key = Key;
    Entry.Length = Length;
    std::copy(FBuffer.get() + Start, FBuffer.get() + FLength, Entry.Text);
  }
}

template <class TUnit> void TBasicWriter<TUnit>::WritePad(Integer ADepth) {
  if (FFormatted && ADepth > 0) {
    const std::size_t Count = static_cast<std::size_t>(ADepth) * 2;
    std::fill_n(Room(Count), Count, TUnit(' '));
    FLength += Count;
  }
}

template <class TUnit>
template <class Unit>
inline void TBasicWriter<TUnit>::WriteEscaped(const Unit* AText, std::size_t ALength) {
  // In pieces, so that a long text doesn't ask for six times its size at once.
  constexpr std::size_t Piece = 4096;
  if (ALength <= Piece) {
    FLength =
        static_cast<std::size_t>(EscapeInto(Room(ALength * 6), AText, ALength) - FBuffer.get());
    return;
  }
  while (ALength > 0) {
    const std::size_t Count = std::min(ALength, Piece);
    FLength = static_cast<std::size_t>(EscapeInto(Room(Count * 6), AText, Count) - FBuffer.get());
    AText += Count;
    ALength -= Count;
  }
}

template <class TUnit> void TBasicWriter<TUnit>::PutShort(const TLxJSONSimpleType* AValue) {
  // The whole buffer, copied in a loop of fixed length: no branch to guess per text.
  constexpr std::size_t Capacity = TLxJSONSimpleType::ShortCapacity;
  TUnit* Out = Room(Capacity);
  for (std::size_t I = 0; I < Capacity; ++I)
    Out[I] = static_cast<TUnit>(static_cast<unsigned char>(AValue->FShort[I]));
  if constexpr (std::is_same_v<TUnit, char>) {
    // A byte from 0x80 on stands for a unit that takes two bytes in UTF-8: rare in a number.
    std::uint64_t Words[Capacity / 8];
    std::memcpy(Words, AValue->FShort, Capacity);
    std::uint64_t High = 0;
    for (std::size_t I = 0; I < Capacity / 8; ++I) {
      const std::size_t Rest =
          AValue->FShortLength - std::min<std::size_t>(AValue->FShortLength, I * 8);
      const std::uint64_t Mask =
          Rest >= 8 ? ~std::uint64_t{0} : (std::uint64_t{1} << (Rest * 8)) - 1;
      High |= Words[I] & Mask;
    }
    if (High & 0x8080808080808080u) {
      Reserve(AValue->FShortLength * 2);
      Out = FBuffer.get() + FLength;
      for (std::size_t I = 0; I < AValue->FShortLength; ++I) {
        const auto C = static_cast<unsigned char>(AValue->FShort[I]);
        Out = PutUTF8(C, Out);
      }
      FLength = static_cast<std::size_t>(Out - FBuffer.get());
      return;
    }
  }
  FLength += AValue->FShortLength;
}

template <class TUnit> void TBasicWriter<TUnit>::WriteSimple(TLxJSONSimpleType* AValue) {
  if (AValue->HoldsShortText()) {
    // Text as it was read: a string escaped in quotes, anything else unexamined.
    switch (AValue->FJSONType) {
    case jdtNull:
      Put(u"null");
      return;
    case jdtString:
      Put(u'"');
      WriteEscaped(AValue->FShort, AValue->FShortLength);
      Put(u'"');
      return;
    case jdtNumber:
    case jdtBoolean:
      PutShort(AValue);
      return;
    default:
      throw ELxJSONException(_cLxJSONUnexpectedType, cLxJSONErrUnexpectedType);
    }
  }
  const Variant& Value = AValue->FValue;
  const TLxMainTypeKind Kind = VarMainTypeKind(Value);
  // A byte string is decoded; wide text is read where it lies.
  UnicodeString Decoded;
  std::u16string_view Text;
  if (Kind == lmkString) {
    if (VarType(Value) == varString) {
      Decoded = Value.AsString();
      Text = Decoded;
    } else {
      Text = VarWideTextView(Value);
    }
  }
  switch (AValue->FJSONType) {
  case jdtNull:
    Put(u"null");
    return;
  case jdtString:
    Put(u'"');
    // A date goes out as LxVarToJSON writes it, in its XML form without zone.
    if (Kind == lmkDateTime)
      PutText(LxDateTimeToXML(Value.AsDateTime(), tzfNone));
    else if (Kind == lmkString)
      WriteEscaped(Text);
    else
      WriteEscaped(LxVarToStr(Value, u"", /*ARaiseError=*/false));
    Put(u'"');
    return;
  case jdtNumber:
    // Text as it was read goes out unexamined, "1.50" as "1.50".
    if (Kind == lmkString)
      PutText(Text);
    else
      PutText(LxVarToJSON(Value));
    return;
  case jdtBoolean:
    if (Kind == lmkString)
      PutText(Text);
    else
      Put(LxVarToBool(Value, /*ADefault=*/false, /*ARaiseError=*/false) ? u"true" : u"false");
    return;
  default:
    throw ELxJSONException(_cLxJSONUnexpectedType, cLxJSONErrUnexpectedType);
  }
}

template class TBasicWriter<char16_t>;
template class TBasicWriter<char>;

void SaveValue(TLxJSONBase* AValue, TStream* AStream, bool AFormatted, Integer ADepth,
               bool AAddLeadingSpace) {
  TWriter Writer(AStream);
  try {
    Writer.Write(AValue, AFormatted, ADepth, AAddLeadingSpace);
  } catch (...) {
    try {
      Writer.Flush();
    } catch (...) {
      // The failure that brought us here is the one the caller sees.
    }
    throw;
  }
  Writer.Flush();
}

void SaveValueUTF8(TLxJSONBase* AValue, TStream* AStream, bool AFormatted, bool AWriteMark) {
  TUTF8Writer Writer(AStream, AWriteMark);
  // Whatever fails, the text ends as the adapter ends it when it is freed.
  auto FinishQuietly = [&Writer] {
    try {
      Writer.Finish();
      Writer.Flush();
    } catch (...) {
      // The failure that brought us here is the one the caller sees.
    }
  };
  try {
    Writer.Write(AValue, AFormatted, /*ADepth=*/0, /*AAddLeadingSpace=*/false);
  } catch (...) {
    try {
      Writer.Flush();
    } catch (...) {
    }
    FinishQuietly();
    throw;
  }
  try {
    Writer.Flush();
  } catch (...) {
    FinishQuietly();
    throw;
  }
  Writer.Finish();
  Writer.Flush();
}

UnicodeString TextOf(TLxJSONBase* AValue, bool AFormatted) {
  TWriter Writer(/*ATarget=*/nullptr);
  Writer.Write(AValue, AFormatted, /*ADepth=*/0, /*AAddLeadingSpace=*/false);
  return UnicodeString(Writer.Text());
}

} // namespace lorvane::jsonwriter
