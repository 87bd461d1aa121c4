// What the library registers before its first use: the pieces that foundation code reaches
// without depending on the modules that provide them.
#pragma once

#include "lorvane/classes/LxDocumentHooks.h"

namespace lorvane::startup {

/// The document makers of the XML and JSON modules, which the document hooks hold until an
/// application sets others.
struct TDocumentMakers {
  TCreateDocumentFunc XML;
  TCreateDocumentFunc JSON;
};
TDocumentMakers DocumentMakers();

} // namespace lorvane::startup
