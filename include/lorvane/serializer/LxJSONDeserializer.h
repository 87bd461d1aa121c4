/// TLxJSONDeserializer: reads the JSON that TLxJSONSerializer writes (and documents like it), or
/// a form post with the option "UrlEncoded", into objects, records, arrays and values. It
/// consumes the events of one TLxJSONReader for the whole run: a member of complex type gets a
/// child deserializer that takes the reader's events until the member's object or array ends,
/// then hands the reader back. A first member "className" names the class to make for a nil
/// member; enumerations and sets are read in their object form {"className", "asString",
/// "asInt"} (the number wins) as well as from a plain string or number.
///
/// Failures: the reader's (ELxJSONParseError, ELxTextParserEOF, and the form reader's own) pass
/// unchanged, as do those of the conversions and of the driver (an unknown member raises
/// ELxSerializeException "Failed to find a property or field with the name %s.%s!"). The reader
/// is freed in every case.
#pragma once

#include "lorvane/json/LxJSONEventInterfaces.h"
#include "lorvane/serializer/LxDeserializer.h"

namespace lorvane {

class TLxJSONReader;

class TLxJSONDeserializer : public TLxDeserializer,
                            public virtual ILxJSONContentHandler,
                            public virtual ILxJSONErrorHandler {
  LX_CLASS(TLxJSONDeserializer, TLxDeserializer)
  TLxJSONDeserializer() = default;

  TLxSerializeFormat Format() const override { return ldsJSON; }
  /// Takes the parent's reader; with a reader, becomes its content handler and from then on
  /// belongs to the reader, which frees it when it hands the events back.
  void SetParent(TLxCustomSerializer* AParent) override;
  /// Always true: the first member of the object ahead names the class, and an object whose
  /// first member is not "className" names none (an empty name), so that no instance is made.
  bool ReadClassName(UnicodeString& AName) override;
  /// The value of "className" when it is the first member of the object at the parser's cursor
  /// (for a form post: the first key part "[className]" or "%5BclassName%5D").
  void ReadClassName(TLxTextParser* AParser, UnicodeString& AName) override;
  void DoDeserialize() override;
  Integer ValueToInt(std::u16string_view AValue) override;
  Int64 ValueToInt64(std::u16string_view AValue) override;
  Double ValueToFloat(std::u16string_view AValue) override;
  UnicodeString ValueToStr(std::u16string_view AValue) override;
  TDateTime ValueToDate(std::u16string_view AValue) override;
  TDateTime ValueToTime(std::u16string_view AValue) override;
  TDateTime ValueToDateTime(std::u16string_view AValue) override;
  bool ValueToBool(std::u16string_view AValue) override;
  Variant ValueToVar(std::u16string_view AValue, std::u16string_view AQualifiedTypeName) override;
  /// Raises Exception "Failed to convert \"%s\" into a TValue!\r\nThe type %s is not supported."
  /// for a type that is no number, character, text or Variant.
  TValue ValueToVal(std::u16string_view AValue, std::u16string_view AQualifiedTypeName) override;

  // Behind those of TLxDeserializer, in slot order.
  void StartObject() override;
  void StartMember(const LxJSONString& AName) override;
  void StartArray() override;
  void Value(TLxJSONDataType AType, const LxJSONString& AValue) override;
  void EndArray() override;
  void EndMember() override {}
  void EndObject() override;
  /// A form reader with the option "UrlEncoded" "True" or "1" (any case), else a JSON reader.
  virtual TLxJSONReader* CreateJSONReader();

  // Events that mean nothing here.
  void SetDocumentLocator(ILxJSONLocator*) override {}
  void StartDocument() override {}
  void EndDocument() override {}
  void Warning(ILxJSONLocator*, const LxJSONString&) override {}
  void Error(ILxJSONLocator*, const LxJSONString&) override {}
  /// The reader raises the failure itself after this.
  void FatalError(ILxJSONLocator*, const LxJSONString&) override {}

  TLxJSONReader* GetJSONReader() const noexcept { return FJSONReader; }
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

protected:
  ~TLxJSONDeserializer() override;

  /// Hands the reader back to the parent: the reader then drops its reference to this
  /// deserializer, which nothing touches afterwards in the event that called this.
  void HandBack();
  bool IsUrlEncoded() const;

  /// Keeps a counted parent alive while this child runs.
  IPtr<ILxObject> FParentRef;
  TLxJSONReader* FJSONReader = nullptr;
  TLxCanDeserialize FCanDeserialize = desNo;
  UnicodeString FMemberName;
  UnicodeString FDataType;
  UnicodeString FNamespace;
  /// While above 0 the events are dropped: an object that no instance takes, counted by depth
  /// in objects and arrays.
  Integer FDisabledCnt = 0;
  bool FOwnsReader = false;
  /// While an array element's object is started: the reader stands behind its "{".
  bool FAtElementObject = false;

private:
  void DoValue(TLxJSONDataType AType, const LxJSONString& AValue);
};

/// Reads the object form of an enumeration or a set into the member at hand of its parent.
class TLxJSONEnumDeserializer : public TLxJSONDeserializer {
  LX_CLASS(TLxJSONEnumDeserializer, TLxJSONDeserializer)
  TLxJSONEnumDeserializer() = default;

  void DeserializeStartType() override;
  void StartObject() override {}
  /// Raises Exception "\"The JSON Enum Deserializer expected \"asString\" or \"asInt\", but the
  /// member \"%s\" was deserialized instead!" for a name other than "className", "asString"
  /// and "asInt" (any case).
  void StartMember(const LxJSONString& AName) override;
  void Value(TLxJSONDataType AType, const LxJSONString& AValue) override;
  void EndObject() override;

protected:
  ~TLxJSONEnumDeserializer() override = default;
};

/// Registers TLxJSONDeserializer as the default deserializer of format 0 (JSON), keeping the
/// serializer class registered there.
void LxJSONDeserializerStartup();

} // namespace lorvane
