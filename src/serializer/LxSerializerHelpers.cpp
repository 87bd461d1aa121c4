// The helper registry (an ordered list: descendants ahead of ancestors, name patterns first),
// the helper bases, and the base classes that lock during their own walk.
#include "lorvane/serializer/LxSerializerHelpers.h"

#include "lorvane/classes/LxLibraryStartup.h"

#include <list>
#include <mutex>
#include <shared_mutex>

namespace lorvane {

// --- helper bases --------------------------------------------------------------------------------
void TLxSerializerHelper::Serialize(TLxSerializer*, std::u16string_view, const TLxTypeInfo*,
                                    const TValue&, bool& Handled) {
  Handled = true;
}

TLxCanDeserialize TLxDeserializerHelper::CanDeserialize(TLxDeserializer*, std::u16string_view,
                                                        std::u16string_view, std::u16string_view) {
  return desNo;
}
void TLxDeserializerHelper::DeserializeStartType(TLxDeserializer*) {}
void TLxDeserializerHelper::DeserializeEndType(TLxDeserializer*) {}
void TLxDeserializerHelper::DeserializeValue(TLxDeserializer*, std::u16string_view,
                                             std::u16string_view, std::u16string_view,
                                             std::u16string_view, bool&) {}

// --- the registry --------------------------------------------------------------------------------
namespace {

struct THelperEntry {
  const TLxTypeInfo* TypeInfo; // nil for entries by name
  TClass Class;                // nil for entries by name
  UnicodeString Name;          // the class's qualified name, or the pattern given
  TLxSerializerHelperClass SerializerHelper;
  TLxDeserializerHelperClass DeserializerHelper;
};

struct THelperRegistry {
  std::shared_mutex Lock;
  std::list<THelperEntry> Entries;
};

THelperRegistry& Helpers() {
  static THelperRegistry& Instance = *new THelperRegistry;
  return Instance;
}

/// "TObjectList<Shop.TOrder>" gives "TObjectList<T>", "TDictionary<A,B<C,D>>" "TDictionary<T,T>":
/// one "T" per type argument of the outermost list.
UnicodeString PatternOf(std::u16string_view AName) {
  const auto Open = AName.find(u'<');
  UnicodeString Pattern(AName.substr(0, Open + 1));
  int Depth = 0;
  Pattern += u'T';
  for (std::size_t I = Open + 1; I < AName.size(); ++I) {
    const WideChar C = AName[I];
    if (C == u'<')
      ++Depth;
    else if (C == u'>') {
      if (Depth-- == 0)
        break;
    } else if (C == u',' && Depth == 0)
      Pattern += u",T";
  }
  Pattern += u'>';
  return Pattern;
}

/// The entry that decides for AClass; nil when none does.
const THelperEntry* EntryFor(TClass AClass) {
  if (!AClass)
    return nullptr;
  THelperRegistry& Registry = Helpers();
  std::shared_lock Guard(Registry.Lock);
  const UnicodeString ClassName = ClassNameOf(AClass);
  if (ClassName.find(u'<') != UnicodeString::npos) {
    const UnicodeString Pattern = PatternOf(ClassName);
    for (const THelperEntry& Entry : Registry.Entries)
      if (Entry.Name == Pattern)
        return &Entry;
  }
  for (const THelperEntry& Entry : Registry.Entries)
    if (Entry.Class && TObject::ClassInheritsFrom(AClass, Entry.Class))
      return &Entry;
  return nullptr;
}

template <class H> H* MakeHelper(TClass AHelperClass) {
  if (!AHelperClass || !AHelperClass->CreateDefault)
    return nullptr;
  return static_cast<H*>(AHelperClass->CreateDefault());
}

} // namespace

void LxRegisterSerializerHelper(TClass AClass, TLxSerializerHelperClass ASerializerHelper,
                                TLxDeserializerHelperClass ADeserializerHelper) {
  if (!AClass)
    return;
  const TLxTypeInfo* Info = TLxTypes::GetTypeInfo(AClass);
  THelperRegistry& Registry = Helpers();
  std::unique_lock Guard(Registry.Lock);
  auto& Entries = Registry.Entries;
  const THelperEntry Made{Info, AClass, Info->GetQualifiedName(), ASerializerHelper,
                          ADeserializerHelper};
  for (auto Entry = Entries.begin(); Entry != Entries.end(); ++Entry) {
    if (Entry->Class == AClass && Entry->SerializerHelper == ASerializerHelper) {
      if (Entry->DeserializerHelper && Entry->DeserializerHelper != ADeserializerHelper)
        RaiseAssertionFailed(u"Invalid Serializer/Deserializer combination!");
      Entry->DeserializerHelper = ADeserializerHelper;
      return;
    }
    if (!Entry->Class || TObject::ClassInheritsFrom(AClass, Entry->Class)) {
      Entries.insert(Entry, Made);
      return;
    }
  }
  Entries.push_front(Made);
}

void LxRegisterSerializerHelper(std::u16string_view AName,
                                TLxSerializerHelperClass ASerializerHelper,
                                TLxDeserializerHelperClass ADeserializerHelper) {
  THelperRegistry& Registry = Helpers();
  std::unique_lock Guard(Registry.Lock);
  Registry.Entries.push_front(
      {nullptr, nullptr, UnicodeString(AName), ASerializerHelper, ADeserializerHelper});
}

TLxSerializerHelper* LxFindSerializerHelper(TClass AClass) {
  EnsureLibraryStarted();
  const THelperEntry* Entry = EntryFor(AClass);
  return Entry ? MakeHelper<TLxSerializerHelper>(Entry->SerializerHelper) : nullptr;
}

TLxDeserializerHelper* LxFindDeserializerHelper(TClass AClass) {
  EnsureLibraryStarted();
  const THelperEntry* Entry = EntryFor(AClass);
  return Entry ? MakeHelper<TLxDeserializerHelper>(Entry->DeserializerHelper) : nullptr;
}

// --- helper classes named by hints ---------------------------------------------------------------
namespace {
TClass HelperClassOf(const SerializerHint& AHint, TSerializerHintOption AOption, TClass ABase,
                     std::u16string_view AMessage) {
  Assert(AHint.GetOption() == AOption);
  const TLxTypeInfo* Info = TLxTypes::GetTypeInfo(AHint.GetValue(), ltnQualified);
  TClass Class = Info ? Info->GetDescription()->MetaclassType() : nullptr;
  if (!Class)
    RaiseAssertionFailed(
        u"Check if you registered the helperclass and/or used the QualifiedName in the hint?");
  if (!TObject::ClassInheritsFrom(Class, ABase))
    throw Exception(UnicodeString(AMessage));
  return Class;
}
} // namespace

TLxSerializerHelperClass SerializerHelperClass(const SerializerHint& AHint) {
  return HelperClassOf(AHint, shoSerializerHelper, TLxSerializerHelper::StaticClass(),
                       u"The specified helperclass is not a descendant of TLxSerializerHelper!");
}

TLxDeserializerHelperClass DeserializerHelperClass(const SerializerHint& AHint) {
  return HelperClassOf(AHint, shoDeserializerHelper, TLxDeserializerHelper::StaticClass(),
                       u"The specified helperclass is not a descendant of TLxDeserializerHelper!");
}

// --- objects that lock during their walk ---------------------------------------------------------
TLxSerializableObject::TLxSerializableObject() : FCritSection(New<TCriticalSection>()) {
  // Such objects live in object graphs held by plain pointers: the interfaces that the walk
  // takes of them must not end them. An application that manages one by interfaces sets it back.
  SetAutoDestroy(false);
}
TLxSerializableObject::~TLxSerializableObject() { lorvane::Free(FCritSection); }

HRESULT TLxSerializableObject::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxSerializerHelper, ILxDeserializerHelper>(
      this, AIID, AObj, [&] { return TLxObjectEx::QueryInterface(AIID, AObj); });
}
bool TLxSerializableObject::CanSerializeChild(TLxSerializer*, TObject*, TClass,
                                              std::u16string_view) {
  return true;
}
void TLxSerializableObject::BeforeSerialize(TLxSerializer*, bool&) {
  FCritSection->Enter();
  FSerializing = true;
}
void TLxSerializableObject::AfterSerialize(TLxSerializer*) {
  FSerializing = false;
  FCritSection->Leave();
}
void TLxSerializableObject::BeforeDeserialize(TLxDeserializer*) {
  FCritSection->Enter();
  FDeserializing = true;
}
void TLxSerializableObject::AfterDeserialize(TLxDeserializer*) {
  FDeserializing = false;
  FCritSection->Leave();
}
TLxCanDeserialize TLxSerializableObject::CanDeserialize(TLxDeserializer*, std::u16string_view,
                                                        std::u16string_view, std::u16string_view) {
  return desNo;
}
void TLxSerializableObject::DeserializeValue(TLxDeserializer*, std::u16string_view,
                                             std::u16string_view, std::u16string_view,
                                             std::u16string_view, bool&) {}

