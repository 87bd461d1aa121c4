/// The JSON vocabulary: data types, select options, exceptions and messages, and the event
/// interfaces of reading, the interfaces of the value tree.
#pragma once

#include "lorvane/json/LxJSONEventInterfaces.h"
#include "lorvane/json/LxJSONTypes.h"
#include "lorvane/json/LxJSONValueInterfaces.h"
