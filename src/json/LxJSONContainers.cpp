// Members, objects and arrays of the JSON value tree.
#include "lorvane/json/LxJSONValues.h"

#include "lorvane/json/LxJSONOutput.h"
#include "lorvane/platform/Generics.h"
#include "lorvane/types/LxMainTypeKind.h"
#include "lorvane/xmlutils/LxXMLValues.h"
#include "json/LxJSONFaces.h"
#include "json/LxJSONWriter.h"

#include <utility>

namespace lorvane {

using jsonfaces::Face;
using jsonfaces::ObjectOf;

namespace {

[[noreturn]] void RaiseInvalidCast() { throw EInvalidCast(UnicodeString(SInvalidCast)); }

bool IsStructure(TLxJSONDataType AValueType) {
  return AValueType == jdtObject || AValueType == jdtArray;
}

} // namespace

// --- TLxJSONMember -------------------------------------------------------------------------------

HRESULT TLxJSONMember::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxJSONMember>(this, AIID, AObj,
                                         [&] { return TLxJSONBase::QueryInterface(AIID, AObj); });
}

TLxJSONBase* TLxJSONMember::CreateValue(TLxJSONDataType AValueType) {
  if (FValue && FValue->GetOwner() == this && !FValue->GetAutoDestroy()) {
    TLxJSONBase* Old = std::exchange(FValue, nullptr);
    Old->FreeObject();
  }
  switch (AValueType) {
  case jdtObject:
    FValue = New<TLxJSONObject>(this);
    break;
  case jdtArray:
    FValue = New<TLxJSONArray>(this);
    break;
  default:
    FValue = New<TLxJSONSimpleType>(this);
    break;
  }
  return FValue;
}

void TLxJSONMember::RemoveObject(TLxJSONBase* AObject) {
  TLxJSONBase::RemoveObject(AObject);
  if (AObject == FValue)
    FValue = nullptr;
}

TLxJSONSimpleType* TLxJSONMember::SimpleValue(std::u16string_view ALabel) {
  if (!FValue || FValue->Kind() != TKind::Simple)
    RaiseNotSupported(ALabel);
  return static_cast<TLxJSONSimpleType*>(FValue);
}

TLxJSONSimpleType* TLxJSONMember::SimpleValueFor(TLxJSONDataType AValueType,
                                                 std::u16string_view ALabel) {
  if (!FValue)
    CreateValue(AValueType);
  return SimpleValue(ALabel);
}

bool TLxJSONMember::GetAsBoolean() { return SimpleValue(u"GetAsBoolean")->GetAsBoolean(); }
Double TLxJSONMember::GetAsDouble() { return SimpleValue(u"GetAsDouble")->GetAsDouble(); }
Integer TLxJSONMember::GetAsInteger() { return SimpleValue(u"GetAsInteger")->GetAsInteger(); }
Int64 TLxJSONMember::GetAsLargeInt() { return SimpleValue(u"GetAsLargeInt")->GetAsLargeInt(); }
LxJSONString TLxJSONMember::GetAsString() { return SimpleValue(u"GetAsString")->GetAsString(); }
Variant TLxJSONMember::GetAsVariant() { return SimpleValue(u"GetAsVariant")->GetAsVariant(); }

void TLxJSONMember::SetAsBoolean(bool AValue) {
  SimpleValueFor(jdtBoolean, u"SetAsBoolean")->SetAsBoolean(AValue);
}
void TLxJSONMember::SetAsDouble(Double AValue) {
  SimpleValueFor(jdtNumber, u"SetAsDouble")->SetAsDouble(AValue);
}
void TLxJSONMember::SetAsInteger(Integer AValue) {
  SimpleValueFor(jdtNumber, u"SetAsInteger")->SetAsInteger(AValue);
}
void TLxJSONMember::SetAsString(const LxJSONString& AValue) {
  SimpleValueFor(jdtString, u"SetAsString")->SetAsString(AValue);
}
void TLxJSONMember::SetAsLargeInt(Int64 AValue) {
  SimpleValueFor(jdtNumber, u"SetAsLargeInt")->SetAsLargeInt(AValue);
}
void TLxJSONMember::SetAsVariant(const Variant& AValue) {
  SimpleValueFor(LxVarTypeToJSONType(AValue), u"SetAsVariant")->SetAsVariant(AValue);
}

