/// The document tree: documents with loading and saving (LxDOMDocument.h, LxDOMParser.h), shared
/// types, defaults and exceptions (LxDOMTypes.h), collations
/// (LxDOMCollation.h), interfaces (LxDOMInterfaces.h), the two-layer object model
/// (LxDOMObject.h), nodes (LxDOMNode.h), elements (LxDOMElement.h), attributes
/// (LxDOMAttribute.h), text, comments and CDATA sections (LxDOMCharacterData.h), processing
/// instructions (LxDOMProcessingInstruction.h), node lists (LxDOMNodeList.h) and the
/// implementation object of the standard DOM abstraction (LxDOMImplementation.h).
#pragma once

#include "lorvane/dom/LxDOMAttribute.h"
#include "lorvane/dom/LxDOMCharacterData.h"
#include "lorvane/dom/LxDOMCollation.h"
#include "lorvane/dom/LxDOMDocument.h"
#include "lorvane/dom/LxDOMElement.h"
#include "lorvane/dom/LxDOMImplementation.h"
#include "lorvane/dom/LxDOMInterfaces.h"
#include "lorvane/dom/LxDOMNode.h"
#include "lorvane/dom/LxDOMNodeList.h"
#include "lorvane/dom/LxDOMObject.h"
#include "lorvane/dom/LxDOMParser.h"
#include "lorvane/dom/LxDOMProcessingInstruction.h"
#include "lorvane/dom/LxDOMTypes.h"
