// The value serializer that code below the serializers writes through.
#include "lorvane/types/LxSerializable.h"

#include "lorvane/classes/LxLibraryStartup.h"

#include <utility>

namespace lorvane {

namespace {
// Every use goes through here, so that the start-up's registration is in place before the hook
// is first read or replaced, and an application's own function always wins.
TLxValueSerializer& ValueSerializer() {
  EnsureLibraryStarted();
  static TLxValueSerializer Instance;
  return Instance;
}
} // namespace

TLxValueSerializer SetValueSerializer(TLxValueSerializer AFunc) {
  return std::exchange(ValueSerializer(), std::move(AFunc));
}

TLxSerializedData LxSerializeValue(TLxDataSerializationFormatType AFormat, const TValue& AValue) {
  const TLxValueSerializer& Serializer = ValueSerializer();
  if (!Serializer)
    throw ENotSupportedException(UnicodeString(SNoValueSerializer));
  return Serializer(AFormat, AValue);
}

} // namespace lorvane