TLxJSONObject* TLxJSONMember::GetAsObject() {
  if (!FValue)
    CreateValue(jdtObject);
  if (FValue->Kind() != TKind::Object)
    RaiseNotSupported(u"GetAsObject");
  return static_cast<TLxJSONObject*>(FValue);
}

TLxJSONArray* TLxJSONMember::GetAsArray() {
  if (!FValue)
    CreateValue(jdtArray);
  if (FValue->Kind() != TKind::Array)
    RaiseNotSupported(u"GetAsArray");
  return static_cast<TLxJSONArray*>(FValue);
}

void TLxJSONMember::SaveToStream(TStream* AStream, bool AFormatted, Integer ADepth,
                                 bool AAddLeadingSpace) {
  jsonwriter::SaveValue(this, AStream, AFormatted, ADepth, AAddLeadingSpace);
}

IPtr<ILxJSONBase> TLxJSONMember::GetValue() { return Face<ILxJSONBase>(FValue); }
IPtr<ILxJSONObject> TLxJSONMember::GetAsObjectIntf() { return Face<ILxJSONObject>(GetAsObject()); }
IPtr<ILxJSONArray> TLxJSONMember::GetAsArrayIntf() { return Face<ILxJSONArray>(GetAsArray()); }
IPtr<ILxJSONBase> TLxJSONMember::CreateValueIntf(TLxJSONDataType AValueType) {
  return Face<ILxJSONBase>(CreateValue(AValueType));
}

// --- TLxJSONObject -------------------------------------------------------------------------------

HRESULT TLxJSONObject::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxJSONObject>(this, AIID, AObj,
                                         [&] { return TLxJSONBase::QueryInterface(AIID, AObj); });
}

void TLxJSONObject::InsertObject(TLxJSONBase* AObject) {
  // Not through Assert: its message would be measured on every call.
  if (!AObject || AObject->Kind() != TKind::Member) [[unlikely]]
    RaiseAssertionFailed(u"The children of a JSON object are members");
  TLxJSONBase::InsertObject(AObject);
}

void TLxJSONObject::RemoveObject(TLxJSONBase* AObject) {
  TLxJSONBase::RemoveObject(AObject);
  if (AObject == FLastMember)
    FLastMember = FObjects.empty() ? nullptr : static_cast<TLxJSONMember*>(FObjects.back());
}

LxJSONString TLxJSONObject::GetName() { return u"<object>"; }

void TLxJSONObject::SaveToStream(TStream* AStream, bool AFormatted, Integer ADepth,
                                 bool AAddLeadingSpace) {
  jsonwriter::SaveValue(this, AStream, AFormatted, ADepth, AAddLeadingSpace);
}

Integer TLxJSONObject::Count() { return static_cast<Integer>(FObjects.size()); }

TLxJSONMember* TLxJSONObject::AddMember(const LxJSONString& AName) {
  TJSONName Name(AName);
  TLxJSONMember* Member = New<TLxJSONMember>(this);
  Member->FName = std::move(Name);
  FLastMember = Member;
  return Member;
}

TLxJSONMember* TLxJSONObject::AddMember(const LxJSONString& AName, TLxJSONDataType AValueType) {
  TLxJSONMember* Member = AddMember(AName);
  Member->CreateValue(AValueType);
  return Member;
}

TLxJSONMember* TLxJSONObject::AddMember(const LxJSONString& AName, TLxJSONDataType AValueType,
                                        const LxJSONString& AValue) {
  if (IsStructure(AValueType))
    RaiseInvalidCast();
  TLxJSONMember* Member = AddMember(AName, AValueType);
  auto* Value = static_cast<TLxJSONSimpleType*>(Member->FValue);
  Value->SetText(AValue);
  Value->FJSONType = AValueType;
  return Member;
}

