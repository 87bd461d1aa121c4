// The exceptions that each public reading entry point may raise on bad input, as one table that
// the fuzz targets and the census test share: a reader that raises anything else has a fault.
#pragma once

#include "lorvane/core/LxObject.h"
#include "lorvane/dom/LxDOMTypes.h"
#include "lorvane/json/LxJSONPath.h"
#include "lorvane/json/LxJSONTypes.h"
#include "lorvane/platform/SysUtils.h"
#include "lorvane/sax/LxSAXParser.h"
#include "lorvane/sax/LxXMLParser.h"
#include "lorvane/serializer/LxSerializerTypes.h"

#include <algorithm>
#include <exception>
#include <initializer_list>
#include <string_view>
#include <typeinfo>

namespace lorvane::documented {

/// One documented failure: an exception class, or for the plain Exception its message (or the
/// start of it).
enum class TFailure {
  XMLParseError,        // ELxXMLParseError
  TextEnded,            // ELxTextParserEOF: the text ended inside a construct
  JSONParseError,       // ELxJSONParseError
  JSONException,        // ELxJSONException that is no parse error: a tree that can't take it
  DOMSyntax,            // ELxDomSyntax: the document loader's form of a reader failure
  ConvertError,         // EConvertError
  EncodingNotSupported, // Exception "The specified encoding is not supported!"
  EncodingError,        // EEncodingError: an encoding the text declares that isn't known
  InvalidObjectType,    // Exception "Invalid objecttype": a form whose keys mix kinds
  InvalidUTF8,          // Exception "Invalid UTF8 Encoding detected"
  BracketExpected,      // Exception "The parser expected to read a \"[\" character, but ..."
  DurationText,         // Exception "LxXMLToDuration; ..."
  NoTimeZone,           // Exception "The XMLDateTime value did not contain timezone information!"
  ParserError,          // EParserError: the deserializer's form of a reader failure
  NoSuchMember,         // ELxSerializeException: a name that is no member
  NoSuchEnumName,       // EAssertionFailed "Failed to get the EnumValue for ..."
  CannotCreate,         // ENotSupportedException "Failed to create an instance of ...!"
  UnknownType,          // EArgumentException "Unknown type \"...\"": a class name nobody described
  NoClassName,          // Exception "Failed to read the ClassName from the stream!"
  NoClassOfType,        // Exception "Failed to retrieve the Class of type \"...\"!"
  ValueNotSupported,    // Exception "The value \"...\" of type \"...\" is not supported!"
  EnumMemberExpected,   // Exception "\"The JSON Enum Deserializer expected \"asString\" or ..."
  RecordNotNillable,    // Exception "Records are not nillable! ..."
  ObjectTextExpected,   // Exception "Record/Object data must start with \"{\"."
  InvalidCast,          // EInvalidCast: "$" in a JSON tree without a document
  FilterOperandMissing, // EAssertionFailed SJSONFilterOperandMissing: "?(())", "?(@.a &&)"
  Undocumented,         // anything else
};

/// Which documented failure AFailure is: the most derived class first, then the plain messages.
inline TFailure Classify(const std::exception& AFailure) {
  const auto* E = &AFailure;
  if (dynamic_cast<const ELxXMLParseError*>(E))
    return TFailure::XMLParseError;
  if (dynamic_cast<const ELxTextParserEOF*>(E))
    return TFailure::TextEnded;
  if (dynamic_cast<const ELxJSONParseError*>(E))
    return TFailure::JSONParseError;
  if (dynamic_cast<const ELxJSONException*>(E))
    return TFailure::JSONException;
  if (dynamic_cast<const ELxDomSyntax*>(E))
    return TFailure::DOMSyntax;
  if (dynamic_cast<const EConvertError*>(E))
    return TFailure::ConvertError;
  if (dynamic_cast<const EEncodingError*>(E))
    return TFailure::EncodingError;
  if (typeid(*E) == typeid(EParserError))
    return TFailure::ParserError;
  if (dynamic_cast<const ELxSerializeException*>(E))
    return TFailure::NoSuchMember;
  if (dynamic_cast<const EInvalidCast*>(E))
    return TFailure::InvalidCast;
  if (const auto* Assertion = dynamic_cast<const EAssertionFailed*>(E)) {
    if (Assertion->Message() == SJSONFilterOperandMissing)
      return TFailure::FilterOperandMissing;
    return Assertion->Message().starts_with(u"Failed to get the EnumValue for ")
               ? TFailure::NoSuchEnumName
               : TFailure::Undocumented;
  }
  if (const auto* NotSupported = dynamic_cast<const ENotSupportedException*>(E))
    return NotSupported->Message().starts_with(u"Failed to create an instance of ")
               ? TFailure::CannotCreate
               : TFailure::Undocumented;
  if (const auto* Argument = dynamic_cast<const EArgumentException*>(E))
    return Argument->Message().starts_with(u"Unknown type \"") ? TFailure::UnknownType
                                                               : TFailure::Undocumented;
  const auto* Plain = dynamic_cast<const Exception*>(E);
  // Only the plain class carries the messages below: a descendant with one of them is news.
  if (!Plain || typeid(*Plain) != typeid(Exception))
    return TFailure::Undocumented;
  const std::u16string_view M = Plain->Message();
  if (M == u"The specified encoding is not supported!")
    return TFailure::EncodingNotSupported;
  if (M == u"Invalid UTF8 Encoding detected")
    return TFailure::InvalidUTF8;
  if (M == u"Invalid objecttype")
    return TFailure::InvalidObjectType;
  if (M.starts_with(u"The parser expected to read a \"[\" character, but \""))
    return TFailure::BracketExpected;
  if (M.starts_with(u"LxXMLToDuration; "))
    return TFailure::DurationText;
  if (M == u"The XMLDateTime value did not contain timezone information!")
    return TFailure::NoTimeZone;
  if (M == u"Failed to read the ClassName from the stream!")
    return TFailure::NoClassName;
  if (M.starts_with(u"Failed to retrieve the Class of type \""))
    return TFailure::NoClassOfType;
  if (M.starts_with(u"The value \"") && M.ends_with(u"\" is not supported!"))
    return TFailure::ValueNotSupported;
  if (M.starts_with(u"\"The JSON Enum Deserializer expected \"asString\" or \"asInt\", but the "
                    u"member \""))
    return TFailure::EnumMemberExpected;
  if (M.starts_with(u"Records are not nillable! "))
    return TFailure::RecordNotNillable;
  if (M == u"Record/Object data must start with \"{\".")
    return TFailure::ObjectTextExpected;
  return TFailure::Undocumented;
}

/// The public reading entry points.
enum class TEntry {
  XMLReader,        // TLxSAXXMLReader: Parse, ParseBuffer, ParseStream
  JSONReader,       // TLxJSONReader: Parse, ParseBuffer, ParseStream
  SAXJSONReader,    // TLxSAXJSONReader, and the event component on JSON text: the same forms
  FormReader,       // TLxFormURLEncodedJSONReader: the same forms
  XMLDocumentLoad,  // TLxDOMDocument: LoadXML, LoadFromStream, CreateFromJSON (JSON as XML)
  JSONDocumentLoad, // TLxJSONDocument: SetAsJSON, LoadFromStream
  FormDocumentLoad, // TLxJSONDocument::LoadFromStream of a form post
  ValueConversions, // text to value: LxXMLTo<T>, the JSON date forms, StrTo<T>, Base64, code
                    // page names and numbers, the Inc... date steps
  XMLDeserialize,   // XML into objects and values: LxDeserialize, LxCreateFrom
  JSONDeserialize,  // JSON, or a form post with "UrlEncoded", into objects and values
  JSONPathSelect,   // a JSON path on a value tree: CreateNodeList, SelectSingleNode, SelectIntf
};

struct TEntryFailures {
  TEntry Entry;
  const char* Name;
  std::initializer_list<TFailure> Failures;
};

/// The census: what each entry point may raise on any input. A missing handler is a caller's
/// mistake, not bad input, and is left out.
inline const TEntryFailures Census[] = {
    {TEntry::XMLReader,
     "XML reader",
     {TFailure::XMLParseError, TFailure::TextEnded, TFailure::EncodingError}},
    {TEntry::JSONReader,
     "JSON reader",
     {TFailure::JSONParseError, TFailure::TextEnded, TFailure::EncodingNotSupported}},
    {TEntry::SAXJSONReader,
     "JSON reader for XML consumers",
     {TFailure::JSONParseError, TFailure::TextEnded, TFailure::EncodingNotSupported}},
    {TEntry::FormReader,
     "form post reader",
     {TFailure::TextEnded, TFailure::ConvertError, TFailure::EncodingNotSupported,
      TFailure::InvalidUTF8, TFailure::BracketExpected}},
    {TEntry::XMLDocumentLoad,
     "XML document load",
     {TFailure::DOMSyntax, TFailure::EncodingError, TFailure::EncodingNotSupported}},
    {TEntry::JSONDocumentLoad,
     "JSON document load",
     {TFailure::JSONParseError, TFailure::TextEnded, TFailure::JSONException,
      TFailure::ConvertError, TFailure::EncodingNotSupported}},
    {TEntry::FormDocumentLoad,
     "form post document load",
     {TFailure::TextEnded, TFailure::ConvertError, TFailure::EncodingNotSupported,
      TFailure::InvalidUTF8, TFailure::BracketExpected, TFailure::InvalidObjectType}},
    {TEntry::ValueConversions,
     "value conversions",
     {TFailure::ConvertError, TFailure::DurationText, TFailure::NoTimeZone,
      TFailure::EncodingError}},
    {TEntry::XMLDeserialize,
     "XML deserialize",
     {TFailure::ParserError, TFailure::NoSuchMember, TFailure::ConvertError,
      TFailure::NoSuchEnumName, TFailure::CannotCreate, TFailure::UnknownType,
      TFailure::NoClassName, TFailure::NoClassOfType, TFailure::ValueNotSupported}},
    {TEntry::JSONDeserialize,
     "JSON deserialize",
     {TFailure::JSONParseError, TFailure::TextEnded, TFailure::NoSuchMember, TFailure::ConvertError,
      TFailure::NoSuchEnumName, TFailure::CannotCreate, TFailure::UnknownType,
      TFailure::NoClassName, TFailure::NoClassOfType, TFailure::ValueNotSupported,
      TFailure::EnumMemberExpected, TFailure::RecordNotNillable, TFailure::ObjectTextExpected,
      TFailure::InvalidUTF8, TFailure::BracketExpected}},
    {TEntry::JSONPathSelect,
     "JSON path selection",
     {TFailure::JSONException, TFailure::TextEnded, TFailure::ConvertError, TFailure::InvalidCast,
      TFailure::FilterOperandMissing}},
};

inline const TEntryFailures& FailuresOf(TEntry AEntry) {
  return *std::find_if(std::begin(Census), std::end(Census),
                       [AEntry](const TEntryFailures& F) { return F.Entry == AEntry; });
}

/// Whether AFailure is one that AEntry may raise.
inline bool IsDocumented(TEntry AEntry, const std::exception& AFailure) {
  const TFailure Kind = Classify(AFailure);
  const auto& Listed = FailuresOf(AEntry).Failures;
  return Kind != TFailure::Undocumented &&
         std::find(Listed.begin(), Listed.end(), Kind) != Listed.end();
}

/// Runs AAction; a documented failure of AEntry is swallowed, anything else passes on.
template <class F> void Guarded(TEntry AEntry, F&& AAction) {
  try {
    AAction();
  } catch (const std::exception& E) {
    if (!IsDocumented(AEntry, E))
      throw;
  }
}

} // namespace lorvane::documented
