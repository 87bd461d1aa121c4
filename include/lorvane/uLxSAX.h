/// XML reading: the event interfaces (LxSAXInterfaces.h) and the do-nothing handler to derive
/// from (LxSAXDefaultHandler.h), the XML text cursor and the reading failures (LxXMLParser.h),
/// attribute and namespace lists (LxSAXAttributes.h), the readers (LxSAXReader.h, and
/// LxSAXJSONReader.h for JSON read as XML) and the event component (LxSAXParser.h).
#pragma once

#include "lorvane/sax/LxSAXAttributes.h"
#include "lorvane/sax/LxSAXDefaultHandler.h"
#include "lorvane/sax/LxSAXInterfaces.h"
#include "lorvane/sax/LxSAXJSONReader.h"
#include "lorvane/sax/LxSAXParser.h"
#include "lorvane/sax/LxSAXReader.h"
#include "lorvane/sax/LxXMLParser.h"
#include "lorvane/uLxCore.h"
