// The type registry: TLxTypeInfo made once per handle, the name tables, aliases, class handles,
// the undeclared "ArrayOf..." arrays and the table of serializers.
#include "lorvane/types/LxTypes.h"

#include "lorvane/platform/Classes.h"

#include <map>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

namespace lorvane {

namespace {

constexpr std::u16string_view ArrayOfPrefix = u"ArrayOf";

UnicodeString FoldedKey(std::u16string_view AName) {
  UnicodeString Key(AName);
  for (WideChar& C : Key)
    if (C >= u'A' && C <= u'Z')
      C = static_cast<WideChar>(C + (u'a' - u'A'));
  return Key;
}

/// FoldedKey of a name, on the stack when it is short: documents look names up per element.
class TFoldedName {
public:
  explicit TFoldedName(std::u16string_view AName) {
    if (AName.size() > std::size(FShort)) {
      FLong = FoldedKey(AName);
      FView = FLong;
      return;
    }
    for (std::size_t I = 0; I < AName.size(); ++I) {
      const WideChar C = AName[I];
      FShort[I] = C >= u'A' && C <= u'Z' ? static_cast<WideChar>(C + (u'a' - u'A')) : C;
    }
    FView = std::u16string_view(FShort, AName.size());
  }
  TFoldedName(const TFoldedName&) = delete;
  TFoldedName& operator=(const TFoldedName&) = delete;
  std::u16string_view View() const noexcept { return FView; }

private:
  WideChar FShort[64];
  UnicodeString FLong;
  std::u16string_view FView;
};

/// Hashes names and views alike, so that a table of names takes a view to look up.
struct TNameHash {
  using is_transparent = void;
  std::size_t operator()(std::u16string_view AName) const noexcept {
    return std::hash<std::u16string_view>()(AName);
  }
};

/// The constructor that a metaclass offers, as the method "Create".
class TMetaclassConstructor final : public TLxMethodDescription {
public:
  TMetaclassConstructor(TClass AClass, std::vector<TLxParameterDescription> AParameters)
      : TLxMethodDescription(u"Create", mvPublic, std::move(AParameters), LxClassTypeHandle(AClass),
                             /*AIsConstructor=*/true),
        FClass(AClass) {}

  TValue Invoke(void*, const std::vector<TValue>& AArguments) const override {
    if (AArguments.size() != GetParameters().size())
      throw EInvalidCast(u"Parameter count mismatch");
    TObject* Made = AArguments.empty()
                        ? FClass->CreateDefault()
                        : FClass->CreateWithOwner(AArguments[0].AsType<TComponent*>());
    return TValue::Make(&Made, LxClassTypeHandle(FClass));
  }

private:
  TClass FClass;
};

class TRegistry {
public:
  std::recursive_mutex Lock;

  const TLxTypeInfo* InfoOf(TLxTypeHandle AHandle) {
    if (const TLxTypeInfo* Known = AHandle->Info.load(std::memory_order_acquire))
      return Known;
    std::lock_guard Guard(Lock);
    EnsureBuiltIns();
    if (const TLxTypeInfo* Known = AHandle->Info.load(std::memory_order_relaxed))
      return Known;
    auto Description = std::make_unique<TLxTypeDescription>(AHandle);
    if (AHandle->Describe)
      AHandle->Describe(*Description);
    else if (auto Found = ClassOfHandle.find(AHandle); Found != ClassOfHandle.end())
      DescribeClassShape(*Description, Found->second);
    auto Info = std::make_unique<TLxTypeInfo>(Description.get(), Description->GetTypeKind(),
                                              Description->GetKind());
    Description->SetTypeInfo(Info.get());
    const TLxTypeInfo* Result = Info.get();
    Descriptions.push_back(std::move(Description));
    Infos.push_back(std::move(Info));
    EnterNames(Result);
    AHandle->Info.store(Result, std::memory_order_release);
    return Result;
  }

