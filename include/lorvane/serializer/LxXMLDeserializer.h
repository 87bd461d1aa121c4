/// TLxXMLDeserializer: reads the XML that TLxXMLSerializer writes (and documents like it) into
/// objects, records, arrays and values. It consumes the events of one TLxSAXXMLReader for the
/// whole run: a member of complex type gets a child deserializer that takes the reader's events
/// until the member's end tag, then hands the reader back. "xsi:type" names the class to make for
/// a nil member, "xsi:nil" keeps a member nil, attributes of an element are read as its members,
/// markup inside a simple member arrives as its text, and the text of an element goes to a
/// member with the shoNodeType hint "NodeValue".
#pragma once

#include "lorvane/sax/LxSAXInterfaces.h"
#include "lorvane/serializer/LxDeserializer.h"

#include <vector>

namespace lorvane {

class TLxSAXXMLReader;
class TLxStringStream;

class TLxXMLDeserializer : public TLxDeserializer,
                           public virtual ILxSAXContentHandler,
                           public virtual ILxSAXLexicalHandler,
                           public virtual ILxSAXErrorHandler {
  LX_CLASS(TLxXMLDeserializer, TLxDeserializer)
  TLxXMLDeserializer() = default;

  TLxSerializeFormat Format() const override { return ldsXML; }
  /// Takes the parent's reader and depth; with a reader, becomes its content handler and from
  /// then on belongs to the reader, which frees it when it hands the events back.
  void SetParent(TLxCustomSerializer* AParent) override;
  /// The "type" attribute of the member element; a true "nil" attribute names no class (true,
  /// empty name).
  bool ReadClassName(UnicodeString& AName) override;
  /// The value of the first "xsi:type" in the text, read without a parse.
  void ReadClassName(TLxTextParser* AParser, UnicodeString& AName) override;
  void DoDeserialize() override;
  void CreateChildDeserializerIfNeeded(std::u16string_view AName) override;
  Integer ValueToInt(std::u16string_view AValue) override;
  Int64 ValueToInt64(std::u16string_view AValue) override;
  Double ValueToFloat(std::u16string_view AValue) override;
  UnicodeString ValueToStr(std::u16string_view AValue) override;
  TDateTime ValueToDate(std::u16string_view AValue) override;
  TDateTime ValueToTime(std::u16string_view AValue) override;
  TDateTime ValueToDateTime(std::u16string_view AValue) override;
  bool ValueToBool(std::u16string_view AValue) override;
  Variant ValueToVar(std::u16string_view AValue, std::u16string_view AQualifiedTypeName) override;
  TValue ValueToVal(std::u16string_view AValue, std::u16string_view AQualifiedTypeName) override;

  // Behind those of TLxDeserializer, in slot order.
  virtual void StartElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                            const LxXMLString& AQName, ILxSAXAttributes* AAttribs) override;
  virtual void Characters(const LxXMLString& AText) override;
  virtual void EndElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                          const LxXMLString& AQName) override;

  // Events that mean nothing here.
  void SetDocumentLocator(ILxSAXLocator*) override {}
  void EndDocument() override {}
  void EndPrefixMapping(const LxXMLString&) override {}
  void IgnorableWhitespace(const LxXMLString&) override {}
  void ProcessingInstruction(const LxXMLString&, const LxXMLString&) override {}
  void SkippedEntity(const LxXMLString&) override {}
  void StartDocument() override {}
  void StartPrefixMapping(const LxXMLString&, const LxXMLString&) override {}
  void Comment(const LxXMLString&) override {}
  void StartCDATA() override {}
  void StartDTD() override {}
  void StartEntity(const LxXMLString&) override {}
  void EndCDATA() override {}
  void EndDTD() override {}
  void EndEntity(const LxXMLString&) override {}
  void Warning(ILxSAXLocator*, const LxXMLString&) override {}
  void Error(ILxSAXLocator*, const LxXMLString&) override {}
  /// Raises EParserError "Line %d, column %d: %s" for a failure of the reader. A failure that
  /// left one of this run's own events (an unknown member, a value that doesn't convert) passes
  /// on unchanged.
  void FatalError(ILxSAXLocator* ALocator, const LxXMLString& AErrMsg) override;

  /// The element at depth 1 (the member being read), for helpers.
  const UnicodeString& GetElmLocalName() const noexcept { return FLocalName; }
  const UnicodeString& GetElmURI() const noexcept { return FURI; }
  /// A copy of one attribute of that element.
  struct TAttribute {
    UnicodeString URI;
    UnicodeString LocalName;
    UnicodeString QName;
    UnicodeString Value;
  };
  const std::vector<TAttribute>& GetElmAttributes() const noexcept { return FAttribs; }

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

protected:
  ~TLxXMLDeserializer() override;

  TLxSAXXMLReader* FSAXReader = nullptr;
  UnicodeString FLocalName;
  UnicodeString FURI;
  UnicodeString FDataType;
  TLxCanDeserialize FCanDeserialize = desNo;
  Integer FLevel = -1;
  /// Keeps a counted parent alive while this child runs.
  IPtr<ILxObject> FParentRef;
  std::vector<TAttribute> FAttribs;
  TLxStringStream* FXMLString = nullptr;
  bool FProcessRootChars = false;
  bool FDeserializingAttribs = false;
  bool FOwnsReader = false;
  /// On the deserializer that owns the reader: an exception left one of the run's events.
  bool FEventFailed = false;

private:
  void DoStartElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                      const LxXMLString& AQName, ILxSAXAttributes* AAttribs);
  void DoCharacters(const LxXMLString& AText);
  void DoEndElement(const LxXMLString& AURI, const LxXMLString& ALocalName,
                    const LxXMLString& AQName);
  void NoteEventFailure() noexcept;
  void ReadAttributesAsMembers(TLxXMLDeserializer* ATarget,
                               const std::vector<TAttribute>& AAttribs);
  void OwnText(const LxXMLString& AText);
};

} // namespace lorvane
