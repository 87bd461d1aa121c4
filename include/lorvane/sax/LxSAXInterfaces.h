/// The event interfaces of the readers: the locator, the attribute list of one element, the
/// lexical, content and error handlers, and the reader interface itself.
///
/// Interface arguments of the handler methods (a locator, an attribute list) are borrowed for the
/// call: a handler that keeps one takes its own reference, and an attribute list is valid only
/// during its StartElement call.
#pragma once

#include "lorvane/platform/Streams.h"
#include "lorvane/platform/Variants.h"

namespace lorvane {

/// XML text as the readers deliver it and the tree stores it: raw, references unresolved.
using LxXMLString = UnicodeString;

/// The names of the XML attribute types; the readers only ever give CDATA.
enum class TLxSAXAttributeType : Byte {
  CDATA,
  ID,
  IDREF,
  IDREFS,
  NMTOKEN,
  NMTOKENS,
  ENTITY,
  ENTITIES,
  NOTATION
};

struct TLxSAXXMAttribute;
using PLxSAXXMAttribute = TLxSAXXMAttribute*;

/// One attribute, a node of a doubly linked list.
struct TLxSAXXMAttribute {
  PLxSAXXMAttribute Prev = nullptr;
  Integer Idx = 0;
  LxXMLString LocalName;
  LxXMLString QName;
  LxXMLString URI;
  TLxSAXAttributeType AttrType = TLxSAXAttributeType::CDATA;
  /// Raw, entity references unresolved.
  LxXMLString Value;
  PLxSAXXMAttribute Next = nullptr;
};

class ILxSAXLocator : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x3F1D7C20, 0x5B8E, 0x4A61, {0x9C, 0x02, 0x7D, 0x4E, 0x11, 0xA3, 0x58, 0xB6}};
  virtual Integer GetPosition() = 0;
  virtual Integer GetLineNr() = 0;
  virtual Integer GetColNr() = 0;
  virtual LxXMLString GetPublicID() = 0;

protected:
  ~ILxSAXLocator() = default;
};

/// Names compare without regard to the case of ASCII letters. Lookups by index raise
/// ELxXMLParseError code 4 for an index that doesn't exist; GetType and GetValue by name raise it
/// when nothing matches, GetIndex gives -1.
class ILxSAXAttributes : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x8A40E6D1, 0x2C57, 0x4F3B, {0xB1, 0x6E, 0x05, 0x9A, 0xD2, 0x47, 0xC8, 0x3E}};
  virtual Integer Count() = 0;
  /// The head, for walking by Next; nil when the list is empty.
  virtual PLxSAXXMAttribute FirstAttribute() = 0;
  virtual PLxSAXXMAttribute GetAttribute(Integer AIdx) = 0;
  virtual LxXMLString GetLocalName(Integer AIdx) = 0;
  virtual LxXMLString GetQName(Integer AIdx) = 0;
  virtual LxXMLString GetURI(Integer AIdx) = 0;
  virtual Integer GetIndex(const LxXMLString& AQName) = 0;
  virtual Integer GetIndex(const LxXMLString& AURI, const LxXMLString& ALocalName) = 0;
  virtual TLxSAXAttributeType GetType(Integer AIdx) = 0;
  virtual TLxSAXAttributeType GetType(const LxXMLString& AQName) = 0;
  virtual TLxSAXAttributeType GetType(const LxXMLString& AURI, const LxXMLString& ALocalName) = 0;
  virtual LxXMLString GetValue(Integer AIdx) = 0;
  virtual LxXMLString GetValue(const LxXMLString& AQName) = 0;
  /// AURI "*" matches any URI.
  virtual LxXMLString GetValue(const LxXMLString& AURI, const LxXMLString& ALocalName) = 0;

protected:
  ~ILxSAXAttributes() = default;
};

class ILxSAXLexicalHandler : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x51C9A2E7, 0x7D03, 0x4B8A, {0x86, 0x1F, 0xE2, 0x3B, 0x90, 0x6C, 0x14, 0xD5}};
  virtual void Comment(const LxXMLString& AComment) = 0;
  virtual void StartCDATA() = 0;
  virtual void StartDTD() = 0;
  virtual void StartEntity(const LxXMLString& AName) = 0;
  virtual void EndCDATA() = 0;
  virtual void EndDTD() = 0;
  virtual void EndEntity(const LxXMLString& AName) = 0;