  TLxTypeHandle ClassHandle(TClass AClass) {
    if (const void* Known = AClass->RegistryHandle.load(std::memory_order_acquire))
      return static_cast<TLxTypeHandle>(Known);
    std::lock_guard Guard(Lock);
    auto Found = HandleOfClass.find(AClass);
    if (Found == HandleOfClass.end()) {
      auto Identity = std::unique_ptr<TLxTypeIdentity>(
          new TLxTypeIdentity{&LxValueOpsOf<TObject*>, nullptr, nullptr});
      ClassOfHandle.emplace(Identity.get(), AClass);
      Found = HandleOfClass.emplace(AClass, std::move(Identity)).first;
    }
    TLxTypeHandle Handle = Found->second.get();
    AClass->RegistryHandle.store(Handle, std::memory_order_release);
    return Handle;
  }

  const TLxTypeInfo* FindByName(std::u16string_view AName, TLxTypeNameType ANameType,
                                TLxMainTypeKind AMainKind) {
    std::lock_guard Guard(Lock);
    EnsureBuiltIns();
    if (const TLxTypeInfo* Found = FindInTable(AName, ANameType, AMainKind))
      return Found;
    if (ANameType == ltnSchema) {
      // The document's prefix is not part of the name.
      if (auto Colon = AName.rfind(u':'); Colon != std::u16string_view::npos) {
        AName = AName.substr(Colon + 1);
        if (const TLxTypeInfo* Found = FindInTable(AName, ANameType, AMainKind))
          return Found;
      }
      if (AMainKind == lmkNone || AMainKind == lmkArray)
        if (const TLxTypeInfo* Array = UndeclaredArray(AName))
          return Array;
    }
    if (AMainKind == lmkNone)
      if (TClass Registered = GetClass(AName))
        return InfoOf(ClassHandle(Registered));
    return nullptr;
  }

  void Rename(TLxTypeDescription& ADescription, std::u16string_view AQualifiedName) {
    const TLxTypeInfo* Info = ADescription.GetTypeInfo();
    // Only the names the type had by itself go; aliases registered before the description
    // keep finding it.
    Leave(ltnName, Info->GetName(), Info);
    Leave(ltnQualified, Info->GetQualifiedName(), Info);
    if (ADescription.GetAlias().empty())
      Leave(ltnSchema, Info->SchemaName(), Info);
    const auto Dot = AQualifiedName.rfind(u'.');
    ADescription.SetNames(Dot == std::u16string_view::npos ? AQualifiedName
                                                           : AQualifiedName.substr(Dot + 1),
                          AQualifiedName);
    EnterNames(Info);
  }

  void AddAlias(const TLxTypeInfo* AInfo, std::u16string_view AAlias) {
    auto& Description = const_cast<TLxTypeDescription&>(*AInfo->GetDescription());
    if (Description.GetAlias().empty())
      Description.SetAlias(AAlias);
    Enter(ltnSchema, AAlias, AInfo);
  }

  const TLxTypeInfo* ArrayView(const TLxTypeInfo* AInfo) {
    std::lock_guard Guard(Lock);
    auto& View = ArrayViews[AInfo];
    if (!View)
      View = std::make_unique<TLxTypeInfo>(AInfo->GetDescription(), ltkDynArray, tkDynArray);
    return View.get();
  }

