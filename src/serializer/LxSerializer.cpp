// The serializer driver: the root run, a child per nested value, the member walks with their
// visibility, hints and cycle test, arrays, records, classes and interfaces.
#include "lorvane/serializer/LxSerializer.h"

#include "lorvane/core/LxStreams.h"
#include "lorvane/serializer/LxSerialization.h"
#include "lorvane/serializer/LxSerializerHelpers.h"

#include "serializer/MemberPlans.h"

#include "platform/internal/Utf.h"

#include <algorithm>

namespace lorvane {

namespace {

constexpr std::u16string_view cTrue = u"true";

/// The interface I of an object, when the object offers it.
template <class I> IPtr<I> QueryObject(TObject* AObject) {
  auto* Interfaces = dynamic_cast<IInterface*>(AObject);
  return Interfaces ? IPtr<I>::From(Interfaces) : IPtr<I>();
}

/// The object behind an interface that leads back to one.
TObject* ObjectOf(IInterface* AInterface) {
  IPtr<ILxObject> Object = IPtr<ILxObject>::From(AInterface);
  return Object ? Object->Implementor() : nullptr;
}

const std::vector<TCustomAttribute*>* AttributesOf(const TLxMemberDescription& AMember) {
  return &AMember.GetAttributes();
}

/// A TValue member or field is written as what it holds.
void UnwrapValue(TValue& AValue, const TLxTypeInfo*& AType) {
  if (AValue.GetTypeKind() == tkRecord && AType &&
      AType->GetQualifiedName() == u"System.Rtti.TValue") {
    TValue Inner = AValue.AsType<TValue>();
    AType = Inner.LxTypeInfo();
    AValue = std::move(Inner);
  }
}

/// An object as a value of its own class.
TValue ObjectValue(TObject* AObject) {
  return TValue::Make(&AObject, LxClassTypeHandle(AObject->ClassType()));
}

/// Frees a helper object when the step that asked for it ends.
using THelperHold = TOwned<TLxSerializerHelper>;

} // namespace

HRESULT TLxSerializer::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxSerializer>(
      this, AIID, AObj, [&] { return TLxCustomSerializer::QueryInterface(AIID, AObj); });
}

void TLxSerializer::Create(void* AInstancePtr, const TLxTypeInfo* ATypeInfo) {
  TLxCustomSerializer::Create(AInstancePtr, ATypeInfo);
  if (FInstanceTypeInfo && FInstanceTypeInfo->GetTypeKind() == ltkClass && FInstancePtr)
    FHelper = QueryObject<ILxSerializerHelper>(static_cast<TObject*>(FInstancePtr));
}

bool TLxSerializer::OptionIsTrue(std::u16string_view AName) { return GetParam(AName) == cTrue; }

bool TLxSerializer::ExcludesChildren() {
  if (const UInt64 Now = ParamChangesAlongParents(); Now != FExcludeChildrenReadAt) {
    FExcludeChildren = OptionIsTrue(u"excludechildren");
    FExcludeChildrenReadAt = Now;
  }
  return FExcludeChildren;
}

void TLxSerializer::Write(std::string_view ABytes) {
  if (!ABytes.empty())
    FStream->WriteBuffer(ABytes.data(), static_cast<Int64>(ABytes.size()));
}

void TLxSerializer::Write(std::u16string_view AText) {
  // Through a buffer on the stack: the walk writes many short pieces, none worth a heap string.
  constexpr std::size_t cChunk = 256;
  char Bytes[cChunk * 3];
  utf::ForEachUnitRun(AText, cChunk, [&](std::u16string_view ARun) {
    Write(std::string_view(Bytes, utf::EncodeUTF16AsUTF8(ARun.data(), ARun.size(), Bytes)));
  });
}

// --- the write operations: nothing in the driver -------------------------------------------------
void TLxSerializer::SerializeStartType(std::u16string_view, const TLxTypeInfo*, Integer) {}
void TLxSerializer::SerializeEndType(std::u16string_view, const TLxTypeInfo*, Integer) {}
void TLxSerializer::SerializeName(std::u16string_view, TLxSerializerMemberType, TLxTypeKind,
                                  TLxTypeKind) {}
