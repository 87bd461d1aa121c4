// The entry points: the serializer class of a type and format, making serializers, writing
// values, and the registrations.
#include "lorvane/serializer/LxSerialization.h"

#include "serializer/RegisteredClasses.h"

#include "lorvane/core/LxStreams.h"
#include "lorvane/serializer/LxJSONSerializer.h"
#include "lorvane/serializer/LxXMLSerializer.h"

namespace lorvane {

namespace {

using registered::FormatName;

TLxSerializerClass SerializerClassFor(TLxSerializeFormat AFormat, const TLxTypeInfo* ATypeInfo) {
  return registered::ClassFor(AFormat, ATypeInfo, /*ASerializer=*/true);
}

TOwned<TLxSerializer> MakeSerializer(TLxSerializerClass AClass) {
  return registered::Make<TLxSerializer>(AClass);
}

} // namespace

TLxSerializerClass LxFindSerializerClass(TLxSerializeFormat AFormat, TLxTypeHandle AHandle) {
  return SerializerClassFor(AFormat, TLxTypes::GetTypeInfo(AHandle));
}

TLxSerializerClass LxFindSerializerClassEx(TLxSerializeFormat AFormat,
                                           const TLxTypeInfo* ATypeInfo) {
  return SerializerClassFor(AFormat, ATypeInfo);
}

TLxSerializer* LxCreateSerializer(TLxSerializeFormat AFormat, const TValue& AValue) {
  TOwned<TLxSerializer> Serializer =
      MakeSerializer(SerializerClassFor(AFormat, AValue.LxTypeInfo()));
  if (!Serializer)
    throw Exception(u"There is no registered serializer for \"%s\"!", {FormatName(AFormat)});
  Serializer->Create(AValue);
  return Serializer.release();
}

TLxSerializer* LxCreateSerializer(TLxSerializeFormat AFormat, void* AInstance,
                                  TLxTypeHandle AHandle) {
  return LxCreateSerializerEx(AFormat, AInstance, TLxTypes::GetTypeInfo(AHandle));
}

TLxSerializer* LxCreateSerializerEx(TLxSerializeFormat AFormat, void* AInstance,
                                    const TLxTypeInfo* ATypeInfo) {
  TOwned<TLxSerializer> Serializer = MakeSerializer(SerializerClassFor(AFormat, ATypeInfo));
  if (!Serializer)
    throw Exception(u"There is no \"%s\" registered serializer for %s!",
                    {FormatName(AFormat), ATypeInfo ? ATypeInfo->GetName() : UnicodeString()});
  Serializer->Create(AInstance, ATypeInfo);
  return Serializer.release();
}

TLxSerializedData LxSerialize(TLxSerializeFormat AFormat, const TValue& AValue) {
  return TOwned<TLxSerializer>(LxCreateSerializer(AFormat, AValue))->Serialize();
}

TLxSerializedData LxSerialize(TLxSerializeFormat AFormat, void* AInstance, TLxTypeHandle AHandle) {
  return LxSerializeEx(AFormat, AInstance, TLxTypes::GetTypeInfo(AHandle));
}

TLxSerializedData LxSerializeEx(TLxSerializeFormat AFormat, void* AInstance,
                                const TLxTypeInfo* ATypeInfo) {
  return TOwned<TLxSerializer>(LxCreateSerializerEx(AFormat, AInstance, ATypeInfo))->Serialize();
}

void LxSerialize(TLxSerializeFormat AFormat, const TValue& AValue, TStream* AStream) {
  TOwned<TLxSerializer>(LxCreateSerializer(AFormat, AValue))->Serialize(AStream);
}

void LxSerialize(TLxSerializeFormat AFormat, void* AInstance, TLxTypeHandle AHandle,
                 TStream* AStream) {
  LxSerializeEx(AFormat, AInstance, TLxTypes::GetTypeInfo(AHandle), AStream);
}

void LxSerializeEx(TLxSerializeFormat AFormat, void* AInstance, const TLxTypeInfo* ATypeInfo,
                   TStream* AStream) {
  TOwned<TLxSerializer>(LxCreateSerializerEx(AFormat, AInstance, ATypeInfo))->Serialize(AStream);
}

void LxRegisterSerializer(TLxSerializeFormat AFormat, TClass AClass,
                          TLxSerializerClass ASerializerClass,
                          TLxDeserializerClass ADeserializerClass) {
  if (!AClass)
    RaiseAssertionFailed(u"The ClassInfo of the class nil is unknown!");
  LxRegisterType(AClass);
  TLxTypes::RegisterTypeSerializers(LxClassTypeHandle(AClass), AFormat,
                                    {ASerializerClass, ADeserializerClass});
}

void LxRegisterSerializer(TLxSerializeFormat AFormat, TLxTypeHandle AHandle,
                          TLxSerializerClass ASerializerClass,
                          TLxDeserializerClass ADeserializerClass) {
  TLxTypes::RegisterTypeSerializers(AHandle, AFormat, {ASerializerClass, ADeserializerClass});
}

void LxRegisterType(TClass AClass) {
  if (AClass && TObject::ClassInheritsFrom(AClass, TPersistent::StaticClass()))
    RegisterClass(AClass);
}

void LxRegisterType(TLxTypeHandle AHandle) {
  if (const TLxTypeInfo* Info = TLxTypes::GetTypeInfo(AHandle))
    LxRegisterType(Info->GetDescription()->MetaclassType());
}

void LxSerializerStartup() {
  TLxTypes::RegisterTypeAlias(TypeHandle<TStringList*>(), u"StringList");
  // Code below the serializers (document text of arrays and objects, a node's own text in
  // other formats) writes values through the entry point.
  SetValueSerializer([](TLxDataSerializationFormatType AFormat, const TValue& AValue) {
    return LxSerialize(AFormat, AValue);
  });
}

TLxSerializedData LxObjectSerialize(TObject* AObject, TLxSerializeFormat AFormat) {
  return LxSerialize(AFormat, AObject
                                  ? TValue::Make(&AObject, LxClassTypeHandle(AObject->ClassType()))
                                  : TValue());
}

TLxSerializedData LxAsXML(TObject* AObject, std::u16string_view ATargetNamespace,
                          bool AExcludeNamespaces) {
  TOwned<TLxSerializer> Serializer(New<TLxXMLSerializer>());
  Serializer->Create(AObject ? TValue::Make(&AObject, LxClassTypeHandle(AObject->ClassType()))
                             : TValue());
  if (AExcludeNamespaces)
    Serializer->SetParam(u"excludenamespaces", u"true");
  else if (!ATargetNamespace.empty())
    Serializer->SetParam(u"xmlns", ATargetNamespace);
  return Serializer->Serialize();
}

TLxSerializedData LxAsJSON(TObject* AObject) {
  // The walk writes nothing for a value without a type; JSON has a word for no object.
  if (!AObject)
    return TLxSerializedData("null");
  TOwned<TLxSerializer> Serializer(New<TLxJSONSerializer>());
  Serializer->Create(TValue::Make(&AObject, LxClassTypeHandle(AObject->ClassType())));
  return Serializer->Serialize();
}

} // namespace lorvane
