/// Objects, records, arrays and simple values as JSON (LxJSONSerializer.h).
#pragma once

#include "lorvane/serializer/LxJSONSerializer.h"
