// The tree builder: reader events become values under a cursor that follows the nesting.
#include "lorvane/json/LxJSONHandler.h"

#include "lorvane/json/LxFormURLEncodedJSONReader.h"
#include "lorvane/json/LxJSONReader.h"
#include "lorvane/json/LxJSONStrings.h"
#include "lorvane/platform/Generics.h"

#include <utility>

namespace lorvane {

namespace {
[[noreturn]] void RaiseMisplaced() {
  throw ELxJSONException(UnicodeString(cJSONTreeBuilderMisplaced), cLxJSONErrTreeBuilder);
}
} // namespace

template <class T> T* TLxJSONHandler::Link(TLxJSONBase* AOwner) {
  T* Made = new T(nullptr);
  TLxJSONBase* Value = Made;
  // Made without an owner, an array wouldn't free its items.
  Value->FDestroyChilds = true;
  try {
    AOwner->FObjects.push_back(Value);
  } catch (...) {
    Value->Free();
    throw;
  }
  Value->FOwner = AOwner;
  Value->FLoaded = true;
  Value->SetAutoDestroy(false);
  return Made;
}

TLxJSONBase* TLxJSONHandler::LinkValue(TLxJSONBase* AOwner, TLxJSONDataType AValueType) {
  switch (AValueType) {
  case jdtObject:
    return Link<TLxJSONObject>(AOwner);
  case jdtArray:
    return Link<TLxJSONArray>(AOwner);
  default:
    return Link<TLxJSONSimpleType>(AOwner);
  }
}

TLxJSONHandler::TLxJSONHandler(TLxJSONReader* AJSONReader, TLxJSONBase* AAddTo)
    : FReader(AJSONReader), FCurrValue(AAddTo),
      FFormPost(AJSONReader &&
                AJSONReader->InheritsFrom(TLxFormURLEncodedJSONReader::StaticClass())) {}

HRESULT TLxJSONHandler::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxJSONContentHandler, ILxJSONErrorHandler>(
      this, AIID, AObj, [&] { return TLxObject::QueryInterface(AIID, AObj); });
}

void TLxJSONHandler::Settle() {
  if (TLxJSONMember* Member = std::exchange(FPending, nullptr))
    if (!Member->FValue)
      Member->CreateValue(jdtNull);
}

void TLxJSONHandler::SettleUnlessNext() {
  if (FPending && !(FCurrValue && FCurrValue->FKind == TLxJSONBase::TKind::Object &&
                    static_cast<TLxJSONObject*>(FCurrValue)->FLastMember == FPending))
    Settle();
}

void TLxJSONHandler::SetDocumentLocator(ILxJSONLocator*) {}
void TLxJSONHandler::StartDocument() {}
void TLxJSONHandler::EndMember() { Settle(); }
void TLxJSONHandler::EndDocument() { Settle(); }
void TLxJSONHandler::Warning(ILxJSONLocator*, const LxJSONString&) {}
void TLxJSONHandler::Error(ILxJSONLocator*, const LxJSONString&) {}
void TLxJSONHandler::FatalError(ILxJSONLocator*, const LxJSONString&) {}

void TLxJSONHandler::StartObject() {
  StartStructure(jdtObject);
  if (FFormPost && !FFormObject)
    FFormObject = FCurrValue;
}
void TLxJSONHandler::StartArray() { StartStructure(jdtArray); }
void TLxJSONHandler::EndObject() { EndStructure(jdtObject); }
void TLxJSONHandler::EndArray() { EndStructure(jdtArray); }

