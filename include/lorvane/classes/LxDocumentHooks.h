/// The hooks through which foundation code makes and reads XML and JSON documents without
/// depending on the document modules:
///   SetCreateXMLDoc, SetCreateJSONDoc        register the maker of a document from text
///   SetGetXMLDocValue, SetGetJSONDocValue    register the reader of a value at a path
///   CreateXMLDocument, CreateJSONDocument    make a document through the hook
///   GetXMLDocumentValue, GetJSONDocumentValue  read a value through the hook
///
/// The library's start-up puts the document makers of its XML and JSON modules into the two
/// creating hooks before a hook is first read or set; the value readers come with path
/// selection. A hook is plain storage, written at start and read without a lock afterwards; an
/// application may set its own function, and an empty function clears a hook.
#pragma once

#include "lorvane/platform/Variants.h"

#include <functional>
#include <string_view>

namespace lorvane {

/// Makes a new document from its text and gives an interface on it (the document lives as long
/// as its interfaces); a text that isn't a document raises the document module's failure.
using TCreateDocumentFunc = std::function<IPtr<IInterface>(const UnicodeString& AText)>;
/// Selects APath in the document behind ADocument and gives its value, or an unassigned Variant
/// when the path finds nothing.
using TGetDocumentValueFunc =
    std::function<Variant(IInterface* ADocument, const UnicodeString& APath)>;

inline constexpr std::u16string_view SNoXMLDocumentSupport =
    u"XML documents are not available: no document module has registered its hooks";
inline constexpr std::u16string_view SNoJSONDocumentSupport =
    u"JSON documents are not available: no document module has registered its hooks";
inline constexpr std::u16string_view SNoDocumentGiven = u"No document given";

/// Each setter gives the hook it replaces, so that a caller can put it back.
TCreateDocumentFunc SetCreateXMLDoc(TCreateDocumentFunc AFunc);
TCreateDocumentFunc SetCreateJSONDoc(TCreateDocumentFunc AFunc);
TGetDocumentValueFunc SetGetXMLDocValue(TGetDocumentValueFunc AFunc);
TGetDocumentValueFunc SetGetJSONDocValue(TGetDocumentValueFunc AFunc);

/// A new document from AText through the registered hook. With no hook registered, raises
/// ENotSupportedException SNoXMLDocumentSupport (SNoJSONDocumentSupport for JSON).
IPtr<IInterface> CreateXMLDocument(const UnicodeString& AText);
IPtr<IInterface> CreateJSONDocument(const UnicodeString& AText);

/// The value at APath in ADocument through the registered hook. With no hook registered, raises
/// as the creators do; a nil ADocument raises EArgumentException SNoDocumentGiven.
Variant GetXMLDocumentValue(IInterface* ADocument, const UnicodeString& APath);
Variant GetJSONDocumentValue(IInterface* ADocument, const UnicodeString& APath);

} // namespace lorvane
