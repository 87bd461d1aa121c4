// The deserializer driver: members by name and by hint, child deserializers, instances by type
// name and by class, values stored into fields, properties and arrays, and value-type members
// written back to their owners.
#include "lorvane/serializer/LxDeserializer.h"

#include "lorvane/core/LxStreams.h"
#include "lorvane/core/LxTextParser.h"
#include "lorvane/serializer/LxDeserialization.h"

#include <unordered_set>

namespace lorvane {

namespace {

/// The interface I of an object, when the object offers it.
template <class I> IPtr<I> QueryObject(TObject* AObject) {
  auto* Interfaces = dynamic_cast<IInterface*>(AObject);
  return Interfaces ? IPtr<I>::From(Interfaces) : IPtr<I>();
}

bool IsReservedName(std::u16string_view AName) noexcept {
  for (std::u16string_view Reserved : {u"className", u"parent", u"owner", u"type"})
    if (SameText(AName, Reserved))
      return true;
  return false;
}

bool StartsWithDigit(std::u16string_view AText) noexcept {
  return !AText.empty() && AText[0] >= u'0' && AText[0] <= u'9';
}

UnicodeString EnumPrefixOf(const TLxTypeInfo* AType) {
  const SerializerHint* Prefix = AType ? AType->GetDescription()->FindHint(shoEnumPrefix) : nullptr;
  return Prefix ? Prefix->GetValue() : UnicodeString();
}

Int64 EnumOrdinal(const TLxTypeInfo* AType, std::u16string_view AName) {
  const Int64 Ordinal = AType->GetDescription()->GetEnumValue(AName);
  if (Ordinal < 0)
    RaiseAssertionFailed(u"Failed to get the EnumValue for " + UnicodeString(AName));
  return Ordinal;
}

TLxDeserializer* AsDeserializer(TLxCustomSerializer* ASerializer) noexcept {
  return ASerializer && ASerializer->InheritsFrom(TLxDeserializer::StaticClass())
             ? static_cast<TLxDeserializer*>(ASerializer)
             : nullptr;
}

/// Sets to nil every member that points at one of the objects of ADoomed, in the value at AData
/// of type AType and in every object reachable from it: a run that frees the objects it made
/// leaves no member pointing at them.
class TReferenceCleaner {
public:
  explicit TReferenceCleaner(const std::unordered_set<TObject*>& ADoomed) : FDoomed(ADoomed) {}

  void Clean(void* AData, const TLxTypeInfo* AType) {
    Visit(AData, AType);
    while (!FPending.empty()) {
      TObject* Object = FPending.back();
      FPending.pop_back();
      Visit(Object, TLxTypes::GetTypeInfo(Object->ClassType()));
    }
  }

private:
  void Visit(void* AData, const TLxTypeInfo* AType) {
    if (!AData || !AType)
      return;
    const TLxTypeDescription& Description = *AType->GetDescription();
    switch (AType->GetTypeKind()) {
    case ltkClass:
    case ltkRecord:
      for (const TLxFieldDescription* Field : Description.GetFields())
        Slot(Field->GetAddress(AData), Field->GetFieldType());
      for (const TLxPropertyDescription* Property : Description.GetProperties()) {
        const TLxTypeInfo* Type = Property->GetPropertyType();
        const TLxTypeKind Kind = Type->GetTypeKind();
        if (!Property->GetIsReadable() || !Property->GetIsWritable() ||
            !(Kind == ltkClass || Kind == ltkRecord || LxIsArrayKind(Kind)))
          continue;
        // A property gives a copy: it is cleaned as a value and written back when it changed.
        TValue Value = Property->GetValue(AData);
        const std::size_t Before = FCleared;
        Slot(Value.GetReferenceToRawData(), Type);
        if (FCleared != Before)
          Property->SetValue(AData, Value);
      }
      break;
    case ltkArray:
    case ltkDynArray:
      if (const TLxTypeInfo* Element = Description.ElementType())
        for (Integer I = 0, Count = Description.Access().GetLength(AData); I < Count; ++I)
          Slot(Description.Access().ElementAddress(AData, I), Element);
      break;
    default:
      break;
    }
  }

  // A field or element: an object pointer is cleared or followed, a record or array entered.
  void Slot(void* AAddress, const TLxTypeInfo* AType) {
    if (AType->GetTypeKind() == ltkClass) {
      auto*& Object = *static_cast<TObject**>(AAddress);
      if (FDoomed.contains(Object)) {
        Object = nullptr;
        ++FCleared;
      } else
        Reach(Object);
    } else if (AType->GetTypeKind() == ltkRecord || LxIsArrayKind(AType->GetTypeKind())) {
      Visit(AAddress, AType);
    }
  }