void TLxSerializer::SerializeValue(std::u16string_view, const TLxTypeInfo*, const TValue&, Integer,
                                   const std::vector<TCustomAttribute*>*) {}

// --- runs ----------------------------------------------------------------------------------------
TLxSerializedData TLxSerializer::Serialize() {
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(Word(65001), Int64(0)));
  Serialize(Stream.get());
  return Stream->GetAString();
}

void TLxSerializer::Serialize(TStream* AStream) {
  FStream = AStream;
  SetParent(nullptr);
  const bool Brackets =
      !OptionIsTrue(u"excluderoot") && FInstanceTypeInfo && !FInstanceTypeInfo->GetIsSimpleType();
  if (Brackets)
    SerializeStartType(u"", FInstanceTypeInfo, -1);
  bool Handled = false;
  if (FHelper)
    FHelper->BeforeSerialize(this, Handled);
  if (!Handled && FInstanceTypeInfo && FInstanceTypeInfo->GetTypeKind() == ltkClass &&
      FInstancePtr) {
    auto* Object = static_cast<TObject*>(FInstancePtr);
    if (THelperHold Helper{LxFindSerializerHelper(Object->ClassType())})
      Helper->Serialize(this, u"", FInstanceTypeInfo, ObjectValue(Object), Handled);
  }
  if (!Handled)
    DoSerialize(this, u"", u"");
  if (FHelper)
    FHelper->AfterSerialize(this);
  if (Brackets)
    SerializeEndType(u"", FInstanceTypeInfo, -1);
}

void TLxSerializer::Serialize(TStream* AStream, const TLxTypeInfo* AType, std::u16string_view,
                              const std::vector<TValue>& AArgs) {
  const TLxMethodDescription* Prototype =
      AType ? AType->GetDescription()->GetMethod(u"Invoke") : nullptr;
  if (!Prototype || Prototype->GetParameters().size() != AArgs.size())
    throw Exception(u"Failed to trigger the event!\r\nThe paramatercount does not match the count "
                    u"of the prototype.");
  FStream = AStream;
  SetParent(nullptr);
  FInstanceTypeInfo = AType;
  SerializeStartType(FName, FInstanceTypeInfo, -1);
  for (std::size_t I = 0; I < AArgs.size(); ++I) {
    const TLxParameterDescription& Parameter = Prototype->GetParameters()[I];
    SerializeFieldOrProp(Parameter.GetName(), Parameter.GetParamType(), AArgs[I], nullptr);
  }
  SerializeEndType(FName, FInstanceTypeInfo, -1);
}

// --- children ------------------------------------------------------------------------------------
TLxSerializer* TLxSerializer::CreateChildSerializer(void* AData, const TLxTypeInfo* ATypeInfo) {
  TOwned<TLxSerializer> Child(LxCreateSerializerEx(Format(), AData, ATypeInfo));
  Child->SetParent(this);
  Child->FMemberPlans = MemberPlansShared();
  return Child.release();
}

const std::shared_ptr<TLxMemberPlans>& TLxSerializer::MemberPlansShared() {
  if (!FMemberPlans)
    FMemberPlans = std::make_shared<TLxMemberPlans>();
  return FMemberPlans;
}

TLxMemberPlans& TLxSerializer::MemberPlans() { return *MemberPlansShared(); }

void TLxSerializer::SerializeChild(std::u16string_view AMemberName, std::u16string_view,
                                   void* AData, const TLxTypeInfo* ATypeInfo, Integer AIdx) {
  TOwned<TLxSerializer> Child(CreateChildSerializer(AData, ATypeInfo));
  bool Handled = false;
  Child->SerializeStartType(AMemberName, ATypeInfo, AIdx);
  if (Child->FHelper)
    Child->FHelper->BeforeSerialize(Child.get(), Handled);
  if (!Handled)
    Child->DoSerialize(this, AMemberName, FPath);
  if (Child->FHelper)
    Child->FHelper->AfterSerialize(Child.get());
  Child->SerializeEndType(AMemberName, ATypeInfo, AIdx);
}

