/// What the registry knows of one type:
///   TLxTypeHandle, TLxTypeIdentity   the identity of a type: one record per C++ type
///   TLxValueOps, TLxValueAccess      how its values are stored, copied and read without the
///                                    C++ type at hand
///   TCustomAttribute, SerializerHint annotations on types and members, TSerializerHintOption
///   TLxFieldDescription, TLxPropertyDescription, TLxIndexedPropertyDescription,
///   TLxMethodDescription, TLxParameterDescription   the members of records and classes
///   TLxTypeDescription               the description: members, element type, enumeration names
///   TLxTypeInfo                      names and kinds of a type, its schema name, its virtual
///                                    array view
///
/// Descriptions are made at start-up (LxDescribe.h for application types, templates for the
/// built-in ones) and read-only afterwards; the registry owns them until the process ends.
#pragma once

#include "lorvane/platform/SysUtils.h"
#include "lorvane/platform/System.h"
#include "lorvane/types/LxTypeKinds.h"

#include <atomic>
#include <cstddef>
#include <new>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace lorvane {

class TValue;
class TLxTypeInfo;
class TLxTypeDescription;

// --- identity and storage ------------------------------------------------------------------------
/// How values of one C++ type are made, copied and destroyed in memory whose type only the
/// description knows.
struct TLxValueOps {
  std::size_t Size;
  std::size_t Align;
  void (*Construct)(void* ADest);
  void (*CopyConstruct)(void* ADest, const void* ASource);
  void (*Assign)(void* ADest, const void* ASource);
  void (*Destroy)(void* AData) noexcept;
  /// Nil when moving may throw: such values are kept on the heap by TValue.
  void (*MoveConstruct)(void* ADest, void* ASource) noexcept;
};

template <class T>
inline constexpr TLxValueOps LxValueOpsOf{
    sizeof(T),
    alignof(T),
    [](void* ADest) { ::new (ADest) T(); },
    [](void* ADest, const void* ASource) { ::new (ADest) T(*static_cast<const T*>(ASource)); },
    [](void* ADest, const void* ASource) {
      *static_cast<T*>(ADest) = *static_cast<const T*>(ASource);
    },
    [](void* AData) noexcept { static_cast<T*>(AData)->~T(); },
    std::is_nothrow_move_constructible_v<T>
        ? static_cast<void (*)(void*, void*) noexcept>([](void* ADest, void* ASource) noexcept {
            ::new (ADest) T(std::move(*static_cast<T*>(ASource)));
          })
        : nullptr};

/// One record per type; its address is the type's handle. Two TLxTypeInfo are the same type
/// exactly when their handles are equal. The registry makes the type's TLxTypeInfo on first use
/// and keeps it in Info.
struct TLxTypeIdentity {
  const TLxValueOps* Ops;
  /// Fills in what the type says of itself; nil for identities the registry makes at run time
  /// (classes known only by their metaclass, arrays of types named at run time).
  void (*Describe)(TLxTypeDescription& ADescription);
  mutable std::atomic<const TLxTypeInfo*> Info;
};
using TLxTypeHandle = const TLxTypeIdentity*;

