// The tree builder: reader events become values under a cursor that follows the nesting.
#include "lorvane/json/LxJSONHandler.h"

#include "lorvane/json/LxFormURLEncodedJSONReader.h"
#include "lorvane/json/LxJSONReader.h"
#include "lorvane/json/LxJSONStrings.h"
#include "lorvane/platform/Generics.h"

namespace lorvane {

namespace {
[[noreturn]] void RaiseMisplaced() {
  throw ELxJSONException(UnicodeString(cJSONTreeBuilderMisplaced), cLxJSONErrTreeBuilder);
}
} // namespace

TLxJSONHandler::TLxJSONHandler(TLxJSONReader* AJSONReader, TLxJSONBase* AAddTo)
    : FReader(AJSONReader), FCurrValue(AAddTo),
      FFormPost(AJSONReader &&
                AJSONReader->InheritsFrom(TLxFormURLEncodedJSONReader::StaticClass())) {}

HRESULT TLxJSONHandler::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxJSONContentHandler, ILxJSONErrorHandler>(
      this, AIID, AObj, [&] { return TLxObject::QueryInterface(AIID, AObj); });
}

void TLxJSONHandler::SetDocumentLocator(ILxJSONLocator*) {}
void TLxJSONHandler::StartDocument() {}
void TLxJSONHandler::EndMember() {}
void TLxJSONHandler::EndDocument() {}
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
  TLxJSONBase* Cursor = FCurrValue;
  if (!Cursor)
    RaiseMisplaced();
  switch (Cursor->FKind) {
  case TLxJSONBase::TKind::Document:
    FCurrValue = static_cast<TLxJSONDocument*>(Cursor)->CreateRootValue(AValueType);
    return;
  case TLxJSONBase::TKind::Array:
    FCurrValue = static_cast<TLxJSONArray*>(Cursor)->AddValue(AValueType);
    return;
  case TLxJSONBase::TKind::Object:
    if (TLxJSONMember* Last = static_cast<TLxJSONObject*>(Cursor)->FLastMember) {
      FCurrValue = Last->CreateValue(AValueType);
      return;
    }
    // An object without members takes the members of an object text itself: the cursor stays
    // and the text's structure continues in it.
    if (AValueType == jdtObject)
      return;
    RaiseMisplaced();
  case TLxJSONBase::TKind::Member:
    FCurrValue = static_cast<TLxJSONMember*>(Cursor)->CreateValue(AValueType);
    return;
  default:
    RaiseMisplaced();
  }
}

void TLxJSONHandler::StartMember(const LxJSONString& AName) {
  if (!FCurrValue || FCurrValue->FKind != TLxJSONBase::TKind::Object)
    throw Exception(UnicodeString(u"Invalid objecttype"));
  static_cast<TLxJSONObject*>(FCurrValue)->AddMember(AName, jdtNull);
}

void TLxJSONHandler::Value(TLxJSONDataType AValueType, const LxJSONString& AValue) {
  // Only a simple value holds text.
  if (AValueType == jdtObject || AValueType == jdtArray)
    throw EInvalidCast(UnicodeString(SInvalidCast));
  TLxJSONBase* Cursor = FCurrValue;
  TLxJSONSimpleType* Target = nullptr;
  if (Cursor && Cursor->FKind == TLxJSONBase::TKind::Object) {
    TLxJSONMember* Last = static_cast<TLxJSONObject*>(Cursor)->FLastMember;
    if (!Last)
      RaiseMisplaced();
    TLxJSONBase* Empty = Last->FValue;
    // The null value that StartMember made is taken as the new value instead of being freed
    // and made again: nobody else can see it, so the tree ends up the same.
    if (Empty && Empty->ClassType() == TLxJSONSimpleType::StaticClass() &&
        Empty->GetOwner() == Last && !Empty->GetAutoDestroy() && Empty->RefCount() == 1)
      Target = static_cast<TLxJSONSimpleType*>(Empty);
    else
      Target = static_cast<TLxJSONSimpleType*>(Last->CreateValue(AValueType));
  } else if (Cursor && Cursor->FKind == TLxJSONBase::TKind::Array) {
    Target =
        static_cast<TLxJSONSimpleType*>(static_cast<TLxJSONArray*>(Cursor)->AddValue(AValueType));
  } else {
    RaiseMisplaced();
  }
  // Most texts have no escapes and go into the value as they are, without a string between.
  if (JSONTextHasEscapes(AValue, AValueType))
    Target->SetText(LxJSONtoStr(AValue, AValueType));
  else
    Target->SetText(AValue);
  Target->FJSONType = AValueType;
}

void TLxJSONHandler::EndStructure(TLxJSONDataType AValueType) {
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