  void Reach(TObject* AObject) {
    if (AObject && FSeen.insert(AObject).second)
      FPending.push_back(AObject);
  }

public:
  /// The objects that the last Clean reached (the start itself aside).
  const std::unordered_set<TObject*>& Reached() const noexcept { return FSeen; }

private:
  const std::unordered_set<TObject*>& FDoomed;
  std::unordered_set<TObject*> FSeen;
  std::vector<TObject*> FPending;
  std::size_t FCleared = 0;
};

} // namespace

HRESULT TLxDeserializer::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxDeserializer>(
      this, AIID, AObj, [&] { return TLxCustomSerializer::QueryInterface(AIID, AObj); });
}

TLxDeserializerObjectList* TLxDeserializer::OwnList() const noexcept {
  if (!FCreatedObjs || !FCreatedObjs->InheritsFrom(TLxDeserializerObjectList::StaticClass()))
    return nullptr;
  auto* List = static_cast<TLxDeserializerObjectList*>(FCreatedObjs);
  return List->GetOwner() == this ? List : nullptr;
}

TLxDeserializer::~TLxDeserializer() {
  // Children go first: they share this deserializer's list.
  for (TLxDeserializer* Child : FUnownedChildren)
    lorvane::Free(Child);
  if (TLxDeserializerObjectList* Own = OwnList();
      Own && Own->GetOwnsObjects() && Own->GetCount() > 0) {
    std::unordered_set<TObject*> Doomed;
    for (Integer I = 0; I < Own->GetCount(); ++I)
      Doomed.insert(Own->GetItems(I));
    TReferenceCleaner Cleaner(Doomed);
    Cleaner.Clean(FInstancePtr, FInstanceTypeInfo);
    // The made objects that the instance doesn't reach (those of an array that a failure kept
    // from being stored) may refer to each other: the list frees each once.
    for (TObject* Made : Doomed)
      Cleaner.Clean(Made, TLxTypes::GetTypeInfo(Made->ClassType()));
  }
  lorvane::Free(OwnList());
  lorvane::Free(FCHelper);
}

// --- creation ------------------------------------------------------------------------------------
void TLxDeserializer::Create(const TValue& AValue) {
  FMemberValue = AValue;
  TLxCustomSerializer::Create(AValue);
  // The instance of an array is the member value itself, where the second deserializer of a root
  // array reads the elements. A record stays in FValue: reading its members replaces the member
  // value with each member's, which must not take the instance with it.
  if (FInstancePtr && FInstancePtr == FValue.GetReferenceToRawData() && FInstanceTypeInfo &&
      LxIsArrayKind(FInstanceTypeInfo->GetTypeKind()))
    FInstancePtr = FMemberValue.GetReferenceToRawData();
}

void TLxDeserializer::Create(void* AInstancePtr, const TLxTypeInfo* ATypeInfo) {
  TLxCustomSerializer::Create(AInstancePtr, ATypeInfo);
  FOwnListOnDemand = !FCreatedObjs;
  FArrIdx = -1;
  ClearMember();
  FetchInstanceHelper();
}

void TLxDeserializer::FetchInstanceHelper() {
  FIHelper = nullptr;
  if (FInstancePtr && FInstanceTypeInfo && FInstanceTypeInfo->GetTypeKind() == ltkClass)
    FIHelper = QueryObject<ILxDeserializerHelper>(static_cast<TObject*>(FInstancePtr));
}

void TLxDeserializer::ClearMember() noexcept {
  FMemberField = nullptr;
  FMemberProp = nullptr;
  FMemberTypeInfo = nullptr;
}

void TLxDeserializer::SetParent(TLxCustomSerializer* AParent) {
  TLxCustomSerializer::SetParent(AParent);
  if (TLxDeserializer* Parent = AsDeserializer(AParent))
    SetCreatedObjects(Parent->CreatedObjects());
}

TObjectList* TLxDeserializer::CreatedObjects() {
  if (!FCreatedObjs && FOwnListOnDemand)
    FCreatedObjs = New<TLxDeserializerObjectList>(this, /*AOwnsObjects=*/true);
  return FCreatedObjs;
}

void TLxDeserializer::SetCreatedObjects(TObjectList* AList) {
  if (AList && AList == FCreatedObjs)
    return;
  if (TLxDeserializerObjectList* Own = OwnList()) {
    FCreatedObjs = nullptr;
    Own->Clear();
    lorvane::Free(Own);
  }
  FCreatedObjs = AList ? AList : New<TLxDeserializerObjectList>(this, /*AOwnsObjects=*/false);
  FOwnListOnDemand = false;
}

