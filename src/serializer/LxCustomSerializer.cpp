// What serializers and deserializers share: options inherited along the parents, and the
// instance and type they work on.
#include "lorvane/serializer/LxCustomSerializer.h"

namespace lorvane {

TLxCustomSerializer::TLxCustomSerializer() {
  // Whoever makes a serializer frees it; an interface released elsewhere must not.
  SetAutoDestroy(false);
}

TLxCustomSerializer::~TLxCustomSerializer() { lorvane::Free(FParams); }

HRESULT TLxCustomSerializer::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxCustomSerializer>(
      this, AIID, AObj, [&] { return TLxObject::QueryInterface(AIID, AObj); });
}

bool TLxCustomSerializer::HasParam(std::u16string_view AName) const {
  for (const TLxCustomSerializer* Serializer = this; Serializer;) {
    if (Serializer->FParams && Serializer->FParams->IndexOfName(AName) >= 0)
      return true;
    const TLxCustomSerializer* Parent = Serializer->FParent;
    Serializer = Parent == Serializer ? nullptr : Parent;
  }
  return false;
}

UnicodeString TLxCustomSerializer::GetParam(std::u16string_view AName) {
  if (FParams)
    if (const Integer Index = FParams->IndexOfName(AName); Index >= 0)
      return FParams->GetValueFromIndex(Index);
  if (FParent && FParent != this)
    return FParent->GetParam(AName);
  return {};
}

TStrings* TLxCustomSerializer::GetParams() const {
  if (!FParams)
    FParams = New<TStringList>();
  ++FParamChanges;
  return FParams;
}

UInt64 TLxCustomSerializer::ParamChangesAlongParents() const noexcept {
  UInt64 Changes = 0;
  for (const TLxCustomSerializer* Serializer = this; Serializer;) {
    Changes += Serializer->FParamChanges;
    const TLxCustomSerializer* Parent = Serializer->FParent;
    Serializer = Parent == Serializer ? nullptr : Parent;
  }
  return Changes;
}

void TLxCustomSerializer::SetParam(std::u16string_view AName, std::u16string_view AValue) {
  GetParams()->SetValues(AName, AValue);
}

TObject* TLxCustomSerializer::GetObjParam(std::u16string_view AName) {
  if (FParams)
    if (const Integer Index = FParams->IndexOf(AName); Index >= 0)
      return FParams->GetObjects(Index);
  if (FParent && FParent != this)
    return FParent->GetObjParam(AName);
  return nullptr;
}

void TLxCustomSerializer::SetObjParam(std::u16string_view AName, TObject* AObject) {
  TStrings* Params = GetParams();
  if (const Integer Index = Params->IndexOfName(AName); Index >= 0)
    Params->SetObjects(Index, AObject);
  else
    Params->AddObject(AName, AObject);
}

void TLxCustomSerializer::SetParams(TStrings* AParams) {
  if (!AParams)
    return;
  for (Integer I = 0; I < AParams->GetCount(); ++I) {
    const UnicodeString Name = AParams->GetNames(I);
    if (!Name.empty())
      SetParam(Name, AParams->GetValueFromIndex(I));
    if (TObject* Object = AParams->GetObjects(I))
      SetObjParam(Name.empty() ? AParams->GetStrings(I) : Name, Object);
  }
}

void TLxCustomSerializer::SetParent(TLxCustomSerializer* AParent) {
  if (AParent)
    FStream = AParent->FStream;
  FParent = AParent;
}

void TLxCustomSerializer::Create(const TValue& AValue) {
  FValue = AValue;
  void* Instance = nullptr;
  switch (AValue.GetTypeKind()) {
  case tkUnknown:
    if (!AValue.GetIsEmpty())
      throw Exception(u"Values of type \"%s\" cannot be serialized!",
                      {UnicodeString(TypeKindName(AValue.GetTypeKind()))});
    break;
  case tkClass:
    Instance = AValue.AsObject();
    break;
  case tkInteger:
  case tkEnumeration:
  case tkFloat:
  case tkSet:
  case tkVariant:
  case tkArray:
  case tkRecord:
  case tkInt64:
  case tkDynArray:
    Instance = FValue.GetReferenceToRawData();
    break;
  case tkChar:
  case tkString:
  case tkWChar:
  case tkLString:
  case tkWString:
  case tkUString:
    break;
  default:
    throw Exception(u"Values of type \"%s\" cannot be serialized!",
                    {UnicodeString(TypeKindName(AValue.GetTypeKind()))});
  }
  Create(Instance, AValue.LxTypeInfo());
}

void TLxCustomSerializer::Create(void* AInstancePtr, const TLxTypeInfo* ATypeInfo) {
  FInstancePtr = AInstancePtr;
  if (FValue.GetIsEmpty() && ATypeInfo && AInstancePtr) {
    switch (ATypeInfo->GetKind()) {
    case tkInteger:
    case tkChar:
    case tkEnumeration:
    case tkFloat:
    case tkSet:
    case tkWChar:
    case tkVariant:
    case tkInt64:
    case tkString:
    case tkLString:
    case tkWString:
    case tkUString:
      // Simple values are written from the kept copy.
      FValue = TValue::Make(AInstancePtr, ATypeInfo->GetHandle());
      if (ATypeInfo->GetKind() == tkSet)
        FInstancePtr = FValue.GetReferenceToRawData();
      break;
    default:
      break;
    }
  }
  if (ATypeInfo)
    FInstanceTypeInfo = ATypeInfo;
  FParent = nullptr;
  FName = u"root";
}

// --- annotations ---------------------------------------------------------------------------------
bool GetSerializerHint(const std::vector<TCustomAttribute*>& AAttribs,
                       TSerializerHintOption AOption, const SerializerHint*& AHint) noexcept {
  for (TCustomAttribute* Attribute : AAttribs)
    if (Attribute->InheritsFrom(SerializerHint::StaticClass()))
      if (auto* Hint = static_cast<const SerializerHint*>(Attribute);
          Hint->GetOption() == AOption) {
        AHint = Hint;
        return true;
      }
  AHint = nullptr;
  return false;
}

bool GetSerializerHint(const TLxMemberDescription* AMember, TSerializerHintOption AOption,
                       const SerializerHint*& AHint) noexcept {
  AHint = nullptr;
  return AMember && GetSerializerHint(AMember->GetAttributes(), AOption, AHint);
}

bool GetSerializerHint(const TLxTypeDescription* AType, TSerializerHintOption AOption,
                       const SerializerHint*& AHint) noexcept {
  AHint = nullptr;
  return AType && GetSerializerHint(AType->GetAttributes(), AOption, AHint);
}

} // namespace lorvane