void TLxJSONHandler::StartStructure(TLxJSONDataType AValueType) {
  SettleUnlessNext();
  TLxJSONBase* Cursor = FCurrValue;
  if (!Cursor)
    RaiseMisplaced();
  switch (Cursor->FKind) {
  case TLxJSONBase::TKind::Document:
    FCurrValue = static_cast<TLxJSONDocument*>(Cursor)->CreateRootValue(AValueType);
    // Of the library's class whatever the document's is.
    FCurrValue->FLoaded = true;
    return;
  case TLxJSONBase::TKind::Array:
    FCurrValue = Cursor->FLoaded ? LinkValue(Cursor, AValueType)
                                 : static_cast<TLxJSONArray*>(Cursor)->AddValue(AValueType);
    return;
  case TLxJSONBase::TKind::Object:
    if (TLxJSONMember* Last = static_cast<TLxJSONObject*>(Cursor)->FLastMember) {
      FCurrValue = NewMemberValue(Last, AValueType);
      FPending = nullptr;
      return;
    }
    // An object without members takes the members of an object text itself: the cursor stays
    // and the text's structure continues in it.
    if (AValueType == jdtObject)
      return;
    RaiseMisplaced();
  case TLxJSONBase::TKind::Member:
    FCurrValue = NewMemberValue(static_cast<TLxJSONMember*>(Cursor), AValueType);
    return;
  default:
    RaiseMisplaced();
  }
}

namespace {
// The length and three units tell the names of one document apart well enough.
template <class TText> std::uint32_t NameHash(const TText& AName) {
  const std::size_t Size = AName.size();
  std::uint32_t Hash = static_cast<std::uint32_t>(Size);
  if (Size > 0)
    Hash = (Hash * 31 + static_cast<std::uint16_t>(AName[0])) * 31 +
           static_cast<std::uint16_t>(AName[Size / 2]) * 7 +
           static_cast<std::uint16_t>(AName[Size - 1]);
  return (Hash * 0x9E3779B1u) >> 26;
}
} // namespace

TLxJSONObject* TLxJSONHandler::MemberTarget() {
  Settle();
  if (!FCurrValue || FCurrValue->FKind != TLxJSONBase::TKind::Object)
    throw Exception(UnicodeString(u"Invalid objecttype"));
  auto* Object = static_cast<TLxJSONObject*>(FCurrValue);
  // A user's own class adds as it likes.
  if (!Object->FLoaded && Object->ClassType() != TLxJSONObject::StaticClass())
    return nullptr;
  return Object;
}

void TLxJSONHandler::AddLoadedMember(TLxJSONObject* AObject, const TJSONName& AName) {
  TLxJSONMember* Member = Link<TLxJSONMember>(AObject);
  Member->FName = AName;
  AObject->FLastMember = Member;
  if (FDeferNullValues)
    FPending = Member;
  else
    Member->FValue = LinkValue(Member, jdtNull);
}

void TLxJSONHandler::StartMember(const LxJSONString& AName) {
  TLxJSONObject* Object = MemberTarget();
  if (!Object) {
    static_cast<TLxJSONObject*>(FCurrValue)->AddMember(AName, jdtNull);
    return;
  }
  // Names met lately are shared by hash of their text.
  static_assert(NameSlots == 64, "the hash gives six bits");
  TJSONName& Seen = FNames[NameHash(AName)];
  if (Seen.View() != std::u16string_view(AName))
    Seen = TJSONName(AName);
  AddLoadedMember(Object, Seen);
}

void TLxJSONHandler::StartMemberBytes(std::string_view AName) {
  TLxJSONObject* Object = MemberTarget();
  if (!Object) {
    static_cast<TLxJSONObject*>(FCurrValue)
        ->AddMember(LxJSONString(TJSONName(AName).View()), jdtNull);
    return;
  }
  TJSONName& Seen = FNames[NameHash(AName)];
  if (!Seen.Equals(AName))
    Seen = TJSONName(AName);
  AddLoadedMember(Object, Seen);
}

