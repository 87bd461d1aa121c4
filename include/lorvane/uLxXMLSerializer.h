/// Objects, records, arrays and simple values as XML (LxXMLSerializer.h) and back
/// (LxXMLDeserializer.h).
#pragma once

#include "lorvane/serializer/LxXMLDeserializer.h"
#include "lorvane/serializer/LxXMLSerializer.h"