TLxJSONMember* TLxJSONObject::AddMember(const LxJSONString& AName, const Variant& AValue) {
  switch (VarMainTypeKind(AValue)) {
  case lmkInteger:
    return AddMember(AName, jdtNumber, LxIntToXML(AValue.AsInteger()));
  case lmkFloat:
    return AddMember(AName, jdtNumber, LxDoubleToXML(AValue.AsDouble()));
  case lmkString:
    return AddMember(AName, jdtString, AValue.AsString());
  case lmkBoolean:
    return AddMember(AName, jdtBoolean, LxBoolToXML(AValue.AsBoolean()));
  case lmkDateTime:
    return AddMember(AName, jdtString, LxDateTimeToXML(AValue.AsDateTime(), tzfNone));
  case lmkArray: {
    TLxJSONMember* Member = AddMember(AName, jdtArray);
    auto* Items = static_cast<TLxJSONArray*>(Member->FValue);
    const Integer High = VarArrayHighBound(AValue, 1);
    for (Integer I = VarArrayLowBound(AValue, 1); I <= High; ++I)
      Items->AddValue(VarArrayGet(AValue, I));
    return Member;
  }
  default:
    return AddMember(AName, jdtNull, VarToStr(AValue));
  }
}

void TLxJSONObject::DeleteMember(Integer AIdx) { ChildAt(AIdx)->FreeObject(); }

void TLxJSONObject::RemoveMember(TLxJSONMember* AMember) {
  if (AMember)
    AMember->FreeObject();
}

TLxJSONMember* TLxJSONObject::DoFindMember(const LxJSONString& AName, bool ACaseInsensitive) {
  for (TLxJSONBase* Child : FObjects) {
    auto* Member = static_cast<TLxJSONMember*>(Child);
    const std::u16string_view Name = Member->FName.View();
    if (ACaseInsensitive ? SameText(Name, AName) : Name == AName)
      return Member;
  }
  return nullptr;
}

TLxJSONMember* TLxJSONObject::DoGetMember(const LxJSONString& AName,
                                          TLxJDOCSelectOptions ASelectOptions) {
  if (TLxJSONMember* Found = FindMember(AName, ASelectOptions.Contains(jsoCaseInsensitive)))
    return Found;
  if (ASelectOptions.Contains(jsoCreate))
    return AddMember(AName);
  if (ASelectOptions.Contains(jsoRaise))
    throw ELxJSONException(_cLxJSONNoMember, {AName}, cLxJSONErrNoMember);
  return nullptr;
}

TLxJSONBase* TLxJSONObject::DoItem(Integer AIdx) { return ChildAt(AIdx); }

LxJSONString TLxJSONObject::GetPath() {
  // Names are gathered from here up and put together in the order from the root down.
  std::vector<std::u16string_view> Names;
  for (TLxJSONBase* Value = FOwner; Value; Value = Value->GetOwner())
    if (Value->Kind() == TKind::Member)
      Names.push_back(static_cast<TLxJSONMember*>(Value)->FName.View());
  LxJSONString Result = u"#/";
  for (auto Name = Names.rbegin(); Name != Names.rend(); ++Name) {
    if (Name != Names.rbegin())
      Result += u'/';
    Result += *Name;
  }
  return Result;
}

