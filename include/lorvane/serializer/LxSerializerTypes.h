/// The vocabulary of serialization shared by the drivers, the format classes and applications:
///   ELxSerializeException, TLxSerializeFormat, TLxCanDeserialize, TLxSerializerMemberType
///   ILxCustomSerializer, ILxSerializer        what a serializer offers as interfaces
///   ILxSerializerHelper, ILxDeserializerHelper how an application object steers its own walk
///   GetSerializerHint, SerializerHelperClass, DeserializerHelperClass   reading annotations
#pragma once

#include "lorvane/core/LxObject.h"
#include "lorvane/platform/Streams.h"
#include "lorvane/types/LxSerializable.h"
#include "lorvane/types/LxTypes.h"

namespace lorvane {

LX_EXCEPTION_CLASS(ELxSerializeException, Exception);

/// The same numbering as TLxDataSerializationFormatType: 0 JSON, 1 XML.
using TLxSerializeFormat = TLxDataSerializationFormatType;

/// The answer to a name while reading: a member (desYes), unknown (desNo), known but dropped
/// (desIgnore).
enum TLxCanDeserialize : Byte { desYes = 0, desNo = 1, desIgnore = 2 };

enum TLxSerializerMemberType : Byte { smtProperty = 0, smtField = 1 };

class TLxSerializer;
class TLxDeserializer;
/// Class references: a serializer class derives from TLxSerializer, a deserializer class from
/// TLxDeserializer, helper classes from TLxSerializerHelper and TLxDeserializerHelper.
using TLxSerializerClass = TClass;
using TLxDeserializerClass = TClass;
using TLxSerializerHelperClass = TClass;
using TLxDeserializerHelperClass = TClass;

class ILxCustomSerializer : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x51C0E6A2, 0x1F3B, 0x4B8E, {0x96, 0x0D, 0x2A, 0x7B, 0xC4, 0x19, 0x5E, 0x83}};
  virtual void* GetInstancePtr() = 0;
  virtual TObject* GetObjParam(std::u16string_view AName) = 0;
  virtual UnicodeString GetParam(std::u16string_view AName) = 0;
  virtual void SetParam(std::u16string_view AName, std::u16string_view AValue) = 0;
  virtual void SetObjParam(std::u16string_view AName, TObject* AObject) = 0;

protected:
  ~ILxCustomSerializer() = default;
};

class ILxSerializer : public virtual ILxCustomSerializer {
public:
  static constexpr TGUID IID{
      0x0A93D7F4, 0x6E21, 0x4C5A, {0xB7, 0x3E, 0x81, 0x0C, 0x5D, 0xF2, 0x44, 0x9A}};
  /// The text as UTF-8 bytes.
  virtual TLxSerializedData Serialize() = 0;
  /// Writes into AStream at its position.
  virtual void Serialize(TStream* AStream) = 0;

protected:
  ~ILxSerializer() = default;
};

/// Offered by an application object that steers the walk through itself.
class ILxSerializerHelper : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0xC4E2B158, 0x7A06, 0x4D93, {0x8F, 0x11, 0x6B, 0xA0, 0x3E, 0xD7, 0x29, 0x5C}};
  /// False keeps the member AName (the object AObject of declared class AClass) out.
  virtual bool CanSerializeChild(TLxSerializer* ASerializer, TObject* AObject, TClass AClass,
                                 std::u16string_view AName) = 0;
  /// Setting Handled replaces the walk of the object.
  virtual void BeforeSerialize(TLxSerializer* ASerializer, bool& Handled) = 0;
  virtual void AfterSerialize(TLxSerializer* ASerializer) = 0;

protected:
  ~ILxSerializerHelper() = default;
};

class ILxDeserializerHelper : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x7F5D19C3, 0xB84E, 0x4E27, {0xA1, 0x6C, 0xD0, 0x52, 0x8B, 0x3F, 0x94, 0x61}};
  virtual void BeforeDeserialize(TLxDeserializer* ADeserializer) = 0;
  virtual void AfterDeserialize(TLxDeserializer* ADeserializer) = 0;
  virtual TLxCanDeserialize CanDeserialize(TLxDeserializer* ADeserializer,
                                           std::u16string_view ANamespace,
                                           std::u16string_view AName,
                                           std::u16string_view AQualifiedTypeName) = 0;
  virtual void DeserializeValue(TLxDeserializer* ADeserializer, std::u16string_view ANamespace,
                                std::u16string_view AName, std::u16string_view AValue,
                                std::u16string_view AQualifiedTypeName, bool& Handled) = 0;

protected:
  ~ILxDeserializerHelper() = default;
};

/// The first hint of AAttribs with AOption: true with it in AHint, or false with AHint nil.
bool GetSerializerHint(const std::vector<TCustomAttribute*>& AAttribs,
                       TSerializerHintOption AOption, const SerializerHint*& AHint) noexcept;
/// The same over the annotations of a member or a type; a nil one has none.
bool GetSerializerHint(const TLxMemberDescription* AMember, TSerializerHintOption AOption,
                       const SerializerHint*& AHint) noexcept;
bool GetSerializerHint(const TLxTypeDescription* AType, TSerializerHintOption AOption,
                       const SerializerHint*& AHint) noexcept;

/// The helper class an shoSerializerHelper hint names by its qualified name. Another hint
/// raises EAssertionFailed "Assertion failed"; an unknown name raises EAssertionFailed "Check if
/// you registered the helperclass and/or used the QualifiedName in the hint?"; a class that
/// doesn't descend from TLxSerializerHelper raises Exception "The specified helperclass is not a
/// descendant of TLxSerializerHelper!".
TLxSerializerHelperClass SerializerHelperClass(const SerializerHint& AHint);
/// Its twin for shoDeserializerHelper and TLxDeserializerHelper.
TLxDeserializerHelperClass DeserializerHelperClass(const SerializerHint& AHint);

} // namespace lorvane
