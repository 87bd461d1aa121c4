/// JSON: the text cursor and string escapes, the event reader, the do-nothing handler to derive
/// from and the event component, the value tree with its builder, output and path selection, and
/// the conversions of values and dates.
#pragma once

#include "lorvane/json/LxFormURLEncodedJSONReader.h"
#include "lorvane/json/LxJSONDefaultHandler.h"
#include "lorvane/json/LxJSONHandler.h"
#include "lorvane/json/LxJSONOutput.h"
#include "lorvane/json/LxJSONParser.h"
#include "lorvane/json/LxJSONPath.h"
#include "lorvane/json/LxJSONReader.h"
#include "lorvane/json/LxJSONStrings.h"
#include "lorvane/json/LxJSONTextParser.h"
#include "lorvane/json/LxJSONValues.h"
#include "lorvane/uLxJSONInterfaces.h"