/// Typed access to a stored value, filled in by the describing templates for the kinds that
/// have it; nil entries mean the kind has no such view. Classes are stored as their TObject
/// address, so TObject must be the first base of every described class (it is of every class
/// of this library).
struct TLxValueAccess {
  /// Whole numbers, characters, enumerations and Boolean: the ordinal (UInt64 as its bits);
  /// sets: the bit mask of ordinals 0 to 63.
  Int64 (*GetOrdinal)(const void* AData) = nullptr;
  void (*SetOrdinal)(void* AData, Int64 AValue) = nullptr;
  /// Floats, dates and times.
  double (*GetFloat)(const void* AData) = nullptr;
  void (*SetFloat)(void* AData, double AValue) = nullptr;
  /// The text kinds.
  UnicodeString (*GetText)(const void* AData) = nullptr;
  void (*SetText)(void* AData, std::u16string_view AValue) = nullptr;
  /// Classes.
  TObject* (*GetObject)(const void* AData) = nullptr;
  void (*SetObject)(void* AData, TObject* AValue) = nullptr;
  /// Interfaces: SetInterface queries AValue for the type's interface and gives false (leaving
  /// the value as it was) when it isn't supported.
  IInterface* (*GetInterface)(const void* AData) = nullptr;
  bool (*SetInterface)(void* AData, IInterface* AValue) = nullptr;
  /// Arrays: a fixed array refuses a length other than its own (false).
  Integer (*GetLength)(const void* AData) = nullptr;
  bool (*SetLength)(void* AData, Integer ALength) = nullptr;
  void* (*ElementAddress)(void* AData, Integer AIndex) = nullptr;
};

// --- annotations ---------------------------------------------------------------------------------
/// Base of the annotations on types and members; the annotated thing owns them.
class TCustomAttribute : public TObject {
  LX_CLASS(TCustomAttribute, TObject)

protected:
  TCustomAttribute() = default;
  ~TCustomAttribute() override = default;
};

/// Read by the serializers; see SerializerHint.
enum TSerializerHintOption : Byte {
  shoName = 0,
  shoRequired = 1,
  shoSerializerHelper = 2,
  shoDeserializerHelper = 3,
  shoNodeType = 4,
  shoEnumPrefix = 5,
  shoDoNotSerialize = 6,
  shoTimezoneFormat = 7
};

/// The member annotation of the serializers: an option and its text.
class SerializerHint : public TCustomAttribute {
  LX_CLASS(SerializerHint, TCustomAttribute)
  SerializerHint(TSerializerHintOption AOption, std::u16string_view AValue)
      : FOption(AOption), FValue(AValue) {}
  static SerializerHint* Create(TSerializerHintOption AOption, std::u16string_view AValue) {
    return New<SerializerHint>(AOption, AValue);
  }
  TSerializerHintOption GetOption() const noexcept { return FOption; }
  const UnicodeString& GetValue() const noexcept { return FValue; }

protected:
  ~SerializerHint() override = default;

private:
  const TSerializerHintOption FOption;
  const UnicodeString FValue;
};

/// An owned list of annotations, in declared order.
class TLxAttributeList {
public:
  TLxAttributeList() = default;
  TLxAttributeList(const TLxAttributeList&) = delete;
  TLxAttributeList& operator=(const TLxAttributeList&) = delete;
  ~TLxAttributeList();
  const std::vector<TCustomAttribute*>& Items() const noexcept { return FItems; }
  /// Takes AAttribute over.
  void Add(TCustomAttribute* AAttribute);
  /// The first SerializerHint with AOption; nil when there is none.
  const SerializerHint* FindHint(TSerializerHintOption AOption) const noexcept;

private:
  std::vector<TCustomAttribute*> FItems;
};

// --- members -------------------------------------------------------------------------------------
/// What fields, properties, indexed properties and methods share. AInstance, wherever a member
/// takes one, is the object (its TObject address) for a class and the address of the value for
/// a record.
class TLxMemberDescription {
public:
  TLxMemberDescription(const TLxMemberDescription&) = delete;
  TLxMemberDescription& operator=(const TLxMemberDescription&) = delete;
  virtual ~TLxMemberDescription() = default;

  const UnicodeString& GetName() const noexcept { return FName; }
  TLxMemberVisibility GetVisibility() const noexcept { return FVisibility; }
  /// The annotations in declared order.
  const std::vector<TCustomAttribute*>& GetAttributes() const noexcept {
    return FAttributes.Items();
  }
  const SerializerHint* FindHint(TSerializerHintOption AOption) const noexcept {
    return FAttributes.FindHint(AOption);
  }
  /// Start-up only: the describing code adds annotations while it describes the member.
  void AddAttribute(TCustomAttribute* AAttribute) { FAttributes.Add(AAttribute); }

protected:
  TLxMemberDescription(std::u16string_view AName, TLxMemberVisibility AVisibility)
      : FName(AName), FVisibility(AVisibility) {}

private:
  UnicodeString FName;
  TLxMemberVisibility FVisibility;
  TLxAttributeList FAttributes;
};

