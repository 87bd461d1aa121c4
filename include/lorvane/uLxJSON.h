/// JSON: the text cursor and string escapes, the event reader.
#pragma once

#include "lorvane/json/LxFormURLEncodedJSONReader.h"
#include "lorvane/json/LxJSONReader.h"
#include "lorvane/json/LxJSONStrings.h"
#include "lorvane/json/LxJSONTextParser.h"
#include "lorvane/uLxJSONInterfaces.h"
