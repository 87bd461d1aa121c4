// The entry points of deserialization.
#include "lorvane/serializer/LxDeserialization.h"

#include "serializer/RegisteredClasses.h"

#include "lorvane/core/LxStreams.h"

namespace lorvane {

namespace {

using registered::FormatName;

TLxDeserializerClass DeserializerClassFor(TLxSerializeFormat AFormat,
                                          const TLxTypeInfo* ATypeInfo) {
  return registered::ClassFor(AFormat, ATypeInfo, /*ASerializer=*/false);
}

TOwned<TLxDeserializer> MakeDeserializer(TLxDeserializerClass AClass) {
  return registered::Make<TLxDeserializer>(AClass);
}

TOwned<TLxStringStream> StreamOf(const TLxSerializedData& AData) {
  return TOwned<TLxStringStream>(New<TLxStringStream>(std::string_view(AData), Word(65001)));
}

/// Runs a deserializer made for a new object and gives the object, or frees it when the run
/// fails.
TObject* RunForNewObject(TLxDeserializer* ADeserializer, const TLxSerializedData& AData,
                         TObjectList** ACreatedObjects) {
  TOwned<TLxDeserializer> Held(ADeserializer);
  if (ACreatedObjects)
    Held->SetCreatedObjects(*ACreatedObjects);
  try {
    Held->Deserialize(AData);
  } catch (...) {
    auto* Made = static_cast<TObject*>(Held->GetInstance());
    // A graph that was to keep what the run made never reaches the caller: the run's own list
    // frees those objects, after clearing the new object's references to them; then the new
    // object goes.
    if (ACreatedObjects && !*ACreatedObjects)
      if (TObjectList* List = Held->GetCreatedObjects())
        List->SetOwnsObjects(true);
    Held.reset();
    lorvane::Free(Made);
    throw;
  }
  return static_cast<TObject*>(Held->GetInstance());
}

} // namespace

TLxDeserializerClass LxFindDeserializerClass(TLxSerializeFormat AFormat, TLxTypeHandle AHandle) {
  return DeserializerClassFor(AFormat, TLxTypes::GetTypeInfo(AHandle));
}

TLxDeserializerClass LxFindDeserializerClassEx(TLxSerializeFormat AFormat,
                                               const TLxTypeInfo* ATypeInfo) {
  return DeserializerClassFor(AFormat, ATypeInfo);
}

TLxDeserializer* LxCreateDeserializer(TLxSerializeFormat AFormat, const TValue& AValue) {
  TOwned<TLxDeserializer> Deserializer =
      MakeDeserializer(DeserializerClassFor(AFormat, AValue.LxTypeInfo()));
  if (!Deserializer)
    throw Exception(u"There is no registered deserializer for \"%s\"!", {FormatName(AFormat)});
  Deserializer->Create(AValue);
  return Deserializer.release();
}

TLxDeserializer* LxCreateDeserializer(TLxSerializeFormat AFormat, void* AInstance,
                                      TLxTypeHandle AHandle) {
  return LxCreateDeserializerEx(AFormat, AInstance, TLxTypes::GetTypeInfo(AHandle));
}

TLxDeserializer* LxCreateDeserializerEx(TLxSerializeFormat AFormat, void* AInstance,
                                        const TLxTypeInfo* ATypeInfo) {
  TOwned<TLxDeserializer> Deserializer = MakeDeserializer(DeserializerClassFor(AFormat, ATypeInfo));
  if (!Deserializer)
    throw Exception(u"There is no registered %s deserializer for %s!",
                    {FormatName(AFormat), ATypeInfo ? ATypeInfo->GetName() : UnicodeString()});
  Deserializer->Create(AInstance, ATypeInfo);
  return Deserializer.release();
}

TValue LxDeserialize(TLxSerializeFormat AFormat, const TValue& AValue, TStream* AStream,
                     TObjectList** ACreatedObjects) {
  TOwned<TLxDeserializer> Deserializer(LxCreateDeserializer(AFormat, AValue));
  if (ACreatedObjects)
    Deserializer->SetCreatedObjects(*ACreatedObjects);
  Deserializer->Deserialize(AStream);
  if (AValue.GetTypeKind() == tkClass || AValue.GetIsEmpty()) {
    TObject* Instance = static_cast<TObject*>(Deserializer->GetInstance());
    return Instance ? TValue::Make(&Instance, LxClassTypeHandle(Instance->ClassType())) : TValue();
  }
  // An array was read into the member value, a record into the deserializer's copy of AValue.
  if (LxIsArrayKind(AValue.TypeKind()))
    return Deserializer->GetMemberValue();
  return Deserializer->GetValue();
}

TValue LxDeserialize(TLxSerializeFormat AFormat, const TValue& AValue,
                     const TLxSerializedData& AData, TObjectList** ACreatedObjects) {
  return LxDeserialize(AFormat, AValue, StreamOf(AData).get(), ACreatedObjects);
}

void* LxDeserialize(TLxSerializeFormat AFormat, void* AInstance, TLxTypeHandle AHandle,
                    const TLxSerializedData& AData) {
  return LxDeserializeEx(AFormat, AInstance, TLxTypes::GetTypeInfo(AHandle), AData);
}

void* LxDeserialize(TLxSerializeFormat AFormat, void* AInstance, TLxTypeHandle AHandle,
                    TStream* AStream) {
  return LxDeserializeEx(AFormat, AInstance, TLxTypes::GetTypeInfo(AHandle), AStream);
}

void* LxDeserializeEx(TLxSerializeFormat AFormat, void* AInstance, const TLxTypeInfo* ATypeInfo,
                      const TLxSerializedData& AData) {
  return LxDeserializeEx(AFormat, AInstance, ATypeInfo, StreamOf(AData).get());
}

void* LxDeserializeEx(TLxSerializeFormat AFormat, void* AInstance, const TLxTypeInfo* ATypeInfo,
                      TStream* AStream) {
  TOwned<TLxDeserializer> Deserializer(LxCreateDeserializerEx(AFormat, AInstance, ATypeInfo));
  Deserializer->Deserialize(AStream);
  return Deserializer->GetInstance();
}

TObject* LxCreateFrom(TLxSerializeFormat AFormat, const TLxSerializedData& AData,
                      TObjectList** ACreatedObjects) {
  return RunForNewObject(LxCreateDeserializer(AFormat, TValue()), AData, ACreatedObjects);
}

TObject* LxCreateFrom(TLxSerializeFormat AFormat, TComponent* AOwner,
                      const TLxSerializedData& AData, TObjectList** ACreatedObjects) {
  TOwned<TLxDeserializer> Deserializer(LxCreateDeserializerEx(AFormat, nullptr, nullptr));
  Deserializer->SetObjParam(u"Owner", AOwner);
  return RunForNewObject(Deserializer.release(), AData, ACreatedObjects);
}

TObject* LxCreateFrom(TLxSerializeFormat AFormat, TComponent* AOwner, TObject* AParent,
                      const TLxSerializedData& AData, TObjectList** ACreatedObjects) {
  TOwned<TLxDeserializer> Deserializer(LxCreateDeserializerEx(AFormat, nullptr, nullptr));
  Deserializer->SetObjParam(u"Owner", AOwner);
  Deserializer->SetObjParam(u"Parent", AParent);
  return RunForNewObject(Deserializer.release(), AData, ACreatedObjects);
}

void LxObjectDeserialize(TObject* AObject, TLxSerializeFormat AFormat,
                         const TLxSerializedData& AData) {
  LxDeserialize(
      AFormat, AObject ? TValue::Make(&AObject, LxClassTypeHandle(AObject->ClassType())) : TValue(),
      AData);
}

} // namespace lorvane
