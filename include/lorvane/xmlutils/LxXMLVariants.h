/// Values of dynamic type and their text in a document:
///   LxVariantToXML, LxXMLToVariant      a Variant to its text and back, by kind, type code or
///                                       type name; arrays of bytes as hexadecimal digits, other
///                                       arrays as one escaped "<array>" text
///   LxValToXML, LxXMLToValue            a TValue to its text and back, by type handle or name
///
/// Arrays, records and classes are written through the serializers' value serializer
/// (LxSerializeValue, types/LxSerializable.h). All functions are free of state. Failures of the
/// simple conversions (LxXMLValues.h, LxXMLEscape.h) reach the caller unchanged; the library's own
/// failures here are plain Exception, with the messages given below.
#pragma once

#include "lorvane/platform/Variants.h"
#include "lorvane/types/LxSerializable.h"
#include "lorvane/types/LxTypes.h"
#include "lorvane/types/LxValue.h"

#include <functional>
#include <string_view>

namespace lorvane {

/// The text of AValue, by its type code:
///   Empty, Null                          ""
///   Smallint, Integer, ShortInt, Byte,
///   Word, LongWord                       LxIntToXML; a LongWord above 2147483647 is written as
///                                        the Integer of the same bits ("-1"), which the
///                                        LongWord reading takes back to the same bits
///   Single, Double, Currency             LxDoubleToXML
///   Date                                 LxDateTimeToXML with tzfNone
///   OleStr, String, UString              LxStrToXML with both quotes escaped
///   Boolean                              LxBoolToXML
///   Int64                                LxInt64ToXML
///   array of Byte                        two upper-case hexadecimal digits per byte
///   other arrays                         "<array length=\"N\"><element nr=\"0\">...</element>
///                                        ...</array>", N being the high bound plus one, each
///                                        element written by LxVariantToXML, the whole escaped
///                                        by LxStrToXML with both quotes (so the text holds no
///                                        markup, and a string element is escaped twice)
/// Arrays are written from index 0 to the high bound: an array whose low bound is above 0
/// raises the array's EVariantBadIndexError. Any other code (an interface, UInt64) raises
/// Exception "LxVariantToXml; invalid variant type %d!".
UnicodeString LxVariantToXML(const Variant& AValue);

/// The text read as the kind AKind says, through the strict conversions: Byte, Word, LongWord,
/// UInt64, ShortInt, SmallInt, Integer and Int64 give a Variant of that width; the floats a
/// Double; the text kinds LxXMLToStr as a UString; Boolean a Boolean; an enumeration or set
/// LxXMLToInt as an Integer; Date, Time, DateTime a Date (tzfNone); Variant the text as it
/// stands, not decoded. Any other kind raises Exception "Failed to convert the value \"%s\" to a
/// variant value of type %s!" with the text and the kind's name ("ltkRecord").
Variant LxXMLToVariant(std::u16string_view AValue, TLxTypeKind AKind);

/// The text read as a Variant of the type code AVarType:
///   Empty, Null          Unassigned, Null; the text doesn't count
///   Smallint, Integer    LxXMLToSmallint, LxXMLToInt ("" gives 0); Decimal as Integer
///   Single, Double,
///   Currency             LxXMLToSingle (a Single), LxXMLToDouble, LxXMLToExtended (Doubles)
///   Date                 LxXMLToDateTime with tzfNone
///   OleStr, String,
///   UString              LxXMLToStr, as a UString
///   Boolean              LxXMLToBool
///   Variant, Unknown     the text as it stands, not decoded, as a UString
///   ShortInt, Byte, Word,
///   LongWord, Int64      the Variant forms of LxXMLValues.h with default 0, so that "" raises
///                        EConvertError "'' is not a valid integer value"
///   array of Byte        the hexadecimal form: blanks around it are ignored, "" gives Null,
///                        an odd last digit is dropped, a pair that isn't hexadecimal raises
///                        EConvertError "'$%s' is not a valid integer value"
///   other arrays         the element form of LxVariantToXML, on a text that isn't empty;
///                        string arrays are read as OleStr arrays. A length that makes no array
///                        raises EVariantArrayCreateError, more elements than the length
///                        EVariantBadIndexError, an element type that arrays can't hold
///                        EVariantBadVarTypeError
/// Anything else (an empty text on an array code too) raises Exception "LxXMLToVariant(%s);
/// Unsupported VarType" with the text.
Variant LxXMLToVariant(std::u16string_view AValue, TVarType AVarType);

/// The type code of the type with the qualified name ATypeName ("System.Integer"), varUnknown
/// when it has none, then as the form on a type code: a name without a code of its own gives
/// the text as it stands.
Variant LxXMLToVariant(std::u16string_view AValue, std::u16string_view ATypeName);

/// The text of AValue, by the language kind of its type:
///   Variant                               LxVariantToXML
///   array, dynamic array, record, class   the value serializer's XML (LxSerializeValue),
///                                         decoded from UTF-8; without one, raises
///                                         ENotSupportedException SNoValueSerializer
///   integer, 64-bit integer, float, set   ToWideString(true, "") ("[a,b]" for a set); dates
///                                         are floats here and come out as DateTimeToStr writes
///                                         them, numbers with FormatSettings' decimal separator
///   character and string kinds            LxStrToXML of the text with both quotes escaped
///   enumeration                           ToWideString(true, "") (its name; "True"/"False" for
///                                         a Boolean) while the ordinal lies within the type's
///                                         values, else the name of the lowest value
///   anything else (empty too)             ToWideString(true, "")
UnicodeString LxValToXML(const TValue& AValue);

/// The text as a value of the type AHandle, by its kind:
///   whole numbers, floats, Boolean        the strict conversions of LxXMLValues.h
///   Date, Time, DateTime                  LxXMLToDate, LxXMLToTime, LxXMLToDateTime (tzfNone)
///   WideChar (and other 16-bit character
///   kinds)                                the first unit of the text, not decoded; NUL for ""
///   AnsiChar                              the first byte of the text in code page 0; NUL for ""
///   UnicodeString, std::string            LxXMLToStr (a std::string holds it as UTF-8)
///   enumeration                           a text that begins with a digit is an ordinal, any
///                                         other a value's name (letter case ignored); a value
///                                         the type hasn't raises Exception "Failed to convert
///                                         the value \"%s\" to a value of type %s!"
///   set                                   a text that begins with a digit is the bit mask
///                                         (StrToInt), any other the names of the members,
///                                         between optional brackets, separated by commas
///                                         (letter case ignored); an unknown name raises as an
///                                         enumeration does
///   Variant                               LxXMLToVariant on varString: the decoded text
/// Any other kind raises Exception "Failed to convert \"%s\" into a TValue!\r\nThe type %s is
/// not supported." with the text and the type's name; a nil handle raises EArgumentException
/// "No type given".
TValue LxXMLToValue(std::u16string_view AValue, TLxTypeHandle AHandle);

/// The type of the qualified name ATypeName; an unknown name raises the registry's
/// EArgumentException "Unknown type \"%s\"".
TValue LxXMLToValue(std::u16string_view AValue, std::u16string_view ATypeName);

} // namespace lorvane
