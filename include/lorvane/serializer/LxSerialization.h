/// The entry points of serialization: which class serializes a type in a format, making a
/// serializer, writing a value, and the registrations. All take the format first; a serializer
/// made inside is freed inside, also when an exception passes.
///   LxFindSerializerClass(Ex), LxCreateSerializer(Ex), LxSerialize(Ex)
///   LxRegisterSerializer, LxRegisterType
///   LxObjectSerialize, LxAsXML, LxAsJSON   an object written through the entry points
#pragma once

#include "lorvane/serializer/LxSerializer.h"

namespace lorvane {

/// Nil when the format has no serializer for the type (a nil handle: the format's default).
TLxSerializerClass LxFindSerializerClass(TLxSerializeFormat AFormat, TLxTypeHandle AHandle);
TLxSerializerClass LxFindSerializerClassEx(TLxSerializeFormat AFormat,
                                           const TLxTypeInfo* ATypeInfo);
/// A new serializer of the class registered for the value's type, which the caller frees; none
/// registered raises Exception "There is no registered serializer for \"%s\"!" with the
/// format's display name.
TLxSerializer* LxCreateSerializer(TLxSerializeFormat AFormat, const TValue& AValue);
/// The same from an instance (the object, or the address of the value) and its type; none
/// registered raises Exception "There is no \"%s\" registered serializer for %s!" with the
/// format's display name and the type's name.
TLxSerializer* LxCreateSerializer(TLxSerializeFormat AFormat, void* AInstance,
                                  TLxTypeHandle AHandle);
TLxSerializer* LxCreateSerializerEx(TLxSerializeFormat AFormat, void* AInstance,
                                    const TLxTypeInfo* ATypeInfo);

/// The text of the value as UTF-8 bytes.
TLxSerializedData LxSerialize(TLxSerializeFormat AFormat, const TValue& AValue);
TLxSerializedData LxSerialize(TLxSerializeFormat AFormat, void* AInstance, TLxTypeHandle AHandle);
TLxSerializedData LxSerializeEx(TLxSerializeFormat AFormat, void* AInstance,
                                const TLxTypeInfo* ATypeInfo);
/// The text written into AStream at its position; what was written stays there when the run
/// fails.
void LxSerialize(TLxSerializeFormat AFormat, const TValue& AValue, TStream* AStream);
void LxSerialize(TLxSerializeFormat AFormat, void* AInstance, TLxTypeHandle AHandle,
                 TStream* AStream);
void LxSerializeEx(TLxSerializeFormat AFormat, void* AInstance, const TLxTypeInfo* ATypeInfo,
                   TStream* AStream);

/// Registers the serializer and deserializer classes of AClass in AFormat (either may be
/// nil); a TPersistent descendant also enters the class registry. A nil class raises
/// EAssertionFailed "The ClassInfo of the class nil is unknown!".
void LxRegisterSerializer(TLxSerializeFormat AFormat, TClass AClass,
                          TLxSerializerClass ASerializerClass,
                          TLxDeserializerClass ADeserializerClass);
/// The same for a type; a nil handle registers the format's default.
void LxRegisterSerializer(TLxSerializeFormat AFormat, TLxTypeHandle AHandle,
                          TLxSerializerClass ASerializerClass,
                          TLxDeserializerClass ADeserializerClass);
/// Enters a TPersistent descendant in the class registry (so that documents can name it);
/// nothing for other classes and types.
void LxRegisterType(TClass AClass);
void LxRegisterType(TLxTypeHandle AHandle);

/// AObject's text in AFormat (the object as a TValue of its class).
TLxSerializedData LxObjectSerialize(TObject* AObject, TLxSerializeFormat AFormat);
/// AObject as XML: with AExcludeNamespaces no namespaces and no types, otherwise
/// ATargetNamespace (when not empty) as the default namespace of the root.
TLxSerializedData LxAsXML(TObject* AObject, std::u16string_view ATargetNamespace = {},
                          bool AExcludeNamespaces = false);
/// AObject as JSON, by TLxJSONSerializer with its default options; nil gives "null".
TLxSerializedData LxAsJSON(TObject* AObject);

/// The framework's start-up registrations: the alias "StringList" of TStringList, and LxSerialize
/// as the value serializer of the code below (SetValueSerializer). Called once by the library's
/// start-up.
void LxSerializerStartup();

} // namespace lorvane