void TLxSerializer::SerializeFieldOrProp(std::u16string_view AName, const TLxTypeInfo* ATypeInfo,
                                         const TValue& AValue,
                                         const std::vector<TCustomAttribute*>* AAttribs) {
  SerializeName(AName, smtField, FInstanceTypeInfo ? FInstanceTypeInfo->GetTypeKind() : ltkUnknown,
                ATypeInfo->GetTypeKind());
  switch (ATypeInfo->GetKind()) {
  case tkInterface: {
    IPtr<IInterface> Interface = AValue.AsInterface();
    if (!Interface) {
      SerializeInterface(AName, ATypeInfo, nullptr, -1);
    } else if (Supports<ILxSerializable>(Interface.Get())) {
      SerializeInterface(AName, ATypeInfo, Interface.Get(), -1);
    } else if (TObject* Object = ObjectOf(Interface.Get())) {
      SerializeClass(AName, Object->ClassType(), Object, -1);
    } else {
      throw ELxSerializeException(
          u"Serialization failure at \"%s\"\r\nThe field \"%s\" of type \"%s\" cannot be "
          u"serialized!",
          {FPath, UnicodeString(AName), ATypeInfo->GetQualifiedName()});
    }
    break;
  }
  case tkClass:
    SerializeClass(AName, ATypeInfo->GetDescription()->MetaclassType(), AValue.AsObject(), -1);
    break;
  case tkRecord:
    if (ATypeInfo->GetQualifiedName() == u"System.Rtti.TValue") {
      const TValue Inner = AValue.AsType<TValue>();
      if (!Inner.GetIsEmpty())
        SerializeValue(AName, Inner.LxTypeInfo(), Inner, -1, nullptr);
    } else {
      TValue Copy = AValue;
      SerializeRecord(AName, ATypeInfo, Copy.GetReferenceToRawData(), ATypeInfo, -1);
    }
    break;
  case tkArray:
  case tkDynArray: {
    TValue Copy = AValue;
    SerializeArray(AName, ATypeInfo, Copy.GetReferenceToRawData(), ATypeInfo, -1);
    break;
  }
  case tkPointer: {
    // A pointer is no ordinal to TValue: its bits come through the type's own access.
    const auto GetBits = ATypeInfo->GetDescription()->Access().GetOrdinal;
    const void* Data = AValue.GetReferenceToRawData();
    SerializeValue(AName, ATypeInfo, TValue::From(GetBits && Data ? GetBits(Data) : Int64(0)), -1,
                   nullptr);
    break;
  }
  default:
    SerializeValue(AName, ATypeInfo, AValue, -1, AAttribs);
  }
}

void TLxSerializer::SerializeClass(std::u16string_view AName, TClass AClass, TObject* AObject,
                                   Integer AIdx) {
  const TLxTypeInfo* Type = TLxTypes::GetTypeInfo(AObject ? AObject->ClassType() : AClass);
  bool InFull;
  if (ExcludesChildren())
    InFull = false;
  else if (AClass && TObject::ClassInheritsFrom(AClass, TComponent::StaticClass())) {
    const auto* Component = static_cast<TComponent*>(AObject);
    InFull = Component && (Component->GetOwner() == FInstancePtr || !Component->GetOwner());
  } else
    InFull = true;
  if (InFull) {
    if (FHelper && !FHelper->CanSerializeChild(this, AObject, AClass, AName))
      return;
    if (AObject)
      SerializeChild(AName, Type->GetName(), AObject, Type, AIdx);
    else
      SerializeValue(AName, Type, TValue(), AIdx, nullptr);
    return;
  }
  if (AObject && AObject->InheritsFrom(TComponent::StaticClass()))
    SerializeValue(AName, Type, TValue::From(static_cast<TComponent*>(AObject)->GetName()), AIdx,
                   nullptr);
  else {
    TObject* Nil = nullptr;
    SerializeValue(AName, Type, TValue::Make(&Nil, Type->GetHandle()), AIdx, nullptr);
  }
}

