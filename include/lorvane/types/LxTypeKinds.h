/// The vocabulary in which the type registry describes a type:
///   TLxTypeKind          the library's kind of a type (ltkUnknown ... ltkClassRef), and the
///                        kind sets the serializers test (LxIsComplexKind ...)
///   TTypeKind            the language kind of a type (tkUnknown ... tkProcedure)
///   TLxTypeNameType      which name a look-up compares (short, qualified, schema)
///   TLxDataSerializationFormatType, LxDataSerializationFormatType   the formats and their names
///   TLxSchemaDataType    the code of a type in a schema (JSON type names use it)
///   TLxMemberVisibility  the four ordered visibility classes of a member
#pragma once

#include "lorvane/types/LxMainTypeKind.h"

#include <array>
#include <string_view>

namespace lorvane {

/// The numeric order matters: the serializers test ranges of it.
enum TLxTypeKind : Byte {
  ltkUnknown = 0,
  ltkByte = 1,
  ltkWord = 2,
  ltkLongWord = 3,
  ltkUInt64 = 4,
  ltkShortInt = 5,
  ltkSmallInt = 6,
  ltkInteger = 7,
  ltkInt64 = 8,
  ltkSingle = 9,
  ltkDouble = 10,
  ltkExtended = 11,
  /// The six text kinds, which every serializer treats alike. Here: ltkText0 a 16-bit character
  /// (WideChar), ltkText1 a byte character (AnsiChar), ltkText3 the plain string
  /// (UnicodeString), ltkText4 the 8-bit string (std::string, held as UTF-8). ltkText2 (a
  /// further character kind) and ltkText5 (a wide string of another C++ type) are free for
  /// descriptions that an application makes; no built-in type has them.
  ltkText0 = 12,
  ltkText1 = 13,
  ltkText2 = 14,
  ltkText3 = 15,
  ltkText4 = 16,
  ltkText5 = 17,
  ltkBoolean = 18,
  ltkEnumeration = 19,
  ltkSet = 20,
  ltkDate = 21,
  ltkTime = 22,
  ltkDateTime = 23,
  ltkVariant = 24,
  ltkArray = 25,
  ltkDynArray = 26,
  ltkRecord = 27,
  ltkClass = 28,
  ltkInterface = 29,
  ltkReserved30 = 30,
  ltkPointer = 31,
  ltkReserved32 = 32,
  ltkReserved33 = 33,
  ltkClassRef = 34
};

/// The language kind: where a serializer asks for the shape of the storage it uses this one.
enum TTypeKind : Byte {
  tkUnknown = 0,
  tkInteger = 1,
  tkChar = 2,
  tkEnumeration = 3,
  tkFloat = 4,
  tkString = 5,
  tkSet = 6,
  tkClass = 7,
  tkMethod = 8,
  tkWChar = 9,
  tkLString = 10,
  tkWString = 11,
  tkVariant = 12,
  tkArray = 13,
  tkRecord = 14,
  tkInterface = 15,
  tkInt64 = 16,
  tkDynArray = 17,
  tkUString = 18,
  tkClassRef = 19,
  tkPointer = 20,
  tkProcedure = 21
};

enum TLxTypeNameType : Byte {
  /// The short name: "string", "TCustomer".
  ltnName = 0,
  /// The name with its namespace: "System.string", "Shop.TCustomer".
  ltnQualified = 1,
  /// The name in a document, as SchemaName gives it ("xsi:type", "className"); aliases count.
  ltnSchema = 2
};

/// 0 JSON, 1 XML; nothing registers serializers for 2 to 4.
enum TLxDataSerializationFormatType : Byte {
  ldsJSON = 0,
  ldsXML = 1,
  ldsFormat2 = 2,
  ldsFormat3 = 3,
  ldsFormat4 = 4
};

/// The display names of the five formats, by value; messages print from it.
inline constexpr std::array<std::u16string_view, 5> LxDataSerializationFormatType{
    u"JSON", u"XML", u"Format2", u"Format3", u"Format4"};

/// The code of a type in a schema. VirtualType takes lsdArray; the JSON type names give the
/// codes of the simple types.
enum TLxSchemaDataType : Byte {
  lsdNone = 0,
  lsdObject = 1,
  lsdArray = 2,
  lsdShortInt = 3,
  lsdSmallInt = 4,
  lsdInteger = 5,
  lsdInt64 = 6,
  lsdByte = 7,
  lsdWord = 8,
  lsdLongWord = 9,
  lsdUInt64 = 10,
  lsdSingle = 11,
  lsdDouble = 12,
  lsdExtended = 13,
  lsdString = 14,
  lsdChar = 15,
  lsdEnumeration = 16,
  lsdBoolean = 17,
  lsdDate = 18,
  lsdTime = 19,
  lsdDateTime = 20
};

/// Ordered: the serializers write members of at least public visibility, and tell public (2)
/// from streamable (3).
enum TLxMemberVisibility : Byte { mvPrivate = 0, mvProtected = 1, mvPublic = 2, mvStreamable = 3 };

/// Array, dynamic array, record, class, interface, pointer: written with start tags or braces.
constexpr bool LxIsComplexKind(TLxTypeKind AKind) noexcept {
  return AKind == ltkArray || AKind == ltkDynArray || AKind == ltkRecord || AKind == ltkClass ||
         AKind == ltkInterface || AKind == ltkPointer;
}
/// Record and class.
constexpr bool LxHasMembers(TLxTypeKind AKind) noexcept {
  return AKind == ltkRecord || AKind == ltkClass;
}
constexpr bool LxIsArrayKind(TLxTypeKind AKind) noexcept {
  return AKind == ltkArray || AKind == ltkDynArray;
}
constexpr bool LxIsTextKind(TLxTypeKind AKind) noexcept {
  return AKind >= ltkText0 && AKind <= ltkText5;
}
/// Unknown, pointer, the reserved 32 and class references: a property of such a type is skipped.
constexpr bool LxIsNeverWrittenAsProperty(TLxTypeKind AKind) noexcept {
  return AKind == ltkUnknown || AKind == ltkPointer || AKind == ltkReserved32 ||
         AKind == ltkClassRef;
}

/// The enumerator's name: "tkClass", "ltkRecord"; messages print the kind by it.
std::u16string_view TypeKindName(TTypeKind AKind) noexcept;
std::u16string_view LxTypeKindName(TLxTypeKind AKind) noexcept;

} // namespace lorvane
