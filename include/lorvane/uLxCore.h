/// The core of the library: the counted base object and the readers' base exception
/// (LxObject.h), character constants and sets (LxChars.h), streams (LxStreams.h), encodings,
/// code page names and Base64 (LxEncoding.h), and the text cursor (LxTextParser.h).
#pragma once

#include "lorvane/core/LxChars.h"
#include "lorvane/core/LxEncoding.h"
#include "lorvane/core/LxObject.h"
#include "lorvane/core/LxStreams.h"
#include "lorvane/core/LxTextParser.h"
#include "lorvane/core/LxWellKnownNames.h"
