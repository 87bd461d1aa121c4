/// TLxXMLSerializer: objects, records, arrays and simple values as XML text, in one line of
/// UTF-8 without declaration:
///
///     <object xmlns:xsi="..." xmlns:xsd="..." xsi:type="xsd:Person" xmlns="urn:app">
///       <Id xsi:type="xsd:int">7</Id> <Boss xsi:type="xsd:Person" xsi:nil="true"/> ...
///     </object>
///
/// (shown with blanks; there are none). The root element is "object", "record" or "array";
/// members are elements named by the member, with "xsi:type" the schema name of their type and
/// "xsi:nil" for nil; enumerations and sets carry their ordinal in "value". The options
/// "excludenamespaces" (no declarations, no types), "xsi-namespace", "xsi-prefix",
/// "xsd-namespace", "xsd-prefix" and "xmlns" (default "urn:" and the running program's file name
/// without directory and extension) steer it.
#pragma once

#include "lorvane/serializer/LxSerializer.h"

namespace lorvane {

/// Not read by the library; kept for applications that look for it.
extern Integer DefDateTimeFormat;

class TLxXMLSerializer : public TLxSerializer {
  LX_CLASS(TLxXMLSerializer, TLxSerializer)
  TLxXMLSerializer() = default;

  TLxSerializeFormat Format() const override { return ldsXML; }
  /// At the root, completes the options (defaults, or none with "excludenamespaces"); then
  /// reads them.
  void SetParent(TLxCustomSerializer* AParent) override;

  /// Complex kinds only: a simple value below the root raises EAssertionFailed "Basic types
  /// are only allowed on the Root level (For serialing basic values)".
  void SerializeStartType(std::u16string_view AMemberName, const TLxTypeInfo* ATypeInfo,
                          Integer AIdx) override;
  void SerializeEndType(std::u16string_view AMemberName, const TLxTypeInfo* ATypeInfo,
                        Integer AIdx) override;
  void SerializeValue(std::u16string_view AMemberName, const TLxTypeInfo* AMemberTypeInfo,
                      const TValue& AValue, Integer AIdx,
                      const std::vector<TCustomAttribute*>* AAttribs) override;

  // Behind those of TLxSerializer, in slot order.
  /// "record", "object", or "array".
  virtual UnicodeString GetRootElementName(TLxTypeKind ATypeKind);
  /// False leaves the root's and the members' elements without type attributes.
  virtual bool WriteRootAttributes(std::u16string_view AName);
  virtual bool WriteValueAttributes(std::u16string_view AName, Integer AIdx);

protected:
  ~TLxXMLSerializer() override = default;

  bool FExcludeNamespaces = false;
  UnicodeString FDefaultNamespace;
  UnicodeString FXSINamespace;
  UnicodeString FXSIPrefix;
  UnicodeString FXSDNamespace;
  UnicodeString FXSDPrefix;
  /// ParamChangesAlongParents when the options above were read.
  UInt64 FOptionsReadAt = ~UInt64(0);

private:
  UnicodeString ValueText(const TLxTypeInfo* ADeclared, const TLxTypeInfo* AType,
                          const TValue& AValue, const std::vector<TCustomAttribute*>* AAttribs,
                          std::u16string_view AMemberName);
};

/// The XML format's start-up registration: TLxXMLSerializer and TLxXMLDeserializer as the
/// default serializer and deserializer of XML.
/// Called once by the library's start-up.
void LxXMLSerializerStartup();

} // namespace lorvane