TLxJSONSimpleType* TLxJSONHandler::ValueTarget(TLxJSONDataType AValueType) {
  SettleUnlessNext();
  // Only a simple value holds text.
  if (AValueType == jdtObject || AValueType == jdtArray)
    throw EInvalidCast(UnicodeString(SInvalidCast));
  TLxJSONBase* Cursor = FCurrValue;
  if (Cursor && Cursor->FKind == TLxJSONBase::TKind::Object) {
    TLxJSONMember* Last = static_cast<TLxJSONObject*>(Cursor)->FLastMember;
    if (!Last)
      RaiseMisplaced();
    TLxJSONBase* Empty = Last->FValue;
    TLxJSONSimpleType* Target;
    // The null value that StartMember made is taken as the new value instead of being freed
    // and made again: nobody else can see it, so the tree ends up the same.
    if (Empty && Empty->ClassType() == TLxJSONSimpleType::StaticClass() &&
        Empty->GetOwner() == Last && !Empty->GetAutoDestroy() && Empty->RefCount() == 1)
      Target = static_cast<TLxJSONSimpleType*>(Empty);
    else
      Target = static_cast<TLxJSONSimpleType*>(NewMemberValue(Last, AValueType));
    FPending = nullptr;
    return Target;
  }
  if (Cursor && Cursor->FKind == TLxJSONBase::TKind::Array)
    return Cursor->FLoaded ? Link<TLxJSONSimpleType>(Cursor)
                           : static_cast<TLxJSONSimpleType*>(
                                 static_cast<TLxJSONArray*>(Cursor)->AddValue(AValueType));
  RaiseMisplaced();
}

void TLxJSONHandler::Value(TLxJSONDataType AValueType, const LxJSONString& AValue) {
  TLxJSONSimpleType* Target = ValueTarget(AValueType);
  // Most texts are short and have no escapes (those JSONTextHasEscapes looks for: a backslash,
  // in a number a percent sign), and go into the value as they are.
  if (!Target->SetShortRawText(AValue, AValueType == jdtNumber)) {
    if (JSONTextHasEscapes(AValue, AValueType))
      Target->SetText(LxJSONtoStr(AValue, AValueType));
    else
      Target->SetText(AValue);
  }
  Target->FJSONType = AValueType;
}

void TLxJSONHandler::ValueBytes(TLxJSONDataType AValueType, const char* AText,
                                std::size_t ALength) {
  TLxJSONSimpleType* Target;
  // Mostly the value of the member just started, which waits for it: linked straight away, as
  // ValueTarget would.
  if (TLxJSONMember* Member = FPending;
      Member && !Member->FValue && FCurrValue && FCurrValue->FKind == TLxJSONBase::TKind::Object &&
      static_cast<TLxJSONObject*>(FCurrValue)->FLastMember == Member) {
    Target = Link<TLxJSONSimpleType>(Member);
    Member->FValue = Target;
    FPending = nullptr;
  } else {
    Target = ValueTarget(AValueType);
  }
  Target->StoreShort(AText, ALength);
  Target->FJSONType = AValueType;
}

TLxJSONBase* TLxJSONHandler::NewMemberValue(TLxJSONMember* AMember, TLxJSONDataType AValueType) {
  if (AMember->FValue || !AMember->FLoaded)
    return AMember->CreateValue(AValueType);
  AMember->FValue = LinkValue(AMember, AValueType);
  return AMember->FValue;
}

void TLxJSONHandler::EndStructure(TLxJSONDataType AValueType) {
  Settle();
  // A cursor that has climbed out of the tree already stays where it is.
  if (!FCurrValue)
    return;
  if (FFormPost) {
    // The closing call leaves the nearest value of its kind, but never the form's object.
    TLxJSONBase* Closed = FCurrValue;
    while (Closed && Closed != FFormObject && Closed->GetJSONType() != AValueType)
      Closed = Closed->FOwner;
    if (!Closed || Closed == FFormObject)
      return;
    FCurrValue = Closed;
  }
  TLxJSONBase* Cursor = FCurrValue->FOwner;
  while (Cursor && Cursor->FKind != TLxJSONBase::TKind::Object &&
         Cursor->FKind != TLxJSONBase::TKind::Array &&
         Cursor->FKind != TLxJSONBase::TKind::Document)
    Cursor = Cursor->FOwner;
  FCurrValue = Cursor;
}

} // namespace lorvane
