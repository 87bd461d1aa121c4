// Fuzz target of path selection: a path (and, behind a NUL byte, a document of its own) from the
// input, run through CreateNodeList and SelectSingleNode with each set of options. Only the
// failures that path selection documents may leave.
#include "lorvane/core/LxStreams.h"
#include "lorvane/platform/CodePages.h"
#include "lorvane/platform/RegularExpressions.h"
#include "lorvane/uLxXPath.h"
#include "support/DocumentedFailures.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <typeinfo>

namespace lorvane {
namespace {

constexpr std::string_view SampleDocument =
    "<?xml version=\"1.0\"?><r xmlns:p=\"urn:p\" xmlns=\"urn:d\" a=\"1\">"
    "<a id=\"1\" k=\"ABC\">t1<b n=\"1\">x</b><b n=\"2\">10</b><!--c--></a>"
    "<a id=\"2\" p:k=\"10\" xsi:nil=\"true\" "
    "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">"
    "<c><b n=\"3\">z</b></c><?pi d?></a><p:a id=\"3\"/><A id=\"4\">text<![CDATA[cd]]></A></r>";

/// The plain-Exception messages of path selection: options in conflict, soCreate with "//",
/// and filters that are no filters.
bool IsDocumentedPlain(std::u16string_view AMessage) {
  return AMessage == u"It is not possible to specify both soCaseSensitive and soCaseInsensitive!" ||
         AMessage == u"It is not possible to specify both soRaise and soCreate!" ||
         AMessage == u"The soCreate option cannot be used in combination with the \"//\" search "
                     u"option!" ||
         AMessage == u"An invalid operation has been detected!" ||
         AMessage.starts_with(u"An invalid expression was detected!\r\n") ||
         // adjust-dateTime-to-timezone reads its zone with LxXMLToDuration, which raises these
         AMessage.starts_with(u"LxXMLToDuration; ") ||
         AMessage.ends_with(u"\" is an invalid filter expression!");
}

/// What a selection may raise on any path: syntax, not found (soRaise, soCreate), the functions'
/// coded failures, the plain messages above, the shared Variant comparison's and arithmetic's
/// failures, a pattern that the regular expression engine refuses or gives up on, a date text
/// that isn't one (or makes no date), and adjust-dateTime-to-timezone without its argument.
bool IsDocumentedSelectionFailure(const std::exception& AFailure) {
  const auto* E = &AFailure;
  if (dynamic_cast<const ELxDomSyntax*>(E) || dynamic_cast<const ELxDomNotFound*>(E) ||
      dynamic_cast<const ELxXPathException*>(E) || dynamic_cast<const EVariantError*>(E) ||
      dynamic_cast<const ERegularExpressionError*>(E) || dynamic_cast<const EConvertError*>(E))
    return true;
  if (const auto* List = dynamic_cast<const EListError*>(E))
    return List->Message() == u"List index out of bounds (0)";
  const auto* Plain = dynamic_cast<const Exception*>(E);
  return Plain && typeid(*Plain) == typeid(Exception) && IsDocumentedPlain(Plain->Message());
}

TLxDOMDocument* LoadOrNull(std::string_view AText) {
  TOwned<TLxDOMDocument> Document(New<TLxDOMDocument>());
  TOwned<TLxMemoryStream> Input(New<TLxMemoryStream>(static_cast<const void*>(AText.data()),
                                                     static_cast<Int64>(AText.size())));
  try {
    // In UTF-8 as given: the loader that detects the format is the round-trip target's work.
    Document->LoadFromStream(Input.get(), CP_UTF8);
  } catch (const ELxXMLParseError&) {
    // A text that doesn't start like XML ("JSON text can't be read yet") leaves the load as the
    // reader's own failure, which the load's census doesn't list; the load isn't this target's
    // subject.
    return nullptr;
  } catch (const std::exception& E) {
    if (!documented::IsDocumented(documented::TEntry::XMLDocumentLoad, E))
      throw;
    return nullptr;
  }
  return Document.release();
}

void Run(const uint8_t* AData, size_t ASize) {
  const std::string_view Input(reinterpret_cast<const char*>(AData), ASize);
  const size_t Nul = Input.find('\0');
  const std::string_view PathText = Input.substr(0, Nul);
  const std::string_view DocumentText =
      Nul == std::string_view::npos ? SampleDocument : Input.substr(Nul + 1);
  // Long paths only repeat what short ones reach.
  if (PathText.size() > 2048)
    return;
  const UnicodeString Path = UTF8ToString(PathText);
  const TLxDOMSelectOptions OptionSets[] = {
      {},
      {soCaseSensitive},
      {soLocalName},
      {soQualifiedName, soCaseSensitive},
      {soLocalName, soCaseInsensitive},
      {soRaise},
      {soCaseSensitive, soCaseInsensitive},
      {soRaise, soCreate},
      {soCreate}, // last: it may change the tree
  };
  TOwned<TLxDOMDocument> Document(LoadOrNull(DocumentText));
  if (!Document)
    return;
  for (const TLxDOMSelectOptions& Options : OptionSets)
    for (TLxDOMNode* Start : {static_cast<TLxDOMNode*>(Document.get()),
                              static_cast<TLxDOMNode*>(Document->GetRootNode())}) {
      if (!Start)
        continue;
      try {
        TOwned<TLxDOMNodeList> List(Start->CreateNodeList(Path, Options));
        for (TLxDOMNode* Node : *List)
          Node->GetNodeType();
        Start->SelectSingleNode(Path, Options);
      } catch (const std::exception& E) {
        if (!IsDocumentedSelectionFailure(E))
          throw;
      }
    }
}

} // namespace
} // namespace lorvane

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  lorvane::Run(AData, ASize);
  return 0;
}
