/// The shared vocabulary of the document tree: node kinds, positions, select and check options,
/// load states, the parse event type, the exported defaults and the exception family.
#pragma once

#include "lorvane/dom/LxDOMCollation.h"
#include "lorvane/sax/LxSAXInterfaces.h"

#include <array>
#include <functional>
#include <string_view>

namespace lorvane {

/// The ordinals are the node type numbers of the W3C DOM. Only ntUnknown to ntDocument are ever
/// stored in a node; the others name kinds this tree doesn't have.
enum TLxDOMNodeType : Byte {
  ntUnknown,
  ntElement,
  ntAttribute,
  ntText,
  ntCDATA,
  ntEntityRef,
  ntEntity,
  ntProcessingInstruction,
  ntComment,
  ntDocument,
  ntDocumentType,
  ntDocumentFragment,
  ntNotation
};

enum TLxDOMPosition : Byte { ldpFirst, ldpLast, ldpBefore, ldpAfter };
/// ldpFirst or ldpLast. C++ has no subranges: the aliases name the intent of an argument.
using TLxDOMAbsPosition = TLxDOMPosition;
/// ldpBefore or ldpAfter.
using TLxDOMRelPosition = TLxDOMPosition;

enum TLxDOMSelectOption : Byte {
  soRaise,
  soCreate,
  soCaseSensitive,
  soCaseInsensitive,
  soLocalName,
  soQualifiedName
};
using TLxDOMSelectOptions = TSet<TLxDOMSelectOption, 8>;
/// soCaseSensitive or soCaseInsensitive.
using TLxDOMSelectCaseOption = TLxDOMSelectOption;
/// soLocalName or soQualifiedName.
using TLxDOMSelectMatchOption = TLxDOMSelectOption;

enum TLxDOMSelectCheckOption : Byte { coReturnNil, coCreate, coRaise };
using TLxDOMSelectCheckOptions = TSet<TLxDOMSelectCheckOption, 8>;

enum TLxDOMNodeNameType : Byte { nntLocalName, nntQualifiedName };

enum TLxDOMLoadState : Byte { lsUninitialized, lsLoading, lsLoaded, lsInteractive, lsComplete };

/// A parse warning or error of a load, with where it happened; setting Handled lets the load go
/// on where the parser allows it.
using TLxDOMParseError =
    std::function<void(ILxSAXLocator* ALocator, const LxXMLString& ErrMsg, bool& Handled)>;

// The defaults are plain globals, read at the moments their comments give; the library never
// writes them. Set them at start-up: they are shared by every thread.

/// Read when a document is constructed, and by a node without document.
extern TLxDOMSelectMatchOption DefaultSelectMatchOption;
/// The initial preserve-space state of an element (despite the name), read when an element is
/// constructed or loses its element parent, and by a node without parent.
extern bool DefaultPreserveCase;
/// Read when a document is constructed, and by an element list without document.
extern TLxDOMSelectCheckOption DefaultSelectCheckOption;
/// Read when a document is constructed, and by a node without document.
extern TLxXPathCollationClass DefaultXPathCollation;
/// The names of the node kinds, for applications; the library doesn't read them.
extern const std::array<std::u16string_view, 13> LxDOMNodeTypes;

// The exception family: the class is the code, the message the text of the raise.
LX_EXCEPTION_CLASS(ELxDomException, Exception);
LX_EXCEPTION_CLASS(ELxDomNotFound, ELxDomException);
LX_EXCEPTION_CLASS(ELxDomNotSupported, ELxDomException);
LX_EXCEPTION_CLASS(ELxDomSyntax, ELxDomException);
// Declared for applications, one per DOM error kind; the library raises none of them.
LX_EXCEPTION_CLASS(ELxDomStringSize, ELxDomException);
LX_EXCEPTION_CLASS(ELxDomHierarchyRequest, ELxDomException);
LX_EXCEPTION_CLASS(ELxDomIndexSize, ELxDomException);
LX_EXCEPTION_CLASS(ELxDomInUseAttribute, ELxDomException);
LX_EXCEPTION_CLASS(ELxDomInvalidAcces, ELxDomException);
LX_EXCEPTION_CLASS(ELxDomInvalidCharacter, ELxDomException);
LX_EXCEPTION_CLASS(ELxDomInvalidModification, ELxDomException);
LX_EXCEPTION_CLASS(ELxDomInvalidState, ELxDomException);
LX_EXCEPTION_CLASS(ELxDomNamespace, ELxDomException);
LX_EXCEPTION_CLASS(ELxDomNoDataAllowed, ELxDomException);
LX_EXCEPTION_CLASS(ELxDomNoModificationAllowed, ELxDomException);
LX_EXCEPTION_CLASS(ELxDomTypeMismatch, ELxDomException);
LX_EXCEPTION_CLASS(ELxDomValidation, ELxDomException);
LX_EXCEPTION_CLASS(ELxDomWrongDocument, ELxDomException);

} // namespace lorvane
