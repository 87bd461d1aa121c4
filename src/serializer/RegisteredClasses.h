// What the writing and reading entry points share: the format's display name, and a serializer
// or deserializer of the class registered for a type.
#pragma once

#include "lorvane/classes/LxLibraryStartup.h"
#include "lorvane/serializer/LxSerializerTypes.h"

namespace lorvane::registered {

inline UnicodeString FormatName(TLxSerializeFormat AFormat) {
  return AFormat < LxDataSerializationFormatType.size()
             ? UnicodeString(LxDataSerializationFormatType[AFormat])
             : IntToStr(AFormat);
}

/// The class registered for ATypeInfo in AFormat: its serializer (ASerializer) or deserializer.
inline TClass ClassFor(TLxSerializeFormat AFormat, const TLxTypeInfo* ATypeInfo, bool ASerializer) {
  EnsureLibraryStarted();
  const TLxRegisteredSerializers* Found = TLxTypes::FindSerializers(ATypeInfo, AFormat);
  return !Found ? nullptr : ASerializer ? Found->SerializerClass : Found->DeserializerClass;
}

/// An object of AClass, not yet initialized; nil when AClass is no T or can't be made.
template <class T> TOwned<T> Make(TClass AClass) {
  if (!AClass || !TObject::ClassInheritsFrom(AClass, T::StaticClass()) || !AClass->CreateDefault)
    return nullptr;
  return TOwned<T>(static_cast<T*>(AClass->CreateDefault()));
}

} // namespace lorvane::registered
