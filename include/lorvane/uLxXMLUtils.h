/// Values and their text in a document: escaping for output and decoding of character and
/// entity references (LxXMLEscape.h), with the CDATA end constants and the event-interface
/// exceptions.
#pragma once

#include "lorvane/xmlutils/LxXMLEscape.h"
