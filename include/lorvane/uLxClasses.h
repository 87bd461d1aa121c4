/// The second layer of the foundation: copyable counted objects (LxObjectEx.h), counted
/// components (LxComponent.h), text helpers and file loading (LxStrings.h), lenient Variant
/// reading (LxVariants.h), the document hooks through which the foundation reaches XML and JSON
/// documents (LxDocumentHooks.h), and the library's start-up that fills them (LxLibraryStartup.h).
#pragma once

#include "lorvane/classes/LxComponent.h"
#include "lorvane/classes/LxDocumentHooks.h"
#include "lorvane/classes/LxLibraryStartup.h"
#include "lorvane/classes/LxObjectEx.h"
#include "lorvane/classes/LxStrings.h"
#include "lorvane/classes/LxVariants.h"