bool TLxDeserializer::ReadClassName(UnicodeString& AName) {
  AName.clear();
  return false;
}

TObject* TLxDeserializer::CreateInstance(const TLxTypeInfo* ATypeInfo) {
  TClass Class = ATypeInfo ? ATypeInfo->GetDescription()->MetaclassType() : nullptr;
  if (!Class && ATypeInfo)
    Class = GetClass(ATypeInfo->GetName());
  if (!Class)
    throw Exception(u"Failed to retrieve the Class of type \"%s\"!",
                    {ATypeInfo ? ATypeInfo->GetName() : UnicodeString()});
  TObject* Made = nullptr;
  if (TObject::ClassInheritsFrom(Class, TComponent::StaticClass())) {
    if (Class->CreateWithOwner) {
      TObject* Owner = GetObjParam(u"Owner");
      Made = Class->CreateWithOwner(Owner && Owner->InheritsFrom(TComponent::StaticClass())
                                        ? static_cast<TComponent*>(Owner)
                                        : nullptr);
    }
  } else if (Class->CreateDefault) {
    Made = Class->CreateDefault();
    // The caller owns what is made here; interface references must not end it.
    if (Made->InheritsFrom(TLxObject::StaticClass()))
      static_cast<TLxObject*>(Made)->SetAutoDestroy(false);
  }
  if (!Made)
    return nullptr;
  if (TClass Control = GetClass(u"TControl"); Control && TObject::ClassInheritsFrom(Class, Control))
    if (TObject* Parent = GetObjParam(u"Parent"))
      if (const TLxPropertyDescription* Property =
              TLxTypes::GetTypeInfo(Class)->GetDescription()->GetProperty(u"Parent")) {
        TOwned<TObject> Hold(Made);
        Property->SetValue(Made, TValue::Make(&Parent, LxClassTypeHandle(Parent->ClassType())));
        Made = Hold.release();
      }
  return Made;
}

// --- runs ----------------------------------------------------------------------------------------
void TLxDeserializer::Deserialize(const TLxSerializedData& AData) {
  TOwned<TLxStringStream> Stream(New<TLxStringStream>(std::string_view(AData), Word(65001)));
  Deserialize(Stream.get());
}

void TLxDeserializer::Deserialize(TStream* AStream) {
  if (FParent)
    RaiseAssertionFailed(u"The \"Deserialize\" method may only be called on the root!");
  FStream = AStream;
  TLxDeserializer* Worker = CheckInstance();
  // A second deserializer that does the work belongs to this run.
  TOwned<TLxDeserializer> Held(Worker != this ? Worker : nullptr);
  if (Held)
    Held->SetAutoDestroy(false);
  if (FInstancePtr && FInstanceTypeInfo && FInstanceTypeInfo->GetTypeKind() == ltkClass) {
    auto* Object = static_cast<TObject*>(FInstancePtr);
    FetchInstanceHelper();
    if (IPtr<ILxDeserializable> Own = QueryObject<ILxDeserializable>(Object);
        Own && Own->CanDeserialize(Format())) {
      RawByteString Rest;
      Rest.resize(static_cast<std::size_t>(
          std::max<Int64>(0, FStream->GetSize() - FStream->GetPosition())));
      Rest.resize(static_cast<std::size_t>(FStream->Read(Rest.data(), Int64(Rest.size()))));
      Own->Deserialize(Format(), Rest, GetParams());
      return;
    }
  }
  FRunStart = FCreatedObjs ? FCreatedObjs->GetCount() : 0;
  try {
    if (Worker->FInstancePtr)
      Worker->DeserializeStartType();
    Worker->DoDeserialize();
    if (Worker->FInstancePtr)
      Worker->DeserializeEndType();
  } catch (...) {
    FreeStrandedObjects(/*ASucceeded=*/false);
    throw;
  }
  FreeStrandedObjects(/*ASucceeded=*/true);
}