  std::map<std::pair<TLxTypeHandle, Byte>, TLxRegisteredSerializers> Serializers;
  std::map<Byte, TLxRegisteredSerializers> DefaultSerializers;

private:
  // Made on the first look-up by name rather than with the registry: describing an array asks
  // the registry for its element while the registry would still be under construction.
  void EnsureBuiltIns() {
    if (BuiltInsKnown)
      return;
    BuiltInsKnown = true;
    // The order decides which type a shared schema name finds first ("string" is the plain
    // string, not a character; "long" the 64-bit integer, not a pointer).
    const TLxTypeHandle BuiltIns[] = {TypeHandle<UnicodeString>(),
                                      TypeHandle<Integer>(),
                                      TypeHandle<Int64>(),
                                      TypeHandle<bool>(),
                                      TypeHandle<Double>(),
                                      TypeHandle<Single>(),
                                      TypeHandle<Byte>(),
                                      TypeHandle<ShortInt>(),
                                      TypeHandle<Word>(),
                                      TypeHandle<SmallInt>(),
                                      TypeHandle<LongWord>(),
                                      TypeHandle<UInt64>(),
                                      TypeHandle<TDateTime>(),
                                      TypeHandle<TDate>(),
                                      TypeHandle<TTime>(),
                                      TypeHandle<Variant>(),
                                      TypeHandle<TValue>(),
                                      TypeHandle<std::string>(),
                                      TypeHandle<WideChar>(),
                                      TypeHandle<AnsiChar>(),
                                      TypeHandle<TClass>(),
                                      TypeHandle<Pointer>(),
                                      TypeHandle<IPtr<IInterface>>(),
                                      TypeHandle<std::vector<UnicodeString>>(),
                                      TypeHandle<std::vector<Integer>>(),
                                      TypeHandle<std::vector<Int64>>(),
                                      TypeHandle<std::vector<Double>>(),
                                      TypeHandle<std::vector<Single>>(),
                                      TypeHandle<std::vector<Byte>>(),
                                      TypeHandle<std::vector<ShortInt>>(),
                                      TypeHandle<std::vector<Word>>(),
                                      TypeHandle<std::vector<SmallInt>>(),
                                      TypeHandle<std::vector<LongWord>>(),
                                      TypeHandle<std::vector<UInt64>>(),
                                      TypeHandle<std::vector<TDateTime>>(),
                                      TypeHandle<std::vector<TDate>>(),
                                      TypeHandle<std::vector<TTime>>(),
                                      TypeHandle<std::vector<Variant>>(),
                                      TypeHandle<std::vector<TValue>>()};
    for (TLxTypeHandle Handle : BuiltIns)
      InfoOf(Handle);
    // Extended is Double in this library: the names that documents and serializers use for it
    // find Double.
    const TLxTypeInfo* Extended = InfoOf(TypeHandle<Double>());
    Enter(ltnName, u"Extended", Extended);
    Enter(ltnQualified, u"System.Extended", Extended);
  }

  static void DescribeClassShape(TLxTypeDescription& ADescription, TClass AClass) {
    const UnicodeString Name = ClassNameOf(AClass);
    ADescription.SetNames(Name, Name);
    ADescription.SetKinds(ltkClass, tkClass, lsdObject);
    ADescription.SetMetaclass(AClass);
    TLxValueAccess& Access = ADescription.MutableAccess();
    Access.GetObject = [](const void* AData) { return *static_cast<TObject* const*>(AData); };
    Access.SetObject = [](void* AData, TObject* AValue) {
      *static_cast<TObject**>(AData) = AValue;
    };
    if (AClass->CreateDefault)
      ADescription.AddMethod(new TMetaclassConstructor(AClass, {}));
    else if (AClass->CreateWithOwner)
      ADescription.AddMethod(new TMetaclassConstructor(
          AClass, {TLxParameterDescription(u"AOwner", TypeHandle<TComponent*>())}));
  }

  void Enter(TLxTypeNameType AType, std::u16string_view AName, const TLxTypeInfo* AInfo) {
    if (AName.empty())
      return;
    auto& Entries = Names[AType][FoldedKey(AName)];
    for (const TLxTypeInfo* Entry : Entries)
      if (Entry == AInfo)
        return;
    Entries.push_back(AInfo);
  }