void TLxSerializer::SerializeRecord(std::u16string_view AName, const TLxTypeInfo*, void* AData,
                                    const TLxTypeInfo* AValueType, Integer AIdx) {
  if (!ExcludesChildren())
    SerializeChild(AName, u"", AData, AValueType, AIdx);
  else
    SerializeValue(AName, AValueType, TValue(), AIdx, nullptr);
}

void TLxSerializer::SerializeArray(std::u16string_view AName, const TLxTypeInfo* ATypeInfo,
                                   void* AData, const TLxTypeInfo* AValueType, Integer AIdx) {
  SerializeChild(AName, ATypeInfo->GetName(), AData, AValueType, AIdx);
}

void TLxSerializer::SerializeInterface(std::u16string_view AName, const TLxTypeInfo* ATypeInfo,
                                       IInterface* AInterface, Integer AIdx) {
  if (!AInterface || ExcludesChildren()) {
    SerializeValue(AName, ATypeInfo, TValue(), AIdx, nullptr);
    return;
  }
  IPtr<ILxSerializable> Serializable = IPtr<ILxSerializable>::From(AInterface);
  if (!Serializable)
    // Automation objects, which a further step would walk, exist on no platform we run on.
    throw ELxSerializeException(
        u"Serialization failure at \"%s\"\r\nThe field \"%s\" of type \"%s\" cannot be "
        u"serialized (Record)!",
        {FPath, UnicodeString(AName), UnicodeString(TypeKindName(ATypeInfo->GetKind()))});
  TOwned<TLxSerializer> Child(CreateChildSerializer(AInterface, ATypeInfo));
  const bool Brackets = (FInstanceTypeInfo && FInstanceTypeInfo->GetTypeKind() == ltkRecord) ||
                        !OptionIsTrue(u"excluderoot");
  if (Brackets)
    Child->SerializeStartType(AName, ATypeInfo, AIdx);
  Write(Serializable->Serialize(Format(), GetParams()));
  if (Brackets)
    Child->SerializeEndType(AName, ATypeInfo, AIdx);
}

// --- the walk ------------------------------------------------------------------------------------
bool TLxSerializer::IsBeingWritten(TObject* AObject) const noexcept {
  for (const TLxCustomSerializer* Serializer = this; Serializer;
       Serializer = Serializer->GetParent()) {
    if (Serializer->GetInstance() == AObject)
      return true;
    if (Serializer->GetParent() == Serializer)
      break;
  }
  return false;
}

void TLxSerializer::DoSerialize(TLxSerializer* AParent, std::u16string_view AMemberName,
                                std::u16string_view APath) {
  if (AMemberName.empty())
    FPath.clear();
  else if (APath.empty())
    FPath = AMemberName;
  else {
    FPath = APath;
    FPath += u'.';
    FPath += AMemberName;
  }
  FMemberName = AMemberName;
  if (!FInstanceTypeInfo)
    return;
  const TLxTypeKind Kind = FInstanceTypeInfo->GetTypeKind();
  if (LxHasMembers(Kind))
    SerializeMembers();
  else if (LxIsArrayKind(Kind))
    SerializeArrayElements(AParent, AMemberName);
  else if (Kind != ltkPointer)
    SerializeValue(AMemberName, FInstanceTypeInfo, FValue, -1, nullptr);
}

