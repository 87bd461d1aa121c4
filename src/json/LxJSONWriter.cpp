// JSON output of the value tree: one loop over an explicit stack, text collected in blocks.
#include "json/LxJSONWriter.h"

#include "lorvane/classes/LxVariants.h"
#include "lorvane/json/LxJSONOutput.h"
#include "lorvane/json/LxJSONStrings.h"
#include "lorvane/types/LxMainTypeKind.h"
#include "lorvane/xmlutils/LxXMLValues.h"

#include <algorithm>
#include <utility>

namespace lorvane::jsonwriter {

namespace {

constexpr std::size_t BlockSize = 32768;

} // namespace

TWriter::TWriter(TStream* ATarget) : FTarget(ATarget) {
  if (FTarget)
    Grow(BlockSize + 1024);
}

void TWriter::Grow(std::size_t ACount) {
  const std::size_t Capacity = std::max({FCapacity * 2, FLength + ACount, std::size_t{256}});
  std::unique_ptr<char16_t[]> Buffer(new char16_t[Capacity]);
  std::copy(FBuffer.get(), FBuffer.get() + FLength, Buffer.get());
  FBuffer = std::move(Buffer);
  FCapacity = Capacity;
}

void TWriter::Flush() {
  if (!FTarget || FLength == 0)
    return;
  // Emptied first: a failing stream must not be handed the same text again.
  const std::size_t Length = std::exchange(FLength, 0);
  FTarget->WriteBuffer(FBuffer.get(), static_cast<Int64>(Length * sizeof(char16_t)));
}

void TWriter::Write(TLxJSONBase* AValue, bool AFormatted, Integer ADepth, bool AAddLeadingSpace) {
  FFormatted = AFormatted;
  FStack.clear();
  Open(AValue, ADepth, AAddLeadingSpace);
  while (!FStack.empty()) {
    if (FTarget && FLength >= BlockSize)
      Flush();
    TFrame& Top = FStack.back();
    const TJSONChildList& Children = Top.Node->FObjects;
    if (Top.Next < Children.size()) {
      const std::size_t Index = Top.Next++;
      if (Top.Bracketed) {
        if (Index > 0)
          Put(u", ");
        // Only the first entry is indented: the entries of one level share a line.
        Open(Children[Index], Top.Depth + 1, Index == 0);
      } else {
        Open(Children[Index], Top.Depth, Top.AddLeadingSpace);
      }
      continue;
    }
    if (Top.Bracketed)
      Close(Top);
    FStack.pop_back();
  }
}

void TWriter::Open(TLxJSONBase* ANode, Integer ADepth, bool AAddLeadingSpace) {
  for (;;) {
    switch (ANode->FKind) {
    case TLxJSONBase::TKind::Simple:
      if (AAddLeadingSpace)
        WritePad(ADepth);
      WriteSimple(static_cast<TLxJSONSimpleType*>(ANode));
      return;
    case TLxJSONBase::TKind::Member: {
      auto* Member = static_cast<TLxJSONMember*>(ANode);
      if (AAddLeadingSpace)
        WritePad(ADepth);
      Put(u'"');
      WriteEscaped(Member->FName.View());
      Put(u"\": ");
      if (!Member->FValue) {
        Put(u"null");
        return;
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
      return;
    }
    default:
      FStack.push_back({ANode, 0, ADepth, AAddLeadingSpace, false});
      return;
    }
  }
}

void TWriter::Close(const TFrame& AFrame) {
  if (FFormatted) {
    Put(u"\r\n");
    WritePad(AFrame.Depth);
  }
  Put(AFrame.Node->FKind == TLxJSONBase::TKind::Object ? u'}' : u']');
}

void TWriter::WritePad(Integer ADepth) {
  if (FFormatted && ADepth > 0) {
    const std::size_t Count = static_cast<std::size_t>(ADepth) * 2;
    std::fill_n(Room(Count), Count, u' ');
    FLength += Count;
  }
}

template <class Unit> void TWriter::WriteEscaped(const Unit* AText, std::size_t ALength) {
  // In pieces, so that a long text doesn't ask for six times its size at once.
  constexpr std::size_t Piece = 4096;
  while (ALength > 0) {
    const std::size_t Count = std::min(ALength, Piece);
    FLength = static_cast<std::size_t>(EscapeInto(Room(Count * 6), AText, Count) - FBuffer.get());
    AText += Count;
    ALength -= Count;
  }
}

void TWriter::PutShort(const TLxJSONSimpleType* AValue) {
  // The whole buffer, widened in a loop of fixed length: no branch to guess per text.
  constexpr std::size_t Capacity = TLxJSONSimpleType::ShortCapacity;
  char16_t* Out = Room(Capacity);
  for (std::size_t I = 0; I < Capacity; ++I)
    Out[I] = static_cast<unsigned char>(AValue->FShort[I]);
  FLength += AValue->FShortLength;
}

void TWriter::WriteSimple(TLxJSONSimpleType* AValue) {
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
      Put(LxDateTimeToXML(Value.AsDateTime(), tzfNone));
    else if (Kind == lmkString)
      WriteEscaped(Text);
    else
      WriteEscaped(LxVarToStr(Value, u"", /*ARaiseError=*/false));
    Put(u'"');
    return;
  case jdtNumber:
    // Text as it was read goes out unexamined, "1.50" as "1.50".
    if (Kind == lmkString)
      Put(Text);
    else
      Put(LxVarToJSON(Value));
    return;
  case jdtBoolean:
    if (Kind == lmkString)
      Put(Text);
    else
      Put(LxVarToBool(Value, /*ADefault=*/false, /*ARaiseError=*/false) ? u"true" : u"false");
    return;
  default:
    throw ELxJSONException(_cLxJSONUnexpectedType, cLxJSONErrUnexpectedType);
  }
}

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

UnicodeString TextOf(TLxJSONBase* AValue, bool AFormatted) {
  TWriter Writer(/*ATarget=*/nullptr);
  Writer.Write(AValue, AFormatted, /*ADepth=*/0, /*AAddLeadingSpace=*/false);
  return Writer.Text();
}

} // namespace lorvane::jsonwriter