IPtr<ILxJSONMember> TLxJSONObject::AddMemberIntf1(const LxJSONString& AName) {
  return Face<ILxJSONMember>(AddMember(AName));
}
IPtr<ILxJSONMember> TLxJSONObject::AddMemberIntf2(const LxJSONString& AName,
                                                  TLxJSONDataType AValueType) {
  return Face<ILxJSONMember>(AddMember(AName, AValueType));
}
IPtr<ILxJSONMember> TLxJSONObject::AddMemberIntf3(const LxJSONString& AName,
                                                  TLxJSONDataType AValueType,
                                                  const LxJSONString& AValue) {
  return Face<ILxJSONMember>(AddMember(AName, AValueType, AValue));
}
IPtr<ILxJSONMember> TLxJSONObject::AddMemberIntf4(const LxJSONString& AName,
                                                  const Variant& AValue) {
  return Face<ILxJSONMember>(AddMember(AName, AValue));
}
void TLxJSONObject::RemoveMemberIntf(ILxJSONMember* AMember) {
  RemoveMember(ObjectOf<TLxJSONMember>(AMember));
}

// --- TLxJSONArray --------------------------------------------------------------------------------

HRESULT TLxJSONArray::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxJSONArray>(this, AIID, AObj,
                                        [&] { return TLxJSONBase::QueryInterface(AIID, AObj); });
}

void TLxJSONArray::SaveToStream(TStream* AStream, bool AFormatted, Integer ADepth,
                                bool AAddLeadingSpace) {
  jsonwriter::SaveValue(this, AStream, AFormatted, ADepth, AAddLeadingSpace);
}

Integer TLxJSONArray::Count() { return static_cast<Integer>(FObjects.size()); }

TLxJSONBase* TLxJSONArray::AddValue(TLxJSONDataType AValueType) {
  TLxJSONBase* Value;
  switch (AValueType) {
  case jdtObject:
    Value = New<TLxJSONObject>(this);
    break;
  case jdtArray:
    Value = New<TLxJSONArray>(this);
    break;
  default:
    Value = New<TLxJSONSimpleType>(this);
    break;
  }
  Value->FJSONType = AValueType;
  return Value;
}

TLxJSONBase* TLxJSONArray::AddValue(TLxJSONDataType AValueType, const LxJSONString& AValue) {
  if (IsStructure(AValueType))
    RaiseInvalidCast();
  auto* Value = static_cast<TLxJSONSimpleType*>(AddValue(AValueType));
  Value->SetText(AValue);
  return Value;
}

TLxJSONBase* TLxJSONArray::AddValue(const Variant& AValue) {
  const TLxJSONDataType ValueType = LxVarTypeToJSONType(AValue);
  if (IsStructure(ValueType))
    RaiseInvalidCast();
  auto* Value = static_cast<TLxJSONSimpleType*>(AddValue(ValueType));
  Value->SetVariant(AValue);
  return Value;
}

void TLxJSONArray::RemoveValue(TLxJSONBase* AValue) {
  if (AValue)
    AValue->FreeObject();
}

void TLxJSONArray::DeleteValue(Integer AIdx) { ChildAt(AIdx)->FreeObject(); }

void TLxJSONArray::Exchange(Integer AIdx1, Integer AIdx2) {
  ChildAt(AIdx1);
  ChildAt(AIdx2);
  std::swap(FObjects[static_cast<std::size_t>(AIdx1)], FObjects[static_cast<std::size_t>(AIdx2)]);
}

TLxJSONBase* TLxJSONArray::DoItem(Integer AIdx) { return ChildAt(AIdx); }

IPtr<ILxJSONBase> TLxJSONArray::AddValueIntf1(TLxJSONDataType AValueType) {
  return Face<ILxJSONBase>(AddValue(AValueType));
}
IPtr<ILxJSONBase> TLxJSONArray::AddValueIntf2(TLxJSONDataType AValueType,
                                              const LxJSONString& AValue) {
  return Face<ILxJSONBase>(AddValue(AValueType, AValue));
}
IPtr<ILxJSONBase> TLxJSONArray::AddValueIntf3(const Variant& AValue) {
  return Face<ILxJSONBase>(AddValue(AValue));
}
void TLxJSONArray::RemoveValueIntf(ILxJSONBase* AValue) {
  RemoveValue(ObjectOf<TLxJSONBase>(AValue));
}

} // namespace lorvane