/// A data member. Its value is read and written in place, through its address in the instance.
class TLxFieldDescription : public TLxMemberDescription {
public:
  const TLxTypeInfo* GetFieldType() const;
  TLxTypeHandle GetFieldTypeHandle() const noexcept { return FType; }
  /// The storage of the field inside AInstance.
  virtual void* GetAddress(void* AInstance) const noexcept = 0;
  const void* GetAddress(const void* AInstance) const noexcept {
    return GetAddress(const_cast<void*>(AInstance));
  }
  TValue GetValue(const void* AInstance) const;
  /// AValue is converted to the field's type (TValue::ToType); a value that doesn't convert
  /// raises EInvalidCast "Invalid class typecast".
  void SetValue(void* AInstance, const TValue& AValue) const;

protected:
  TLxFieldDescription(std::u16string_view AName, TLxMemberVisibility AVisibility,
                      TLxTypeHandle AType)
      : TLxMemberDescription(AName, AVisibility), FType(AType) {}

private:
  TLxTypeHandle FType;
};

/// A property: a getter, a setter, or both.
class TLxPropertyDescription : public TLxMemberDescription {
public:
  const TLxTypeInfo* GetPropertyType() const;
  TLxTypeHandle GetPropertyTypeHandle() const noexcept { return FType; }
  virtual bool GetIsReadable() const noexcept = 0;
  virtual bool GetIsWritable() const noexcept = 0;
  /// A property without getter raises EInvalidOperation "Property %s is not readable".
  virtual TValue GetValue(const void* AInstance) const = 0;
  /// Converts as TLxFieldDescription::SetValue does; a property without setter raises
  /// EInvalidOperation "Property %s is read-only".
  virtual void SetValue(void* AInstance, const TValue& AValue) const = 0;

protected:
  TLxPropertyDescription(std::u16string_view AName, TLxMemberVisibility AVisibility,
                         TLxTypeHandle AType)
      : TLxMemberDescription(AName, AVisibility), FType(AType) {}

private:
  TLxTypeHandle FType;
};

/// A property with one index, such as Items of a list.
class TLxIndexedPropertyDescription : public TLxMemberDescription {
public:
  const TLxTypeInfo* GetPropertyType() const;
  TLxTypeHandle GetPropertyTypeHandle() const noexcept { return FType; }
  /// AIndexes must hold one value convertible to the index type: another count raises
  /// EInvalidCast "Parameter count mismatch".
  virtual TValue GetValue(const void* AInstance, const std::vector<TValue>& AIndexes) const = 0;
  /// As GetValue; a property without setter raises EInvalidOperation "Property %s is read-only".
  virtual void SetValue(void* AInstance, const std::vector<TValue>& AIndexes,
                        const TValue& AValue) const = 0;

protected:
  TLxIndexedPropertyDescription(std::u16string_view AName, TLxMemberVisibility AVisibility,
                                TLxTypeHandle AType)
      : TLxMemberDescription(AName, AVisibility), FType(AType) {}

private:
  TLxTypeHandle FType;
};

class TLxParameterDescription {
public:
  TLxParameterDescription(std::u16string_view AName, TLxTypeHandle AType)
      : FName(AName), FType(AType) {}
  const UnicodeString& GetName() const noexcept { return FName; }
  const TLxTypeInfo* GetParamType() const;
  TLxTypeHandle GetParamTypeHandle() const noexcept { return FType; }

private:
  UnicodeString FName;
  TLxTypeHandle FType;
};