// A run whose list owns nothing (the graph was to keep the objects), its own or a caller's,
// frees what the caller can't reach of what it made: after a success, objects that the result no
// longer refers to (a member read twice, an array shortened by a later text); after a failure, also
// those made for an array or record not yet written back, and for a value given back only by a run
// that succeeds, all of them. Of those, only the ones that no other stranded object refers to are
// freed: the graph frees the rest with them.
void TLxDeserializer::FreeStrandedObjects(bool ASucceeded) {
  // A caller's list that owns nothing says the same as a list of the run's own that owns
  // nothing; of a caller's list only what this run added is looked at.
  TObjectList* Own = OwnList() ? OwnList() : FCreatedObjs;
  if (!Own || Own->GetOwnsObjects() || Own->GetCount() <= FRunStart)
    return;
  const std::unordered_set<TObject*> None;
  TReferenceCleaner Walk(None);
  const bool InPlace = FInstanceTypeInfo && FInstanceTypeInfo->GetTypeKind() == ltkClass;
  if (InPlace)
    Walk.Clean(FInstancePtr, FInstanceTypeInfo);
  else if (ASucceeded && !FMemberValue.GetIsEmpty())
    Walk.Clean(FMemberValue.GetReferenceToRawData(), FMemberValue.LxTypeInfo());
  const bool Walked = InPlace || (ASucceeded && !FMemberValue.GetIsEmpty());
  std::vector<TObject*> Stranded;
  for (Integer I = FRunStart; I < Own->GetCount(); ++I)
    if (TObject* Made = Own->GetItems(I); !Walked || !Walk.Reached().contains(Made))
      Stranded.push_back(Made);
  if (ASucceeded && Stranded.empty())
    return;
  std::unordered_set<TObject*> Held;
  for (TObject* Made : Stranded) {
    TReferenceCleaner From(None);
    From.Clean(Made, TLxTypes::GetTypeInfo(Made->ClassType()));
    Held.insert(From.Reached().begin(), From.Reached().end());
  }
  // What stays listed is what the result reaches; the stranded objects leave the list, and those
  // that another stranded one holds go with their holder.
  for (TObject* Made : Stranded)
    Own->Extract(Made);
  for (TObject* Made : Stranded)
    if (!Held.contains(Made))
      lorvane::Free(Made);
}

TLxDeserializer* TLxDeserializer::SubRoot() {
  TOwned<TLxDeserializer> Second(LxCreateDeserializerEx(Format(), FInstancePtr, FInstanceTypeInfo));
  Second->SetParent(this);
  Second->FName = u"subroot";
  return Second.release();
}

// With an instance: this deserializer, or at the root of an array a second one that reads the
// elements into this one's member value. With a type only: a new instance, filled by this one.
// With neither: the class named at the start of the text, and a second deserializer for a new
// instance of it.
TLxDeserializer* TLxDeserializer::CheckInstance() {
  if (FInstancePtr) {
    if (!FInstanceTypeInfo)
      throw Exception(u"No TypeInfo available!");
    if (!FParent && LxIsArrayKind(FInstanceTypeInfo->GetTypeKind())) {
      const TLxTypeInfo* ValueType = FMemberValue.LxTypeInfo();
      if (!ValueType)
        throw Exception(u"The MemberValueType is NIL!");
      if (ValueType->GetHandle() != FInstanceTypeInfo->GetHandle() &&
          ValueType->GetQualifiedName() != FInstanceTypeInfo->GetQualifiedName())
        throw Exception(u"The MemberValueType (%s) is different than the InstanceTypeInfo (%s)!",
                        {ValueType->GetQualifiedName(), FInstanceTypeInfo->GetQualifiedName()});
      FMemberTypeInfo = FInstanceTypeInfo;
      return SubRoot();
    }
    return this;
  }
  if (FInstanceTypeInfo) {
    FInstancePtr = CreateInstance(FInstanceTypeInfo);
    if (!FInstancePtr)
      throw Exception(u"Failed to create an instance of the requested object!");
    return this;
  }
  const Int64 Start = FStream->GetPosition();
  UnicodeString Name;
  {
    TOwned<TLxTextParser> Parser(New<TLxTextParser>(FStream, /*AStreamOwner=*/false, Word(65001)));
    ReadClassName(Parser.get(), Name);
  }
  if (Name.empty())
    throw Exception(u"Failed to read the ClassName from the stream!");
  FInstanceTypeInfo = TLxTypes::GetTypeInfo(Name, ltnSchema, /*ARaiseIfNotFound=*/true, lmkNone);
  FStream->SetPosition(Start);
  FInstancePtr = CreateInstance(FInstanceTypeInfo);
  if (!FInstancePtr)
    throw Exception(u"Failed to create an instance of the requested object!");
  return SubRoot();
}

// --- children ------------------------------------------------------------------------------------
TLxDeserializer* TLxDeserializer::FinishChild(TOwned<TLxDeserializer> AChild,
                                              std::u16string_view AName,
                                              const SerializerHint* AHint) {
  AChild->FName = AName;
  if (AHint && AHint->GetOption() == shoDeserializerHelper)
    AChild->FCHelper =
        static_cast<TLxDeserializerHelper*>(DeserializerHelperClass(*AHint)->CreateDefault());
  else if (AChild->FInstanceTypeInfo && AChild->FInstanceTypeInfo->GetTypeKind() == ltkClass)
    AChild->FCHelper =
        LxFindDeserializerHelper(AChild->FInstanceTypeInfo->GetDescription()->MetaclassType());
  TLxDeserializer* Child = AChild.get();
  // From here the format decides who owns the child (the XML reader, as its content handler);
  // a child that nobody took belongs to this deserializer.
  Child->SetParent(this);
  if (!Child->GetAutoDestroy())
    FUnownedChildren.push_back(Child);
  AChild.release();
  Child->DeserializeStartType();
  return Child;
}

