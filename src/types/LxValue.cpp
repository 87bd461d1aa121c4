// TValue: storage of any described value, its strict reads, arrays in place, and its text.
#include "lorvane/types/LxValue.h"

#include "lorvane/types/LxTypes.h"

#include <limits>

namespace lorvane {

namespace {

constexpr std::u16string_view InvalidCastMessage = u"Invalid class typecast";

bool IsWholeNumberKind(TLxTypeKind AKind) noexcept { return AKind >= ltkByte && AKind <= ltkInt64; }
bool IsFloatKind(TLxTypeKind AKind) noexcept {
  return (AKind >= ltkSingle && AKind <= ltkExtended) || (AKind >= ltkDate && AKind <= ltkDateTime);
}
bool IsOrdinalKind(TLxTypeKind AKind) noexcept {
  return IsWholeNumberKind(AKind) || AKind == ltkText0 || AKind == ltkText1 || AKind == ltkText2 ||
         AKind == ltkBoolean || AKind == ltkEnumeration || AKind == ltkSet;
}

/// Whether AValue fits the whole number kind AKind; UInt64 values travel as their bits.
bool FitsWholeNumber(Int64 AValue, TLxTypeKind AKind, bool AUnsignedSource) noexcept {
  if (AUnsignedSource && AValue < 0)
    return AKind == ltkUInt64;
  switch (AKind) {
  case ltkByte:
    return AValue >= 0 && AValue <= 0xFF;
  case ltkWord:
    return AValue >= 0 && AValue <= 0xFFFF;
  case ltkLongWord:
    return AValue >= 0 && AValue <= 0xFFFFFFFFLL;
  case ltkUInt64:
    return AValue >= 0;
  case ltkShortInt:
    return AValue >= -128 && AValue <= 127;
  case ltkSmallInt:
    return AValue >= -32768 && AValue <= 32767;
  case ltkInteger:
    return AValue >= std::numeric_limits<Integer>::min() &&
           AValue <= std::numeric_limits<Integer>::max();
  default:
    return true;
  }
}

UnicodeString AddressText(const void* AAddress) {
  return IntToHex(reinterpret_cast<std::uintptr_t>(AAddress), 16);
}

} // namespace

// --- storage -------------------------------------------------------------------------------------
void* TValue::Allocate(TLxTypeHandle AHandle) {
  const TLxValueOps* Ops = AHandle->Ops;
  if (!Ops)
    throw EInvalidCast(u"Values of type %s can't be made",
                       {TLxTypes::GetTypeInfo(AHandle)->GetQualifiedName()});
  if (FitsInline(Ops)) {
    FOnHeap = false;
    return FInline;
  }
  FHeap = ::operator new(Ops->Size, std::align_val_t(Ops->Align));
  FOnHeap = true;
  return FHeap;
}

void TValue::FreeStorage(const TLxValueOps* AOps) noexcept {
  if (FOnHeap)
    ::operator delete(FHeap, std::align_val_t(AOps->Align));
  FOnHeap = false;
}

void TValue::Clear() noexcept {
  if (!FHandle)
    return;
  const TLxValueOps* Ops = FHandle->Ops;
  Ops->Destroy(Data());
  FreeStorage(Ops);
  FHandle = nullptr;
}

TValue TValue::Make(const void* AData, TLxTypeHandle AHandle) {
  TValue Result;
  if (!AHandle)
    return Result;
  void* Storage = Result.Allocate(AHandle);
  try {
    if (AData)
      AHandle->Ops->CopyConstruct(Storage, AData);
    else
      AHandle->Ops->Construct(Storage);
  } catch (...) {
    Result.FreeStorage(AHandle->Ops);
    throw;
  }
  Result.FHandle = AHandle;
  return Result;
}

TValue::TValue(const TValue& AOther)
    : TValue(Make(AOther.GetReferenceToRawData(), AOther.FHandle)) {}

TValue::TValue(TValue&& AOther) noexcept : FHandle(AOther.FHandle), FOnHeap(AOther.FOnHeap) {
  if (!FHandle)
    return;
  if (FOnHeap)
    FHeap = AOther.FHeap;
  else {
    FHandle->Ops->MoveConstruct(FInline, AOther.FInline);
    FHandle->Ops->Destroy(AOther.FInline);
  }
  AOther.FHandle = nullptr;
  AOther.FOnHeap = false;
}

TValue& TValue::operator=(const TValue& AOther) {
  if (this != &AOther)
    *this = TValue(AOther);
  return *this;
}

TValue& TValue::operator=(TValue&& AOther) noexcept {
  if (this != &AOther) {
    Clear();
    ::new (this) TValue(std::move(AOther));
  }
  return *this;
}

const TLxTypeDescription& TValue::Description() const {
  return *TLxTypes::GetTypeInfo(FHandle)->GetDescription();
}

void TValue::InvalidCast() { throw EInvalidCast(UnicodeString(InvalidCastMessage)); }

// --- making values -------------------------------------------------------------------------------
TValue TValue::FromVariant(const Variant& AValue) {
  switch (VarType(AValue)) {
  case varEmpty:
  case varNull:
    return TValue();
  case varSmallint:
    return From(static_cast<SmallInt>(AValue.AsInteger()));
  case varInteger:
    return From(AValue.AsInteger());
  case varShortInt:
    return From(static_cast<ShortInt>(AValue.AsInteger()));
  case varByte:
    return From(static_cast<Byte>(AValue.AsInteger()));
  case varWord:
    return From(static_cast<Word>(AValue.AsInteger()));
  case varLongWord:
    return From(static_cast<LongWord>(AValue.AsInt64()));
  case varInt64:
    return From(AValue.AsInt64());
  case varUInt64:
    return From(AValue.AsUInt64());
  case varSingle:
    return From(static_cast<Single>(AValue.AsDouble()));
  case varDouble:
  case varCurrency:
    return From(AValue.AsDouble());
  case varDate:
    return From(AValue.AsDateTime());
  case varBoolean:
    return From(AValue.AsBoolean());
  case varOleStr:
  case varUString:
  case varString:
    return From(AValue.AsString());
  case varUnknown:
    return From(AValue.AsInterface());
  default:
    return From(AValue);
  }
}

TValue TValue::FromOrdinal(TLxTypeHandle AHandle, Int64 AOrdinal) {
  const TLxTypeInfo* Info = TLxTypes::GetTypeInfo(AHandle);
  if (!Info || !IsOrdinalKind(Info->GetTypeKind()) || !Info->GetDescription()->Access().SetOrdinal)
    InvalidCast();
  TValue Result = Make(nullptr, AHandle);
  Info->GetDescription()->Access().SetOrdinal(Result.Data(), AOrdinal);
  return Result;
}

// --- what it is ----------------------------------------------------------------------------------
TTypeKind TValue::GetTypeKind() const noexcept {
  return FHandle ? LxTypeInfo()->GetKind() : tkUnknown;
}

TLxTypeKind TValue::TypeKind() const noexcept {
  return FHandle ? LxTypeInfo()->GetTypeKind() : ltkUnknown;
}

const TLxTypeInfo* TValue::LxTypeInfo() const { return TLxTypes::GetTypeInfo(FHandle); }

TLxMainTypeKind TValue::MainTypeKind() const noexcept {
  if (!FHandle)
    return lmkNone;
  if (FHandle == TypeHandle<Variant>())
    return VarMainTypeKind(*static_cast<const Variant*>(Data()));
  if (FHandle == TypeHandle<TValue>())
    return static_cast<const TValue*>(Data())->MainTypeKind();
  return TLxTypes::ToMainTypeKind(TypeKind());
}

bool TValue::IsNull() const noexcept {
  if (!FHandle)
    return true;
  const TLxValueAccess& Access = Description().Access();
  switch (TypeKind()) {
  case ltkClass:
    return Access.GetObject(Data()) == nullptr;
  case ltkInterface:
    return Access.GetInterface(Data()) == nullptr;
  case ltkPointer:
    return Access.GetOrdinal(Data()) == 0;
  case ltkVariant: {
    const Variant& Value = *static_cast<const Variant*>(Data());
    return VarIsEmpty(Value) || VarIsNull(Value);
  }
  default:
    return false;
  }
}

// --- strict reads --------------------------------------------------------------------------------
TObject* TValue::AsObject() const {
  if (!FHandle)
    return nullptr;
  if (TypeKind() != ltkClass)
    InvalidCast();
  return Description().Access().GetObject(Data());
}

IPtr<IInterface> TValue::AsInterface() const {
  if (!FHandle)
    return nullptr;
  switch (TypeKind()) {
  case ltkInterface:
    return IPtr<IInterface>(Description().Access().GetInterface(Data()));
  case ltkClass:
    // An object answers for the interfaces it implements.
    return IPtr<IInterface>(dynamic_cast<IInterface*>(AsObject()));
  case ltkVariant:
    return static_cast<const Variant*>(Data())->AsInterface();
  default:
    InvalidCast();
  }
}

TClass TValue::AsClass() const {
  if (!FHandle)
    return nullptr;
  if (FHandle != TypeHandle<TClass>())
    InvalidCast();
  return *static_cast<const TClass*>(Data());
}

Variant TValue::AsVariant() const {
  if (!FHandle)
    return Variant();
  const TLxValueAccess& Access = Description().Access();
  const TLxTypeKind Kind = TypeKind();
  switch (Kind) {
  case ltkByte:
    return Variant(static_cast<Byte>(Access.GetOrdinal(Data())));
  case ltkWord:
    return Variant(static_cast<Word>(Access.GetOrdinal(Data())));
  case ltkLongWord:
    return Variant(static_cast<LongWord>(Access.GetOrdinal(Data())));
  case ltkUInt64:
    return Variant(static_cast<UInt64>(Access.GetOrdinal(Data())));
  case ltkShortInt:
    return Variant(static_cast<ShortInt>(Access.GetOrdinal(Data())));
  case ltkSmallInt:
    return Variant(static_cast<SmallInt>(Access.GetOrdinal(Data())));
  case ltkInteger:
  case ltkEnumeration:
    return Variant(static_cast<Integer>(Access.GetOrdinal(Data())));
  case ltkInt64:
  case ltkSet:
  case ltkPointer:
    return Variant(Access.GetOrdinal(Data()));
  case ltkSingle:
    return Variant(static_cast<Single>(Access.GetFloat(Data())));
  case ltkDouble:
  case ltkExtended:
    return Variant(Access.GetFloat(Data()));
  case ltkDate:
  case ltkTime:
  case ltkDateTime:
    return Variant(TDateTime(Access.GetFloat(Data())));
  case ltkBoolean:
    return Variant(Access.GetOrdinal(Data()) != 0);
  case ltkVariant:
    return *static_cast<const Variant*>(Data());
  case ltkInterface:
    return Variant(Access.GetInterface(Data()));
  default:
    if (LxIsTextKind(Kind))
      return Variant(Access.GetText(Data()));
    if (FHandle == TypeHandle<TValue>())
      return static_cast<const TValue*>(Data())->AsVariant();
    InvalidCast();
  }
}

UnicodeString TValue::AsString() const {
  if (!FHandle || !LxIsTextKind(TypeKind()))
    InvalidCast();
  return Description().Access().GetText(Data());
}

Int64 TValue::AsOrdinal() const {
  if (!FHandle || !IsOrdinalKind(TypeKind()))
    InvalidCast();
  return Description().Access().GetOrdinal(Data());
}

Integer TValue::AsInteger() const {
  const Int64 Ordinal = AsOrdinal();
  if (TypeKind() == ltkSet || !FitsWholeNumber(Ordinal, ltkInteger, TypeKind() == ltkUInt64))
    InvalidCast();
  return static_cast<Integer>(Ordinal);
}

bool TValue::AsBoolean() const {
  if (!FHandle || TypeKind() != ltkBoolean)
    InvalidCast();
  return Description().Access().GetOrdinal(Data()) != 0;
}

bool TValue::CastTo(TLxTypeHandle AHandle, TValue& AResult) const {
  if (!FHandle || !AHandle)
    return false;
  if (FHandle == AHandle) {
    AResult = *this;
    return true;
  }
  if (FHandle == TypeHandle<TValue>())
    return static_cast<const TValue*>(Data())->CastTo(AHandle, AResult);
  if (AHandle == TypeHandle<TValue>()) {
    AResult = From(*this);
    return true;
  }
  const TLxTypeInfo* Target = TLxTypes::GetTypeInfo(AHandle);
  const TLxTypeKind To = Target->GetTypeKind();
  const TLxTypeKind Kind = TypeKind();
  const TLxValueAccess& Access = Description().Access();
  const TLxValueAccess& TargetAccess = Target->GetDescription()->Access();
  if (To == ltkVariant) {
    if ((LxIsComplexKind(Kind) && Kind != ltkInterface) || Kind == ltkClassRef ||
        Kind == ltkUnknown)
      return false;
    AResult = From(AsVariant());
    return true;
  }
  if (IsWholeNumberKind(Kind) && IsWholeNumberKind(To)) {
    const Int64 Ordinal = Access.GetOrdinal(Data());
    if (!FitsWholeNumber(Ordinal, To, Kind == ltkUInt64))
      return false;
    AResult = FromOrdinal(AHandle, Ordinal);
    return true;
  }
  if ((IsWholeNumberKind(Kind) || IsFloatKind(Kind)) && IsFloatKind(To)) {
    const double Number = IsFloatKind(Kind) ? Access.GetFloat(Data())
                          : Kind == ltkUInt64
                              ? static_cast<double>(static_cast<UInt64>(Access.GetOrdinal(Data())))
                              : static_cast<double>(Access.GetOrdinal(Data()));
    AResult = Make(nullptr, AHandle);
    TargetAccess.SetFloat(AResult.Data(), Number);
    return true;
  }
  if (LxIsTextKind(Kind) && LxIsTextKind(To)) {
    AResult = Make(nullptr, AHandle);
    TargetAccess.SetText(AResult.Data(), Access.GetText(Data()));
    return true;
  }
  if (Kind == ltkClass && To == ltkClass) {
    TObject* Object = Access.GetObject(Data());
    if (Object && !Object->InheritsFrom(Target->GetDescription()->MetaclassType()))
      return false;
    AResult = Make(&Object, AHandle);
    return true;
  }
  if (To == ltkInterface && (Kind == ltkInterface || Kind == ltkClass)) {
    const IPtr<IInterface> Source = AsInterface();
    // An object that is no interface at all supports none; only nil becomes a nil interface.
    if (!Source && !IsNull())
      return false;
    TValue Made = Make(nullptr, AHandle);
    if (!TargetAccess.SetInterface(Made.Data(), Source.Get()))
      return false;
    AResult = std::move(Made);
    return true;
  }
  return false;
}

// --- arrays --------------------------------------------------------------------------------------
Integer TValue::GetArrayLength() const {
  if (!FHandle || !LxIsArrayKind(TypeKind()))
    InvalidCast();
  return Description().Access().GetLength(Data());
}

TValue TValue::GetArrayElement(Integer AIndex) const {
  if (AIndex < 0 || AIndex >= GetArrayLength())
    throw EArgumentOutOfRangeException(u"Array index out of range (%d)", {AIndex});
  const TLxTypeDescription& Array = Description();
  return Make(Array.Access().ElementAddress(const_cast<void*>(Data()), AIndex),
              Array.ElementTypeHandle());
}

void TValue::SetArrayElement(Integer AIndex, const TValue& AValue) {
  if (AIndex < 0 || AIndex >= GetArrayLength())
    throw EArgumentOutOfRangeException(u"Array index out of range (%d)", {AIndex});
  const TLxTypeDescription& Array = Description();
  TValue Converted;
  if (!AValue.ToType(Array.ElementTypeHandle(), Converted))
    InvalidCast();
  Array.ElementTypeHandle()->Ops->Assign(Array.Access().ElementAddress(Data(), AIndex),
                                         Converted.Data());
}

void TValue::SetArrayLength(Integer ALength) {
  if (ALength < 0 || !FHandle || !LxIsArrayKind(TypeKind()) ||
      !Description().Access().SetLength(Data(), ALength))
    InvalidCast();
}

// --- text ----------------------------------------------------------------------------------------
UnicodeString TValue::ToString() const {
  if (!FHandle)
    return u"(empty)";
  switch (TypeKind()) {
  case ltkEnumeration:
  case ltkSet:
    return ToWideString(false);
  case ltkRecord:
    if (FHandle == TypeHandle<TValue>())
      return static_cast<const TValue*>(Data())->ToString();
    return u"(record)";
  case ltkArray:
    return u"(array)";
  case ltkDynArray:
    return u"(dynamic array)";
  case ltkClass:
    if (TObject* Object = AsObject())
      return u"(" + Object->ClassName() + u" @ " + AddressText(Object) + u")";
    return u"nil";
  case ltkInterface:
    return u"(interface @ " + AddressText(AsInterface().Get()) + u")";
  case ltkPointer:
    // Not through AsOrdinal: a pointer is no ordinal to the strict reads.
    return u"(pointer @ " +
           AddressText(reinterpret_cast<const void*>(Description().Access().GetOrdinal(Data()))) +
           u")";
  case ltkClassRef:
    return AsClass() ? ClassNameOf(AsClass()) : UnicodeString(u"nil");
  default:
    return ToWideString(false);
  }
}

} // namespace lorvane