/// A method, or for a class the constructor "Create" that its metaclass offers.
class TLxMethodDescription : public TLxMemberDescription {
public:
  const std::vector<TLxParameterDescription>& GetParameters() const noexcept { return FParameters; }
  /// Nil for a method that gives nothing.
  const TLxTypeInfo* GetReturnType() const;
  /// True for "Create": Invoke then makes a new object (AInstance is ignored) and gives it;
  /// the caller owns it.
  bool GetIsConstructor() const noexcept { return FIsConstructor; }
  /// Calls the method on AInstance with AArguments, each converted to its parameter's type;
  /// gives the result, empty for a method that gives nothing. A count other than the
  /// parameters' raises EInvalidCast "Parameter count mismatch"; an argument that doesn't
  /// convert raises EInvalidCast "Invalid class typecast".
  virtual TValue Invoke(void* AInstance, const std::vector<TValue>& AArguments) const = 0;

protected:
  TLxMethodDescription(std::u16string_view AName, TLxMemberVisibility AVisibility,
                       std::vector<TLxParameterDescription> AParameters, TLxTypeHandle AReturn,
                       bool AIsConstructor = false)
      : TLxMemberDescription(AName, AVisibility), FParameters(std::move(AParameters)),
        FReturn(AReturn), FIsConstructor(AIsConstructor) {}

private:
  std::vector<TLxParameterDescription> FParameters;
  TLxTypeHandle FReturn;
  bool FIsConstructor;
};

// --- the description -----------------------------------------------------------------------------
/// Everything the serializers ask of a type. Every look-up by name ignores letter case.
/// The mutating operations are for the describing code at start-up only.
class TLxTypeDescription {
public:
  explicit TLxTypeDescription(TLxTypeHandle AHandle) noexcept : FHandle(AHandle) {}
  TLxTypeDescription(const TLxTypeDescription&) = delete;
  TLxTypeDescription& operator=(const TLxTypeDescription&) = delete;
  ~TLxTypeDescription();

  TLxTypeHandle GetHandle() const noexcept { return FHandle; }
  /// The TLxTypeInfo of the described type.
  const TLxTypeInfo* GetTypeInfo() const noexcept { return FTypeInfo; }
  const UnicodeString& GetName() const noexcept { return FName; }
  const UnicodeString& GetQualifiedName() const noexcept { return FQualifiedName; }
  TLxTypeKind GetTypeKind() const noexcept { return FTypeKind; }
  TTypeKind GetKind() const noexcept { return FKind; }
  TLxSchemaDataType GetSchemaDataType() const noexcept { return FSchemaDataType; }
  /// True once an application (or the library) described the type, not only its C++ shape.
  bool GetIsDescribed() const noexcept { return FDescribed; }

  /// All properties: this type's own in declared order, then each ancestor's from the nearest
  /// upward. A property that overrides an ancestor's therefore comes first.
  std::vector<const TLxPropertyDescription*> GetProperties() const;
  /// All fields, in the same order.
  std::vector<const TLxFieldDescription*> GetFields() const;
  /// The first of GetFields with that name; nil when there is none.
  const TLxFieldDescription* GetField(std::u16string_view AName) const;
  const TLxPropertyDescription* GetProperty(std::u16string_view AName) const;
  const TLxIndexedPropertyDescription* GetIndexedProperty(std::u16string_view AName) const;
  /// This type's or the nearest ancestor's; for a class that its metaclass can make, "Create"
  /// is its constructor (with the owner as parameter AOwner for a TComponent). An ancestor's
  /// constructor is never found: a class that can't be made has no "Create".
  const TLxMethodDescription* GetMethod(std::u16string_view AName) const;
  /// The annotations of the type itself (shoEnumPrefix on an enumeration).
  const std::vector<TCustomAttribute*>& GetAttributes() const noexcept {
    return FAttributes.Items();
  }
  const SerializerHint* FindHint(TSerializerHintOption AOption) const noexcept {
    return FAttributes.FindHint(AOption);
  }