  void EnterNames(const TLxTypeInfo* AInfo) {
    Enter(ltnName, AInfo->GetName(), AInfo);
    Enter(ltnQualified, AInfo->GetQualifiedName(), AInfo);
    Enter(ltnSchema, AInfo->SchemaName(), AInfo);
    const TLxTypeDescription* Description = AInfo->GetDescription();
    if (AInfo->GetTypeKind() == ltkDynArray && Description->ElementTypeHandle())
      ArrayOfElement.emplace(Description->ElementTypeHandle(), AInfo);
  }

  void Leave(TLxTypeNameType AType, std::u16string_view AName, const TLxTypeInfo* AInfo) {
    if (auto Found = Names[AType].find(TFoldedName(AName).View()); Found != Names[AType].end())
      std::erase(Found->second, AInfo);
  }

  const TLxTypeInfo* FindInTable(std::u16string_view AName, TLxTypeNameType ANameType,
                                 TLxMainTypeKind AMainKind) {
    auto Found = Names[ANameType].find(TFoldedName(AName).View());
    if (Found == Names[ANameType].end())
      return nullptr;
    for (const TLxTypeInfo* Entry : Found->second)
      if (AMainKind == lmkNone || Entry->GetMainTypeKind() == AMainKind)
        return Entry;
    return nullptr;
  }

  // "ArrayOfString": the dynamic array of the type whose schema name follows the prefix; one
  // that nobody declared is made without storage, for its names and element type.
  static bool IsArrayOfName(std::u16string_view AName) {
    return AName.size() > ArrayOfPrefix.size() &&
           FoldedKey(AName.substr(0, ArrayOfPrefix.size())) == FoldedKey(ArrayOfPrefix);
  }

  const TLxTypeInfo* UndeclaredArray(std::u16string_view AName) {
    if (!IsArrayOfName(AName))
      return nullptr;
    // Counted before anything is made: each level recurses once and names its element in full.
    Integer Depth = 0;
    for (std::u16string_view Rest = AName; IsArrayOfName(Rest);
         Rest.remove_prefix(ArrayOfPrefix.size()))
      if (++Depth > cLxMaxUndeclaredArrayDepth)
        return nullptr;
    const TLxTypeInfo* Element = FindByName(AName.substr(ArrayOfPrefix.size()), ltnSchema, lmkNone);
    if (!Element)
      return nullptr;
    if (auto Found = ArrayOfElement.find(Element->GetHandle()); Found != ArrayOfElement.end())
      return Found->second;
    auto Identity =
        std::unique_ptr<TLxTypeIdentity>(new TLxTypeIdentity{nullptr, nullptr, nullptr});
    auto Description = std::make_unique<TLxTypeDescription>(Identity.get());
    detail::DescribeArray(*Description, Element->GetHandle(), /*ADynamic=*/true, 0);
    auto Info = std::make_unique<TLxTypeInfo>(Description.get(), ltkDynArray, tkDynArray);
    Description->SetTypeInfo(Info.get());
    const TLxTypeInfo* Result = Info.get();
    Identity->Info.store(Result, std::memory_order_release);
    RuntimeIdentities.push_back(std::move(Identity));
    Descriptions.push_back(std::move(Description));
    Infos.push_back(std::move(Info));
    EnterNames(Result);
    return Result;
  }

