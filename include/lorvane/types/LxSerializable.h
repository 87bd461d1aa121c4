/// How a thing offers its own serialized text, beside the walk of its type description:
///   TLxSerializedData    UTF-8 text without a byte order mark, as bytes
///   ILxSerializable      CanSerialize(AFormat), Serialize(AFormat, AParams)
///   ILxDeserializable    CanDeserialize(AFormat), Deserialize(AFormat, AData, AParams)
///   SetValueSerializer, LxSerializeValue   a value in any format, through the serializers,
///                        for code below them (document text of arrays, records and objects)
/// They live below the serializers, so that the document tree can offer them.
#pragma once

#include "lorvane/platform/Classes.h"
#include "lorvane/types/LxTypeKinds.h"

#include <functional>
#include <string_view>

namespace lorvane {

class TValue;

using TLxSerializedData = RawByteString;

class ILxSerializable : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x3B1F6C2D, 0x5E84, 0x4A97, {0x9C, 0x21, 0x7D, 0x4E, 0x0A, 0xB3, 0x66, 0x18}};
  virtual bool CanSerialize(TLxDataSerializationFormatType AFormat) = 0;
  /// AParams are the options of the serializer that asks (name=value lines); may be nil.
  virtual TLxSerializedData Serialize(TLxDataSerializationFormatType AFormat,
                                      TStrings* AParams) = 0;

protected:
  ~ILxSerializable() = default;
};

class ILxDeserializable : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x8E07A4B9, 0x2C3D, 0x4F61, {0xA4, 0x0B, 0x52, 0x9F, 0xE1, 0x3C, 0x07, 0xD5}};
  virtual bool CanDeserialize(TLxDataSerializationFormatType AFormat) = 0;
  virtual void Deserialize(TLxDataSerializationFormatType AFormat, const TLxSerializedData& AData,
                           TStrings* AParams) = 0;

protected:
  ~ILxDeserializable() = default;
};

/// Writes a value in a format: UTF-8 text without a byte order mark.
using TLxValueSerializer =
    std::function<TLxSerializedData(TLxDataSerializationFormatType AFormat, const TValue& AValue)>;

inline constexpr std::u16string_view SNoValueSerializer =
    u"Values can't be serialized: no serializer module has registered its value serializer";

/// Sets the function by which LxSerializeValue writes, and gives the one it replaces, so that a
/// caller can put it back; an empty function clears it. The serializers' start-up sets it. Plain
/// storage: set at start-up, read without a lock afterwards.
TLxValueSerializer SetValueSerializer(TLxValueSerializer AFunc);
/// AValue in AFormat through that function; unset, raises ENotSupportedException
/// SNoValueSerializer.
TLxSerializedData LxSerializeValue(TLxDataSerializationFormatType AFormat, const TValue& AValue);

} // namespace lorvane