  /// Arrays: the element's type; sets: the enumeration's; nil for the others.
  const TLxTypeInfo* ElementType() const;
  TLxTypeHandle ElementTypeHandle() const noexcept { return FElementType; }
  /// Fixed arrays: the number of elements; 0 for the others.
  Integer GetFixedLength() const noexcept { return FFixedLength; }
  /// Classes: the class; nil for the others.
  TClass MetaclassType() const noexcept { return FMetaclass; }
  /// Classes: the ancestor's type; nil at TObject and for the others.
  const TLxTypeInfo* BaseType() const;
  /// Interfaces: the interface's identifier.
  const TGUID& GetInterfaceID() const noexcept { return FInterfaceID; }

  /// Enumerations: the names by ordinal, from 0 (Boolean: "False", "True"); empty while the
  /// enumeration is not described.
  const std::vector<UnicodeString>& GetEnumNames() const noexcept { return FEnumNames; }
  /// The lowest and highest ordinal: 0 and the count of names less one.
  Int64 GetMinValue() const noexcept { return 0; }
  Int64 GetMaxValue() const noexcept { return static_cast<Int64>(FEnumNames.size()) - 1; }
  /// The ordinal's name; empty outside the names.
  UnicodeString GetEnumName(Int64 AOrdinal) const;
  /// The ordinal of the name (letter case ignored), -1 when there is none.
  Int64 GetEnumValue(std::u16string_view AName) const noexcept;

  const TLxValueOps* GetOps() const noexcept { return FHandle->Ops; }
  const TLxValueAccess& Access() const noexcept { return FAccess; }

  // Start-up only: what the describing templates and the builders fill in.
  void SetNames(std::u16string_view AName, std::u16string_view AQualifiedName);
  void SetKinds(TLxTypeKind ATypeKind, TTypeKind AKind, TLxSchemaDataType ASchemaDataType);
  /// The XML Schema name of a built-in simple type ("int"); empty for the others.
  void SetXmlSchemaName(std::u16string_view AName) { FXmlSchemaName = AName; }
  const UnicodeString& GetXmlSchemaName() const noexcept { return FXmlSchemaName; }
  /// The first alias registered for the type (TLxTypes::RegisterTypeAlias); empty for none.
  const UnicodeString& GetAlias() const noexcept { return FAlias; }
  void SetAlias(std::u16string_view AAlias) { FAlias = AAlias; }
  void SetElementType(TLxTypeHandle AElement, Integer AFixedLength = 0) noexcept {
    FElementType = AElement;
    FFixedLength = AFixedLength;
  }
  void SetMetaclass(TClass AClass) noexcept {
    FMetaclass = AClass;
    FBaseType.store(nullptr);
  }
  void SetInterfaceID(const TGUID& AIID) noexcept { FInterfaceID = AIID; }
  void SetEnumNames(std::vector<UnicodeString> ANames) { FEnumNames = std::move(ANames); }
  TLxValueAccess& MutableAccess() noexcept { return FAccess; }
  void MarkDescribed() noexcept { FDescribed = true; }
  void AddAttribute(TCustomAttribute* AAttribute) { FAttributes.Add(AAttribute); }
  /// Take the member over; a member is found by these look-ups from then on.
  TLxFieldDescription& AddField(TLxFieldDescription* AField);
  TLxPropertyDescription& AddProperty(TLxPropertyDescription* AProperty);
  TLxIndexedPropertyDescription& AddIndexedProperty(TLxIndexedPropertyDescription* AProperty);
  TLxMethodDescription& AddMethod(TLxMethodDescription* AMethod);
  /// This type's own field named AName, else its own property (letter case ignored); nil when
  /// there is none. The describing code annotates members by name through it.
  TLxMemberDescription* FindOwnMember(std::u16string_view AName) noexcept;
  /// Registry only: the TLxTypeInfo made for this description.
  void SetTypeInfo(const TLxTypeInfo* AInfo) noexcept { FTypeInfo = AInfo; }

private:
  template <class M>
  static const M* FindByName(const std::vector<M*>& AMembers, std::u16string_view AName) noexcept;

