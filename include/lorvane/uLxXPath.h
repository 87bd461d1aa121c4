/// The path language over the document tree: selection by path from nodes, elements and
/// documents (declared with the tree, in uLxXMLDOM.h), filters and the function library.
#pragma once

#include "lorvane/dom/LxDOMPathSelection.h"
#include "lorvane/uLxXMLDOM.h"
#include "lorvane/xpath/LxXPath.h"
#include "lorvane/xpath/LxXPathValueFunctions.h"
