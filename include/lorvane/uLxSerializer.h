/// Serialization: application values to text and back by walking their type descriptions.
///   LxSerializerTypes.h    the vocabulary and interfaces, hints
///   LxCustomSerializer.h   options and the instance a serializer works on
///   LxSerializerHelpers.h  helpers, their registry, the self-steering base classes
///   LxSerializer.h         the driver of writing
///   LxDeserializer.h       the driver of reading
///   LxSerialization.h      the entry points of writing, and the registrations
///   LxDeserialization.h    the entry points of reading
#pragma once

#include "lorvane/serializer/LxCustomSerializer.h"
#include "lorvane/serializer/LxDeserialization.h"
#include "lorvane/serializer/LxDeserializer.h"
#include "lorvane/serializer/LxSerialization.h"
#include "lorvane/serializer/LxSerializer.h"
#include "lorvane/serializer/LxSerializerHelpers.h"
#include "lorvane/serializer/LxSerializerTypes.h"
