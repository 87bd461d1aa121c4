/// Serialization: application values to text and back by walking their type descriptions.
///   LxSerializerTypes.h    the vocabulary and interfaces, hints
///   LxCustomSerializer.h   options and the instance a serializer works on
///   LxSerializerHelpers.h  helpers, their registry, the self-steering base classes
///   LxSerializer.h         the driver of writing
///   LxSerialization.h      the entry points and registrations
#pragma once

#include "lorvane/serializer/LxCustomSerializer.h"
#include "lorvane/serializer/LxSerialization.h"
#include "lorvane/serializer/LxSerializer.h"
#include "lorvane/serializer/LxSerializerHelpers.h"
#include "lorvane/serializer/LxSerializerTypes.h"