TLxDeserializer* TLxDeserializer::CreateChildDeserializer(std::u16string_view AName, void* AData,
                                                          const TLxTypeInfo* ATypeInfo,
                                                          const SerializerHint* AHint) {
  return FinishChild(TOwned<TLxDeserializer>(LxCreateDeserializerEx(Format(), AData, ATypeInfo)),
                     AName, AHint);
}

TLxDeserializer* TLxDeserializer::CreateChildDeserializer(std::u16string_view AName, TClass AClass,
                                                          void* AData, const TLxTypeInfo* ATypeInfo,
                                                          const SerializerHint* AHint) {
  TOwned<TLxDeserializer> Child;
  if (AClass && TObject::ClassInheritsFrom(AClass, TLxDeserializer::StaticClass()) &&
      AClass->CreateDefault) {
    Child.reset(static_cast<TLxDeserializer*>(AClass->CreateDefault()));
    Child->Create(AData, ATypeInfo);
  } else {
    Child.reset(LxCreateDeserializerEx(Format(), AData, ATypeInfo));
  }
  return FinishChild(std::move(Child), AName, AHint);
}

TLxDeserializer* TLxDeserializer::CreateChildDeserializer(std::u16string_view AName,
                                                          const TValue& AValue,
                                                          const SerializerHint* AHint) {
  TValue Value = AValue;
  TOwned<TLxDeserializer> Child(LxCreateDeserializerEx(Format(),
                                                       Value.GetTypeKind() == tkClass
                                                           ? static_cast<void*>(Value.AsObject())
                                                           : Value.GetReferenceToRawData(),
                                                       Value.LxTypeInfo()));
  Child->FMemberValue = std::move(Value);
  if (Child->FMemberValue.GetTypeKind() != tkClass)
    Child->FInstancePtr = Child->FMemberValue.GetReferenceToRawData();
  return FinishChild(std::move(Child), AName, AHint);
}

void TLxDeserializer::CreateChildDeserializerIfNeeded(std::u16string_view) {
  if (!FMemberTypeInfo)
    return;
  const bool InArray = IsArraySerializer();
  const TLxMemberDescription* Member =
      FMemberField ? static_cast<const TLxMemberDescription*>(FMemberField) : FMemberProp;
  if (!InArray && !Member)
    throw Exception(u"Unknown Serializer Name");
  const UnicodeString Name = InArray ? UnicodeString(u"ArrayElm") : Member->GetName();
  const SerializerHint* Hint = Member ? Member->FindHint(shoDeserializerHelper) : nullptr;
  switch (FMemberTypeInfo->GetKind()) {
  case tkArray:
  case tkRecord:
  case tkDynArray:
    if (FMemberValue.GetIsEmpty())
      FMemberValue = TValue::Make(nullptr, FMemberTypeInfo->GetHandle());
    CreateChildDeserializer(Name, FMemberValue.GetReferenceToRawData(), FMemberTypeInfo, Hint);
    return;
  case tkClass: {
    TObject* Object = FMemberValue.AsObject();
    UnicodeString ClassName;
    bool NamedClass = false;
    if (!Object && CreatedObjects()) {
      const TLxTypeInfo* Type = FMemberTypeInfo;
      NamedClass = ReadClassName(ClassName);
      if (NamedClass)
        Type = ClassName.empty() ? nullptr
                                 : TLxTypes::GetTypeInfo(ClassName, ltnSchema, false, lmkNone);
      // The member holds objects of its own class: a text may name a descendant, not any class.
      if (Type && Type != FMemberTypeInfo && Type->GetTypeKind() == ltkClass &&
          !TObject::ClassInheritsFrom(Type->GetDescription()->MetaclassType(),
                                      FMemberTypeInfo->GetDescription()->MetaclassType()))
        throw ELxSerializeException(u"The class \"%s\" doesn't fit the member %s of type %s!",
                                    {ClassName, Name, FMemberTypeInfo->GetQualifiedName()});
      const TLxMethodDescription* Create = Type && Type->GetTypeKind() == ltkClass
                                               ? Type->GetDescription()->GetMethod(u"Create")
                                               : nullptr;
      if (Create && Create->GetParameters().empty()) {
        Object = CreateInstance(Type);
        if (Object) {
          CreatedObjects()->Add(Object);
          FMemberValue = TValue::Make(&Object, Type->GetHandle());
          StoreMemberValue();
        }
      }
      if (!Object && !ClassName.empty())
        throw ENotSupportedException(u"Failed to create an instance of %s!", {ClassName});
    }
    if (!Object)
      return;
    if (Object->InheritsFrom(TComponent::StaticClass()) &&
        static_cast<TComponent*>(Object)->GetOwner() != FInstancePtr)
      return;
    CreateChildDeserializer(Name, Object, TLxTypes::GetTypeInfo(Object->ClassType()), Hint);
    return;
  }
  default:
    return;
  }
}

