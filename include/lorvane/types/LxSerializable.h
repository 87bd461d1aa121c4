/// How a thing offers its own serialized text, beside the walk of its type description:
///   TLxSerializedData    UTF-8 text without a byte order mark, as bytes
///   ILxSerializable      CanSerialize(AFormat), Serialize(AFormat, AParams)
///   ILxDeserializable    CanDeserialize(AFormat), Deserialize(AFormat, AData, AParams)
/// They live below the serializers, so that the document tree can offer them.
#pragma once

#include "lorvane/platform/Classes.h"
#include "lorvane/types/LxTypeKinds.h"

namespace lorvane {

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

} // namespace lorvane