protected:
  ~ILxSAXLexicalHandler() = default;
};

class ILxSAXContentHandler : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0xC27B5E94, 0x0A6F, 0x4D12, {0xA8, 0x3C, 0x6B, 0xF1, 0x25, 0x7E, 0x9D, 0x40}};
  virtual void SetDocumentLocator(ILxSAXLocator* ALocator) = 0;
  virtual void Characters(const LxXMLString& AText) = 0;
  virtual void EndDocument() = 0;
  virtual void EndElement(const LxXMLString& ANamespaceURI, const LxXMLString& ALocalName,
                          const LxXMLString& AQName) = 0;
  virtual void EndPrefixMapping(const LxXMLString& APrefix) = 0;
  virtual void IgnorableWhitespace(const LxXMLString& AWhiteSpace) = 0;
  virtual void ProcessingInstruction(const LxXMLString& ATarget, const LxXMLString& AData) = 0;
  virtual void SkippedEntity(const LxXMLString& AName) = 0;
  virtual void StartDocument() = 0;
  virtual void StartElement(const LxXMLString& ANamespaceURI, const LxXMLString& ALocalName,
                            const LxXMLString& AQName, ILxSAXAttributes* AAttributes) = 0;
  virtual void StartPrefixMapping(const LxXMLString& APrefix, const LxXMLString& AURI) = 0;

protected:
  ~ILxSAXContentHandler() = default;
};

class ILxSAXErrorHandler : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x9E6F0B38, 0xE4A1, 0x47C5, {0x8D, 0x77, 0x3A, 0x0C, 0xB5, 0x62, 0xF9, 0x1B}};
  virtual void Warning(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) = 0;
  virtual void Error(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) = 0;
  virtual void FatalError(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) = 0;

protected:
  ~ILxSAXErrorHandler() = default;
};

/// A reader: handlers, features and properties (none are known), and the five parse forms.
class ILxSAXXMLReader : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x0B7D3C65, 0x96E2, 0x4F0A, {0xBE, 0x48, 0x1C, 0x73, 0xA0, 0xD9, 0x25, 0x6F}};
  virtual IPtr<ILxSAXLexicalHandler> GetLexicalHandler() = 0;
  virtual IPtr<ILxSAXContentHandler> GetContentHandler() = 0;
  virtual IPtr<ILxSAXErrorHandler> GetErrorHandler() = 0;
  virtual bool GetFeature(const LxXMLString& AFeature) = 0;
  virtual Variant GetProperty(const LxXMLString& APropName) = 0;
  virtual void SetLexicalHandler(ILxSAXLexicalHandler* AHandler) = 0;
  virtual void SetContentHandler(ILxSAXContentHandler* AHandler) = 0;
  virtual void SetErrorHandler(ILxSAXErrorHandler* AHandler) = 0;
  virtual void SetFeature(const LxXMLString& AFeature, bool AValue) = 0;
  virtual void SetProperty(const LxXMLString& APropName, const Variant& AProperty) = 0;
  /// From the stream's position; no byte order mark is read.
  virtual void ParseStream(TStream* AStream, Word AStreamCodePage,
                           const LxXMLString& APublicID) = 0;
  /// A byte order mark is read; without one the text decides (code page 0).
  virtual void ParseFile(const TFileName& AFileName, Word AMode, const LxXMLString& APublicID) = 0;
  virtual void ParseBuffer(const void* ABuffer, Cardinal ABufSize, Word ABufCodePage,
                           const LxXMLString& APublicID) = 0;
  /// The string's characters, code page 1200.
  virtual void Parse(const LxXMLString& AXML, const LxXMLString& APublicID) = 0;
  virtual void Parse(const RawByteString& AXML, Word ACodePage, const LxXMLString& APublicID) = 0;

protected:
  ~ILxSAXXMLReader() = default;
};

} // namespace lorvane
