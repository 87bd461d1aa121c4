/// The entry points of deserialization: which class reads a type in a format, making a
/// deserializer, reading text into an instance or a value, and making a new object from text.
/// A deserializer made inside is freed inside, also when an exception passes.
///
/// Objects made during a run for members that were nil go to a list: without ACreatedObjects, a
/// list of the run that frees them at its end (members that refer to them are set to nil first,
/// so that nothing points at a freed object); with the address of a nil list, a list that frees
/// nothing (the object graph owns them); with the address of a list, that list. A list that frees
/// nothing, the run's or the caller's, keeps only what the result reaches: the objects the run
/// made that it doesn't reach (after a failure, those made for an array or record not yet
/// stored) leave the list and are freed.
#pragma once

#include "lorvane/serializer/LxDeserializer.h"

namespace lorvane {

TLxDeserializerClass LxFindDeserializerClass(TLxSerializeFormat AFormat, TLxTypeHandle AHandle);
TLxDeserializerClass LxFindDeserializerClassEx(TLxSerializeFormat AFormat,
                                               const TLxTypeInfo* ATypeInfo);
/// None registered raises Exception "There is no registered deserializer for \"%s\"!" with the
/// format's display name.
TLxDeserializer* LxCreateDeserializer(TLxSerializeFormat AFormat, const TValue& AValue);
/// None registered raises Exception "There is no registered %s deserializer for %s!" with the
/// format's display name and the type's name.
TLxDeserializer* LxCreateDeserializer(TLxSerializeFormat AFormat, void* AInstance,
                                      TLxTypeHandle AHandle);
TLxDeserializer* LxCreateDeserializerEx(TLxSerializeFormat AFormat, void* AInstance,
                                        const TLxTypeInfo* ATypeInfo);

/// Reads AData (UTF-8) or AStream into the value: an object is filled in place and given back
/// as the value; a record or array is read into a copy of AValue, which is given back.
TValue LxDeserialize(TLxSerializeFormat AFormat, const TValue& AValue,
                     const TLxSerializedData& AData, TObjectList** ACreatedObjects = nullptr);
TValue LxDeserialize(TLxSerializeFormat AFormat, const TValue& AValue, TStream* AStream,
                     TObjectList** ACreatedObjects = nullptr);
/// Reads into the instance (the object, or the address of the value) of the type; gives the
/// instance.
void* LxDeserialize(TLxSerializeFormat AFormat, void* AInstance, TLxTypeHandle AHandle,
                    const TLxSerializedData& AData);
void* LxDeserialize(TLxSerializeFormat AFormat, void* AInstance, TLxTypeHandle AHandle,
                    TStream* AStream);
void* LxDeserializeEx(TLxSerializeFormat AFormat, void* AInstance, const TLxTypeInfo* ATypeInfo,
                      const TLxSerializedData& AData);
void* LxDeserializeEx(TLxSerializeFormat AFormat, void* AInstance, const TLxTypeInfo* ATypeInfo,
                      TStream* AStream);

/// A new object of the class that the text names, read from the text; the caller owns it. The
/// second and third forms give it AOwner (a component's owner) and AParent (the parent of a
/// control) through the object options "Owner" and "Parent". Objects made for its members go to
/// ACreatedObjects as for LxDeserialize: pass the address of a nil list to let the new object's
/// graph keep them.
TObject* LxCreateFrom(TLxSerializeFormat AFormat, const TLxSerializedData& AData,
                      TObjectList** ACreatedObjects = nullptr);
TObject* LxCreateFrom(TLxSerializeFormat AFormat, TComponent* AOwner,
                      const TLxSerializedData& AData, TObjectList** ACreatedObjects = nullptr);
TObject* LxCreateFrom(TLxSerializeFormat AFormat, TComponent* AOwner, TObject* AParent,
                      const TLxSerializedData& AData, TObjectList** ACreatedObjects = nullptr);

/// AData read into AObject (the object as a value of its class).
void LxObjectDeserialize(TObject* AObject, TLxSerializeFormat AFormat,
                         const TLxSerializedData& AData);

} // namespace lorvane