// --- members -------------------------------------------------------------------------------------
TLxCanDeserialize TLxDeserializer::CanDeserialize(UnicodeString& ANamespace, UnicodeString& AName,
                                                  UnicodeString& AQualifiedTypeName,
                                                  bool ARaiseIfNo) {
  if (FCHelper)
    return FCHelper->CanDeserialize(this, ANamespace, AName, AQualifiedTypeName);
  TLxCanDeserialize Answer = desNo;
  if (FIHelper)
    Answer = FIHelper->CanDeserialize(this, ANamespace, AName, AQualifiedTypeName);
  if (Answer == desNo) {
    ClearMember();
    FMemberValue = TValue();
    const TLxTypeKind Kind = FInstanceTypeInfo ? FInstanceTypeInfo->GetTypeKind() : ltkUnknown;
    const TLxTypeDescription* Description =
        FInstanceTypeInfo ? FInstanceTypeInfo->GetDescription() : nullptr;
    const TLxMemberDescription* Found = nullptr;
    if (LxHasMembers(Kind)) {
      if (const TLxFieldDescription* Field = Description->GetField(AName)) {
        FMemberField = Field;
        FMemberValue = Field->GetValue(FInstancePtr);
        FMemberTypeInfo = Field->GetFieldType();
        Found = Field;
      } else if (Kind == ltkClass) {
        const TLxPropertyDescription* Property = Description->GetProperty(AName);
        if (Property && Property->GetVisibility() >= mvPublic) {
          FMemberProp = Property;
          if (Property->GetIsReadable())
            FMemberValue = Property->GetValue(FInstancePtr);
          FMemberTypeInfo = Property->GetPropertyType();
          Found = Property;
        }
      }
    }
    if (Found) {
      if (AQualifiedTypeName.empty() && FMemberTypeInfo)
        AQualifiedTypeName = FMemberTypeInfo->GetQualifiedName();
      Answer = Found->FindHint(shoDoNotSerialize) ? desIgnore : desYes;
    } else if (Kind == ltkClass) {
      for (const TLxPropertyDescription* Property : Description->GetProperties()) {
        const SerializerHint* Hint = Property->FindHint(shoName);
        if (Property->GetVisibility() < mvPublic || !Hint || !SameText(Hint->GetValue(), AName))
          continue;
        if (Property->FindHint(shoDoNotSerialize)) {
          Answer = desIgnore;
        } else {
          FMemberProp = Property;
          FMemberTypeInfo = Property->GetPropertyType();
          if (Property->GetIsReadable())
            FMemberValue = Property->GetValue(FInstancePtr);
          Answer = desYes;
        }
        break;
      }
    } else if (Kind == ltkRecord) {
      for (const TLxFieldDescription* Field : Description->GetFields()) {
        const SerializerHint* Hint = Field->FindHint(shoName);
        if (!Hint || !SameText(Hint->GetValue(), AName))
          continue;
        if (Field->FindHint(shoDoNotSerialize)) {
          Answer = desIgnore;
        } else {
          FMemberField = Field;
          FMemberTypeInfo = Field->GetFieldType();
          FMemberValue = Field->GetValue(FInstancePtr);
          Answer = desYes;
        }
        break;
      }
    }
    if (Answer == desNo && ARaiseIfNo && !IsReservedName(AName))
      throw ELxSerializeException(
          u"Failed to find a property or field with the name %s.%s!",
          {FInstanceTypeInfo ? FInstanceTypeInfo->GetQualifiedName() : UnicodeString(), AName});
  }
  if (Answer == desYes)
    CreateChildDeserializerIfNeeded(AName);
  return Answer;
}

bool TLxDeserializer::IsArraySerializer(TLxTypeKind* AKind) {
  if (!FParent || !FInstanceTypeInfo || !LxIsArrayKind(FInstanceTypeInfo->GetTypeKind()))
    return false;
  Assert(FMemberTypeInfo != nullptr,
         u"The FMemberTypeInfo should have been calculated in the \"DeserializeStartType\"!");
  if (AKind)
    *AKind = FMemberTypeInfo->GetTypeKind();
  return true;
}