  bool BuiltInsKnown = false;
  std::vector<std::unique_ptr<TLxTypeDescription>> Descriptions;
  std::vector<std::unique_ptr<TLxTypeInfo>> Infos;
  std::vector<std::unique_ptr<TLxTypeIdentity>> RuntimeIdentities;
  std::unordered_map<TClass, std::unique_ptr<TLxTypeIdentity>> HandleOfClass;
  std::unordered_map<TLxTypeHandle, TClass> ClassOfHandle;
  std::unordered_map<TLxTypeHandle, const TLxTypeInfo*> ArrayOfElement;
  std::unordered_map<const TLxTypeInfo*, std::unique_ptr<TLxTypeInfo>> ArrayViews;
  std::unordered_map<UnicodeString, std::vector<const TLxTypeInfo*>, TNameHash, std::equal_to<>>
      Names[3];
};

// The registry lives as long as the process: TLxTypeInfo pointers are held in static caches
// (TypeHandle's class handles, each identity's Info) that no exit order could keep valid.
TRegistry& Registry() {
  static TRegistry& Instance = *new TRegistry;
  return Instance;
}

} // namespace

TLxTypeHandle LxClassTypeHandle(TClass AClass) {
  return AClass ? Registry().ClassHandle(AClass) : nullptr;
}

const TLxTypeInfo* TLxTypes::GetTypeInfo(TLxTypeHandle AHandle) {
  return AHandle ? Registry().InfoOf(AHandle) : nullptr;
}

const TLxTypeInfo* TLxTypes::GetTypeInfo(const TLxTypeDescription* ADescription) noexcept {
  return ADescription ? ADescription->GetTypeInfo() : nullptr;
}

const TLxTypeInfo* TLxTypes::GetTypeInfo(TClass AClass) {
  return AClass ? GetTypeInfo(LxClassTypeHandle(AClass)) : nullptr;
}

const TLxTypeInfo* TLxTypes::GetTypeInfo(std::u16string_view AName, TLxTypeNameType ANameType,
                                         bool ARaiseIfNotFound, TLxMainTypeKind AMainKind) {
  const TLxTypeInfo* Found = Registry().FindByName(AName, ANameType, AMainKind);
  if (!Found && ARaiseIfNotFound)
    throw EArgumentException(u"Unknown type \"%s\"", {UnicodeString(AName)});
  return Found;
}

TVarType TLxTypes::GetVarType(std::u16string_view AName, TLxTypeNameType ANameType,
                              TVarType ADefault) {
  const TLxTypeInfo* Info = GetTypeInfo(AName, ANameType);
  if (!Info)
    return ADefault;
  switch (Info->GetTypeKind()) {
  case ltkByte:
    return varByte;
  case ltkWord:
    return varWord;
  case ltkLongWord:
    return varLongWord;
  case ltkUInt64:
    return varUInt64;
  case ltkShortInt:
    return varShortInt;
  case ltkSmallInt:
    return varSmallint;
  case ltkInteger:
    return varInteger;
  case ltkInt64:
    return varInt64;
  case ltkSingle:
    return varSingle;
  case ltkDouble:
  case ltkExtended:
    return varDouble;
  case ltkText0:
  case ltkText1:
  case ltkText2:
  case ltkText3:
  case ltkText4:
  case ltkText5:
    return varUString;
  case ltkBoolean:
    return varBoolean;
  case ltkDate:
  case ltkTime:
  case ltkDateTime:
    return varDate;
  case ltkVariant:
    return varVariant;
  default:
    return ADefault;
  }
}

const TLxTypeInfo* TLxTypes::VarTypeInfo(const Variant& AVariant) {
  switch (VarType(AVariant)) {
  case varSmallint:
    return GetTypeInfo<SmallInt>();
  case varInteger:
    return GetTypeInfo<Integer>();
  case varSingle:
    return GetTypeInfo<Single>();
  case varDouble:
  case varCurrency:
    return GetTypeInfo<Double>();
  case varDate:
    return GetTypeInfo<TDateTime>();
  case varOleStr:
  case varUString:
  case varString:
    return GetTypeInfo<UnicodeString>();
  case varBoolean:
    return GetTypeInfo<bool>();
  case varShortInt:
    return GetTypeInfo<ShortInt>();
  case varByte:
    return GetTypeInfo<Byte>();
  case varWord:
    return GetTypeInfo<Word>();
  case varLongWord:
    return GetTypeInfo<LongWord>();
  case varInt64:
    return GetTypeInfo<Int64>();
  case varUInt64:
    return GetTypeInfo<UInt64>();
  case varUnknown:
    return GetTypeInfo<IPtr<IInterface>>();
  default:
    return GetTypeInfo<Variant>();
  }
}

TLxMainTypeKind TLxTypes::ToMainTypeKind(TLxTypeKind ATypeKind) noexcept {
  if (ATypeKind >= ltkByte && ATypeKind <= ltkInt64)
    return lmkInteger;
  if (ATypeKind >= ltkSingle && ATypeKind <= ltkExtended)
    return lmkFloat;
  if (LxIsTextKind(ATypeKind))
    return lmkString;
  if (ATypeKind == ltkBoolean)
    return lmkBoolean;
  if (ATypeKind >= ltkDate && ATypeKind <= ltkDateTime)
    return lmkDateTime;
  if (LxIsArrayKind(ATypeKind))
    return lmkArray;
  return lmkNone;
}

void TLxTypes::RegisterTypeAlias(TLxTypeHandle AHandle, std::u16string_view AName) {
  RegisterTypeAlias(AHandle, {AName});
}

void TLxTypes::RegisterTypeAlias(TLxTypeHandle AHandle,
                                 std::initializer_list<std::u16string_view> ANames) {
  const TLxTypeInfo* Info = GetTypeInfo(AHandle);
  if (!Info)
    return;
  TRegistry& Types = Registry();
  std::lock_guard Guard(Types.Lock);
  for (std::u16string_view Name : ANames)
    Types.AddAlias(Info, Name);
}

void TLxTypes::RegisterTypeSerializers(TLxTypeHandle AHandle,
                                       TLxDataSerializationFormatType AFormat,
                                       const TLxRegisteredSerializers& ASerializers) {
  TRegistry& Types = Registry();
  std::lock_guard Guard(Types.Lock);
  if (AHandle)
    Types.Serializers[{AHandle, AFormat}] = ASerializers;
  else
    Types.DefaultSerializers[AFormat] = ASerializers;
}

const TLxRegisteredSerializers* TLxTypes::FindSerializers(const TLxTypeInfo* ATypeInfo,
                                                          TLxDataSerializationFormatType AFormat) {
  TRegistry& Types = Registry();
  // Resolve the ancestors' handles before taking the lock for the table.
  std::vector<TLxTypeHandle> Candidates;
  if (ATypeInfo) {
    Candidates.push_back(ATypeInfo->GetHandle());
    if (TClass Class = ATypeInfo->GetDescription()->MetaclassType())
      for (TClass Ancestor = Class->Parent; Ancestor; Ancestor = Ancestor->Parent)
        Candidates.push_back(LxClassTypeHandle(Ancestor));
  }
  std::lock_guard Guard(Types.Lock);
  for (TLxTypeHandle Handle : Candidates)
    if (auto Found = Types.Serializers.find({Handle, AFormat}); Found != Types.Serializers.end())
      return &Found->second;
  auto Default = Types.DefaultSerializers.find(AFormat);
  return Default == Types.DefaultSerializers.end() ? nullptr : &Default->second;
}

TLxTypeDescription& TLxTypes::BeginDescription(TLxTypeHandle AHandle,
                                               std::u16string_view AQualifiedName) {
  const TLxTypeInfo* Info = GetTypeInfo(AHandle);
  TRegistry& Types = Registry();
  std::lock_guard Guard(Types.Lock);
  auto& Description = const_cast<TLxTypeDescription&>(*Info->GetDescription());
  if (Description.GetIsDescribed())
    throw EInvalidOperation(u"Type %s is already described", {Description.GetQualifiedName()});
  Types.Rename(Description, AQualifiedName);
  Description.MarkDescribed();
  return Description;
}

const TLxTypeInfo* TLxTypeInfo::VirtualType(TLxSchemaDataType ASchemaDataType) const {
  if (ASchemaDataType != lsdArray)
    return this;
  if (const TLxTypeInfo* View = FArrayView.load(std::memory_order_acquire))
    return View;
  const TLxTypeInfo* View = Registry().ArrayView(this);
  FArrayView.store(View, std::memory_order_release);
  return View;
}

} // namespace lorvane
