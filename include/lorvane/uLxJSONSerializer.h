/// Objects, records, arrays and simple values as JSON (LxJSONSerializer.h) and back, from JSON
/// or form posts (LxJSONDeserializer.h).
#pragma once

#include "lorvane/serializer/LxJSONDeserializer.h"
#include "lorvane/serializer/LxJSONSerializer.h"