TValue* TLxDeserializer::InitializeArrayElement(std::u16string_view, std::u16string_view AName) {
  if (!IsArraySerializer())
    return nullptr;
  TLxDeserializer* Parent = AsDeserializer(FParent);
  FArrIdx = Parent->FArrIdx + 1;
  FMemberField = Parent->FMemberField;
  FMemberProp = Parent->FMemberProp;
  FMemberTypeInfo = Parent->FMemberTypeInfo->GetDescription()->ElementType();
  if (FInstanceTypeInfo->GetTypeKind() == ltkDynArray)
    FInstanceTypeInfo->GetDescription()->Access().SetLength(FInstancePtr, FArrIdx + 1);
  else if (const Integer Length = FInstanceTypeInfo->GetDescription()->GetFixedLength();
           FArrIdx >= Length)
    throw ELxSerializeException(u"The array of type %s holds %d elements, and the text has more!",
                                {FInstanceTypeInfo->GetQualifiedName(), Length});
  Parent->FArrIdx = FArrIdx;
  FMemberValue = Parent->FMemberValue.GetArrayElement(FArrIdx);
  CreateChildDeserializerIfNeeded(AName);
  return &FMemberValue;
}

void TLxDeserializer::DeserializeStartType() {
  if (FCHelper)
    FCHelper->DeserializeStartType(this);
  if (FIHelper)
    FIHelper->BeforeDeserialize(this);
  Assert(FInstanceTypeInfo != nullptr, u"Assertion failure");
  if (LxIsArrayKind(FInstanceTypeInfo->GetTypeKind())) {
    TLxDeserializer* Parent = AsDeserializer(FParent);
    Assert(Parent != nullptr, u"The parent is the array field");
    Assert(Parent->FMemberTypeInfo != nullptr, u"The FMemberTypeInfo of the parent is not set!!");
    Parent->FArrIdx = -1;
    FMemberTypeInfo = Parent->FMemberTypeInfo->GetDescription()->ElementType();
  }
}

// The member value goes where the member lives: into the parent's array, the field, or the
// property.
void TLxDeserializer::StoreMemberValue() {
  if (IsArraySerializer()) {
    // A forgiving reader may hand an array a value before any element began.
    if (FArrIdx < 0)
      throw ELxSerializeException(u"A value of the array %s came before its first element!",
                                  {FInstanceTypeInfo->GetQualifiedName()});
    AsDeserializer(FParent)->FMemberValue.SetArrayElement(FArrIdx, FMemberValue);
  } else if (FMemberField)
    FMemberField->SetValue(FInstancePtr, FMemberValue);
  else if (FMemberProp)
    FMemberProp->SetValue(FInstancePtr, FMemberValue);
}

