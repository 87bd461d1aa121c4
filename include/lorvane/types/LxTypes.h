/// TLxTypes, the process-wide type registry: the TLxTypeInfo of every known type by handle,
/// description, class and name; aliases; the Variant type codes of named types; and the table of
/// registered serializer classes per type and format (TLxRegisteredSerializers).
///
/// Types are known once they are used (TLxTypes::GetTypeInfo(TypeHandle<T>())), described
/// (LxDescribe.h), registered as classes (RegisterClass), or built in. Look-ups by name ignore
/// letter case. The registry is filled at start-up and read afterwards; every operation is safe
/// from any thread, and first use creates the TLxTypeInfo of a type exactly once.
#pragma once

#include "lorvane/types/LxValue.h"

#include <initializer_list>
#include <string_view>

namespace lorvane {

/// What the table of serializers holds for a type and format: the serializer class (a
/// TLxSerializer descendant) and the deserializer class (a TLxDeserializer descendant); either
/// may be nil.
struct TLxRegisteredSerializers {
  TClass SerializerClass = nullptr;
  TClass DeserializerClass = nullptr;
};

/// How many "ArrayOf" prefixes a name may carry to make arrays that nobody declared: the name
/// comes from a document, and each level is a type that stays for the process.
inline constexpr Integer cLxMaxUndeclaredArrayDepth = 32;

class TLxTypes {
public:
  TLxTypes() = delete;

  /// Nil for a nil argument; otherwise created on first use.
  static const TLxTypeInfo* GetTypeInfo(TLxTypeHandle AHandle);
  static const TLxTypeInfo* GetTypeInfo(const TLxTypeDescription* ADescription) noexcept;
  static const TLxTypeInfo* GetTypeInfo(TClass AClass);
  template <class T> static const TLxTypeInfo* GetTypeInfo() {
    return GetTypeInfo(TypeHandle<T>());
  }
  /// By name, compared as ANameType says; AMainKind other than lmkNone takes only types of that
  /// main kind. A schema name may carry a prefix ("xsd:int", "ns:TCustomer"). A schema name
  /// "ArrayOf" + an element's schema name gives the dynamic array of that element even when no
  /// such type was declared (such an array made from its name has no storage: it serves names
  /// and element types, not values); such undeclared arrays nest at most
  /// cLxMaxUndeclaredArrayDepth deep. A class registered with RegisterClass is found by its name.
  /// Not found: nil, or with ARaiseIfNotFound EArgumentException "Unknown type \"%s\"".
  static const TLxTypeInfo* GetTypeInfo(std::u16string_view AName, TLxTypeNameType ANameType,
                                        bool ARaiseIfNotFound = false,
                                        TLxMainTypeKind AMainKind = lmkNone);

  /// The Variant type code of the named type (varInteger for "int", varUString for "string",
  /// varDate for "dateTime", varVariant for "anyType"...); ADefault when the type is unknown or
  /// has no code of its own (records, classes, enumerations...).
  static TVarType GetVarType(std::u16string_view AName, TLxTypeNameType ANameType,
                             TVarType ADefault);
  /// The type of what AVariant holds now: Integer for varInteger, UnicodeString for the texts,
  /// IPtr<IInterface> for varUnknown; the Variant type itself for Empty, Null and arrays.
  static const TLxTypeInfo* VarTypeInfo(const Variant& AVariant);
  static TLxMainTypeKind VarMainTypeKind(const Variant& AVariant) noexcept {
    return lorvane::VarMainTypeKind(AVariant);
  }
  /// Whole numbers lmkInteger, floats lmkFloat, the text kinds lmkString, Boolean lmkBoolean,
  /// dates and times lmkDateTime, arrays lmkArray, everything else lmkNone.
  static TLxMainTypeKind ToMainTypeKind(TLxTypeKind ATypeKind) noexcept;

  /// Further schema names of a type; the first alias a type gets is its SchemaName.
  static void RegisterTypeAlias(TLxTypeHandle AHandle, std::u16string_view AName);
  static void RegisterTypeAlias(TLxTypeHandle AHandle,
                                std::initializer_list<std::u16string_view> ANames);

  /// Stores the serializers of a type and format, replacing an earlier entry; a nil handle
  /// stores the format's default.
  static void RegisterTypeSerializers(TLxTypeHandle AHandle, TLxDataSerializationFormatType AFormat,
                                      const TLxRegisteredSerializers& ASerializers);
  /// The entry to use: the type's own; for a class the nearest ancestor's; else the format's
  /// default (also for a nil ATypeInfo); nil when the format has none.
  static const TLxRegisteredSerializers* FindSerializers(const TLxTypeInfo* ATypeInfo,
                                                         TLxDataSerializationFormatType AFormat);

  /// For the describing code (LxDescribe.h): the description of AHandle's type, named
  /// AQualifiedName (the short name is the part after the last dot) and from now on described.
  /// A type described twice raises EInvalidOperation "Type %s is already described".
  static TLxTypeDescription& BeginDescription(TLxTypeHandle AHandle,
                                              std::u16string_view AQualifiedName);
};

} // namespace lorvane