  TLxTypeHandle FHandle;
  const TLxTypeInfo* FTypeInfo = nullptr;
  UnicodeString FName;
  UnicodeString FQualifiedName;
  UnicodeString FXmlSchemaName;
  UnicodeString FAlias;
  TLxTypeKind FTypeKind = ltkUnknown;
  TTypeKind FKind = tkUnknown;
  TLxSchemaDataType FSchemaDataType = lsdNone;
  bool FDescribed = false;
  TLxTypeHandle FElementType = nullptr;
  Integer FFixedLength = 0;
  TClass FMetaclass = nullptr;
  /// BaseType once looked up: type infos live as long as the process, and member look-ups
  /// climb the ancestors on every call.
  mutable std::atomic<const TLxTypeInfo*> FBaseType{nullptr};
  TGUID FInterfaceID{};
  std::vector<UnicodeString> FEnumNames;
  TLxValueAccess FAccess;
  TLxAttributeList FAttributes;
  std::vector<TLxFieldDescription*> FFields;
  std::vector<TLxPropertyDescription*> FProperties;
  std::vector<TLxIndexedPropertyDescription*> FIndexedProperties;
  std::vector<TLxMethodDescription*> FMethods;
};

// --- the type information ------------------------------------------------------------------------
/// Names and kinds of one type, owned by the registry and alive until the process ends; callers
/// hold plain pointers and compare them for identity (or compare handles).
class TLxTypeInfo {
public:
  TLxTypeInfo(const TLxTypeDescription* ADescription, TLxTypeKind ATypeKind,
              TTypeKind AKind) noexcept
      : FDescription(ADescription), FTypeKind(ATypeKind), FKind(AKind) {}
  TLxTypeInfo(const TLxTypeInfo&) = delete;
  TLxTypeInfo& operator=(const TLxTypeInfo&) = delete;
  ~TLxTypeInfo();

  const TLxTypeDescription* GetDescription() const noexcept { return FDescription; }
  TLxTypeHandle GetHandle() const noexcept { return FDescription->GetHandle(); }
  const UnicodeString& GetName() const noexcept { return FDescription->GetName(); }
  const UnicodeString& GetQualifiedName() const noexcept {
    return FDescription->GetQualifiedName();
  }
  TLxTypeKind GetTypeKind() const noexcept { return FTypeKind; }
  TTypeKind GetKind() const noexcept { return FKind; }
  TLxMainTypeKind GetMainTypeKind() const noexcept;
  /// False for the complex kinds (LxIsComplexKind), true for all others.
  bool GetIsSimpleType() const noexcept { return !LxIsComplexKind(FTypeKind); }

  /// The name in a document: the first alias registered for the type, else the XML Schema name
  /// of a built-in simple type ("int", "string"), "ArrayOf" and the element's schema name with
  /// its first letter raised for an array, else the short name; with APrefix and a colon in
  /// front when APrefix is not empty. TLxTypes::GetTypeInfo(that, ltnSchema, ...) finds the type
  /// again, prefix and all.
  UnicodeString SchemaName(std::u16string_view APrefix = {}) const;
  /// The same type seen with another kind: with lsdArray a TLxTypeInfo of this handle and these
  /// names whose TypeKind is ltkDynArray (and Kind tkDynArray). Any other code gives this one.
  const TLxTypeInfo* VirtualType(TLxSchemaDataType ASchemaDataType) const;

private:
  const TLxTypeDescription* FDescription;
  TLxTypeKind FTypeKind;
  TTypeKind FKind;
  mutable std::atomic<const TLxTypeInfo*> FArrayView{nullptr};
};

} // namespace lorvane