void TLxDeserializer::DeserializeValue(std::u16string_view ANamespace, std::u16string_view AName,
                                       std::u16string_view AValue,
                                       std::u16string_view AQualifiedTypeName) {
  bool Handled = false;
  if (FCHelper)
    FCHelper->DeserializeValue(this, ANamespace, AName, AValue, AQualifiedTypeName, Handled);
  if (FIHelper)
    FIHelper->DeserializeValue(this, ANamespace, AName, AValue, AQualifiedTypeName, Handled);
  if (Handled)
    return;
  if (!FMemberTypeInfo) {
    if (ANamespace.empty() && AName.empty() && FInstancePtr && FInstanceTypeInfo) {
      const TLxTypeKind Kind = FInstanceTypeInfo->GetTypeKind();
      if (LxIsArrayKind(Kind) || Kind == ltkRecord || Kind == ltkClass)
        LxDeserializeEx(Format(), FInstancePtr, FInstanceTypeInfo, StringToUTF8(AValue));
    }
    return;
  }
  const TLxTypeHandle Handle = FMemberTypeInfo->GetHandle();
  const TLxValueAccess& Access = FMemberTypeInfo->GetDescription()->Access();
  TValue Value;
  switch (FMemberTypeInfo->GetKind()) {
  case tkInteger:
    Value = TValue::FromOrdinal(Handle, ValueToInt(AValue));
    break;
  case tkInt64:
    Value = TValue::FromOrdinal(Handle, ValueToInt64(AValue));
    break;
  case tkFloat: {
    Value = TValue::Make(nullptr, Handle);
    double Number;
    switch (FMemberTypeInfo->GetTypeKind()) {
    case ltkDate:
      Number = ValueToDate(AValue);
      break;
    case ltkTime:
      Number = ValueToTime(AValue);
      break;
    case ltkDateTime:
      Number = ValueToDateTime(AValue);
      break;
    default:
      Number = ValueToFloat(AValue);
    }
    Access.SetFloat(Value.GetReferenceToRawData(), Number);
    break;
  }
  case tkChar:
  case tkWChar: {
    const UnicodeString Text = AValue.empty() ? UnicodeString() : ValueToStr(AValue);
    Value = TValue::FromOrdinal(Handle, Text.empty() ? 0 : Text[0]);
    break;
  }
  case tkString:
  case tkUString:
  case tkWString:
  case tkLString:
    // The 8-bit strings of this library hold UTF-8, which their description writes.
    Value = TValue::Make(nullptr, Handle);
    Access.SetText(Value.GetReferenceToRawData(), ValueToStr(AValue));
    break;
  case tkVariant:
    Value = TValue::From(ValueToVar(AValue, AQualifiedTypeName));
    break;
  case tkEnumeration:
    if (FMemberTypeInfo->GetTypeKind() == ltkBoolean)
      Value = TValue::From(ValueToBool(AValue));
    else if (StartsWithDigit(AValue))
      Value = TValue::FromOrdinal(Handle, StrToInt64(AValue));
    else {
      const UnicodeString Name = ValueToStr(AValue);
      Value = TValue::FromOrdinal(
          Handle,
          Name.empty() ? 0 : EnumOrdinal(FMemberTypeInfo, EnumPrefixOf(FMemberTypeInfo) + Name));
    }
    break;
  case tkSet: {
    Int64 Mask = 0;
    if (StartsWithDigit(AValue))
      Mask = StrToInt64(AValue);
    else {
      const TLxTypeInfo* Element = FMemberTypeInfo->GetDescription()->ElementType();
      const UnicodeString Prefix = EnumPrefixOf(Element);
      std::u16string_view Rest = AValue;
      const UnicodeString Text = ValueToStr(AValue);
      Rest = Text;
      if (!Rest.empty() && Rest.front() == u'[')
        Rest.remove_prefix(1);
      if (!Rest.empty() && Rest.back() == u']')
        Rest.remove_suffix(1);
      while (!Rest.empty()) {
        const auto End = Rest.find_first_of(u", ");
        const std::u16string_view Name = Rest.substr(0, End);
        Rest.remove_prefix(End == std::u16string_view::npos ? Rest.size() : End + 1);
        if (!Name.empty())
          Mask |= Int64(1) << EnumOrdinal(Element, Prefix + UnicodeString(Name));
      }
    }
    Value = TValue::FromOrdinal(Handle, Mask);
    break;
  }
  case tkClass:
    if (AValue.empty()) {
      TObject* Nil = nullptr;
      Value = TValue::Make(&Nil, Handle);
      break;
    }
    [[fallthrough]];
  default:
    throw Exception(
        u"The value \"%s\" of type \"%s\" is not supported!",
        {UnicodeString(AValue), UnicodeString(LxTypeKindName(FMemberTypeInfo->GetTypeKind()))});
  }
  FMemberValue = std::move(Value);
  StoreMemberValue();
}

void TLxDeserializer::DeserializeEndType() {
  if (FCHelper)
    FCHelper->DeserializeEndType(this);
  if (FIHelper)
    FIHelper->AfterDeserialize(this);
  TLxDeserializer* Parent = AsDeserializer(FParent);
  if (!Parent)
    return;
  if (Parent->IsArraySerializer()) {
    const TLxTypeKind ElementKind =
        Parent->FMemberTypeInfo ? Parent->FMemberTypeInfo->GetTypeKind() : ltkUnknown;
    if (LxIsArrayKind(ElementKind) || ElementKind == ltkRecord) {
      if (TLxDeserializer* Owner = AsDeserializer(Parent->FParent); Owner && Owner->FArrIdx >= 0)
        Owner->FMemberValue.SetArrayElement(Owner->FArrIdx, Parent->FMemberValue);
    } else if (ElementKind != ltkClass && FArrIdx >= 0) {
      Parent->FMemberValue.SetArrayElement(FArrIdx, FMemberValue);
    }
    return;
  }
  if (Parent->FMemberTypeInfo) {
    const TTypeKind Kind = Parent->FMemberTypeInfo->GetKind();
    if (Kind == tkArray || Kind == tkRecord || Kind == tkDynArray) {
      if (Parent->FMemberField)
        Parent->FMemberField->SetValue(Parent->FInstancePtr, Parent->FMemberValue);
      else if (Parent->FMemberProp)
        Parent->FMemberProp->SetValue(Parent->FInstancePtr, Parent->FMemberValue);
    }
  }
}

} // namespace lorvane
