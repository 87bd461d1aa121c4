/// Objects, records, arrays and simple values as XML (LxXMLSerializer.h).
#pragma once

#include "lorvane/serializer/LxXMLSerializer.h"
