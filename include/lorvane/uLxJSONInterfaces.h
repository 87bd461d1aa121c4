/// The JSON vocabulary: data types, select options, exceptions and messages, and the event
/// interfaces of reading.
#pragma once

#include "lorvane/json/LxJSONEventInterfaces.h"
#include "lorvane/json/LxJSONTypes.h"
