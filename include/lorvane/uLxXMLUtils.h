/// Values and their text in a document: escaping for output and decoding of character and
/// entity references (LxXMLEscape.h), with the CDATA end constants and the event-interface
/// exceptions; numbers, booleans, dates, times and durations to their XML Schema text and back
/// (LxXMLValues.h); Variant and TValue values, arrays included, to text and back
/// (LxXMLVariants.h).
#pragma once

#include "lorvane/xmlutils/LxXMLEscape.h"
#include "lorvane/xmlutils/LxXMLValues.h"
#include "lorvane/xmlutils/LxXMLVariants.h"
