/// The type registry and the values it describes:
///   LxTypeKinds.h         the kinds, name types, formats and visibility classes
///   LxMainTypeKind.h      the coarse main kind of a value, VarMainTypeKind
///   LxTypeInfo.h          TLxTypeInfo, TLxTypeDescription and its members, SerializerHint
///   LxTypeHandle.h        TypeHandle<T>() and the built-in descriptions
///   LxValue.h             TValue
///   LxTypes.h             TLxTypes, the registry
///   LxDescribe.h          how an application describes its records, classes and enumerations
///   LxDescribeAggregate.h plain aggregate structs described in one line, named by the compiler
///   LxCustomSimpleType.h  the base of small value classes
///   LxSerializable.h      how a thing offers its own serialized text
#pragma once

#include "lorvane/types/LxCustomSimpleType.h"
#include "lorvane/types/LxDescribe.h"
#include "lorvane/types/LxDescribeAggregate.h"
#include "lorvane/types/LxMainTypeKind.h"
#include "lorvane/types/LxSerializable.h"
#include "lorvane/types/LxTypeHandle.h"
#include "lorvane/types/LxTypeInfo.h"
#include "lorvane/types/LxTypeKinds.h"
#include "lorvane/types/LxTypes.h"
#include "lorvane/types/LxValue.h"