TLxSerializableComponent::TLxSerializableComponent(TComponent* AOwner)
    : TLxComponent(AOwner), FCritSection(New<TCriticalSection>()) {
  // As TLxSerializableObject: also without an owner, the walk's interfaces don't end it.
  SetAutoDestroy(false);
}
TLxSerializableComponent::~TLxSerializableComponent() { lorvane::Free(FCritSection); }

HRESULT TLxSerializableComponent::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxSerializerHelper, ILxDeserializerHelper>(
      this, AIID, AObj, [&] { return TLxComponent::QueryInterface(AIID, AObj); });
}
bool TLxSerializableComponent::CanSerializeChild(TLxSerializer*, TObject*, TClass,
                                                 std::u16string_view) {
  return true;
}
void TLxSerializableComponent::BeforeSerialize(TLxSerializer*, bool&) {
  FCritSection->Enter();
  FSerializing = true;
}
void TLxSerializableComponent::AfterSerialize(TLxSerializer*) {
  FSerializing = false;
  FCritSection->Leave();
}
void TLxSerializableComponent::BeforeDeserialize(TLxDeserializer*) {
  FCritSection->Enter();
  FDeserializing = true;
}
void TLxSerializableComponent::AfterDeserialize(TLxDeserializer*) {
  FDeserializing = false;
  FCritSection->Leave();
}
TLxCanDeserialize TLxSerializableComponent::CanDeserialize(TLxDeserializer*, std::u16string_view,
                                                           std::u16string_view,
                                                           std::u16string_view) {
  return desNo;
}
void TLxSerializableComponent::DeserializeValue(TLxDeserializer*, std::u16string_view,
                                                std::u16string_view, std::u16string_view,
                                                std::u16string_view, bool&) {}

} // namespace lorvane