void TLxSerializer::SerializeMembers() {
  const TLxTypeDescription& Description = *FInstanceTypeInfo->GetDescription();
  const bool ExcludeChildren = ExcludesChildren();
  const auto SkipsChild = [&](TLxTypeKind AKind) {
    return ExcludeChildren && (AKind == ltkRecord || AKind == ltkClass || AKind == ltkInterface);
  };
  const auto InCycle = [&](const TLxTypeInfo* AType, const TValue& AValue) {
    return AType && AType->GetTypeKind() == ltkClass && !AValue.IsNull() &&
           IsBeingWritten(AValue.AsObject());
  };

  for (const TLxPlannedMember& Member : MemberPlans().For(Description)) {
    if (const TLxFieldDescription* Field = Member.Field) {
      TValue Value = Field->GetValue(FInstancePtr);
      const TLxTypeInfo* Type = Field->GetFieldType();
      UnwrapValue(Value, Type);
      if (!Type || InCycle(Type, Value) || SkipsChild(Type->GetTypeKind()))
        continue;
      SerializeFieldOrProp(Member.Name, Type, Value, AttributesOf(*Field));
      continue;
    }
    const TLxPropertyDescription* Property = Member.Property;
    TValue Value = Property->GetValue(FInstancePtr);
    const TLxTypeInfo* Type = Property->GetPropertyType();
    UnwrapValue(Value, Type);
    if (!Type)
      continue;
    const TLxTypeKind Kind = Type->GetTypeKind();
    if (LxIsNeverWrittenAsProperty(Kind) || SkipsChild(Kind) || InCycle(Type, Value))
      continue;
    THelperHold Helper;
    if (const SerializerHint* HelperHint = Property->FindHint(shoSerializerHelper))
      Helper.reset(
          static_cast<TLxSerializerHelper*>(SerializerHelperClass(*HelperHint)->CreateDefault()));
    else if (Kind == ltkClass) {
      TObject* Object = Value.AsObject();
      Helper.reset(LxFindSerializerHelper(Object ? Object->ClassType()
                                                 : Type->GetDescription()->MetaclassType()));
    }
    if (Helper) {
      bool Handled = GetParent() != nullptr;
      Helper->Serialize(this, Member.Name, Type, Value, Handled);
      if (Handled)
        continue;
    }
    SerializeFieldOrProp(Member.Name, Type, Value, AttributesOf(*Property));
  }
}

void TLxSerializer::SerializeArrayElements(TLxSerializer* AParent,
                                           std::u16string_view AMemberName) {
  TValue Array;
  if (!AMemberName.empty()) {
    const TLxTypeDescription* Owner = AParent && AParent->FInstanceTypeInfo
                                          ? AParent->FInstanceTypeInfo->GetDescription()
                                          : nullptr;
    const TLxFieldDescription* Field = Owner ? Owner->GetField(AMemberName) : nullptr;
    const TLxPropertyDescription* Property =
        Owner && !Field ? Owner->GetProperty(AMemberName) : nullptr;
    if (!Field && !Property)
      throw ELxSerializeException(
          u"Serialization failure at \"%s\"\r\nArrays are only supported as "
          u"a field or property of another object/record!",
          {FPath});
    Array =
        Field ? Field->GetValue(AParent->FInstancePtr) : Property->GetValue(AParent->FInstancePtr);
  } else {
    Array = FValue;
    if (Array.GetTypeKind() != FInstanceTypeInfo->GetKind())
      throw ELxSerializeException(u"Serialization failure at \"%s\"\r\nThe type of the value does "
                                  u"not match the type of the instanceinfo!",
                                  {FPath});
  }
  const TLxTypeInfo* Element = Array.LxTypeInfo()->GetDescription()->ElementType();
  const UnicodeString ElementName = Element->SchemaName();
  const Integer Length = Array.GetArrayLength();
  for (Integer Index = 0; Index < Length; ++Index) {
    TValue Item = Array.GetArrayElement(Index);
    switch (Element->GetKind()) {
    case tkClass:
      // An element that is already being written (an object listed in its own array, or in an
      // array below it) is left out, as a member in a cycle is: the walk would never end.
      if (TObject* Object = Item.AsObject(); Object && IsBeingWritten(Object))
        break;
      SerializeClass(ElementName, Element->GetDescription()->MetaclassType(), Item.AsObject(),
                     Index);
      break;
    case tkArray:
    case tkDynArray:
      SerializeArray(ElementName, Element, Item.GetReferenceToRawData(), Item.LxTypeInfo(), Index);
      break;
    case tkRecord:
      SerializeRecord(ElementName, Element, Item.GetReferenceToRawData(), Item.LxTypeInfo(), Index);
      break;
    default:
      SerializeValue(ElementName, Element, Item, Index, nullptr);
    }
  }
}

} // namespace lorvane
