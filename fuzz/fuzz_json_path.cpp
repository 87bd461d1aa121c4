// Fuzz target of JSON path selection: a path (and, behind a NUL byte, a JSON document of its own)
// from the input, run through CreateNodeList, SelectSingleNode and SelectIntf with each set of
// options on a fresh tree. Only the failures that path selection documents may leave.
#include "lorvane/uLxJSON.h"
#include "support/DocumentedFailures.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace lorvane {
namespace {

constexpr std::u16string_view SampleDocument =
    uR"({"a":1,"b":{"x":2,"c":[10,{"x":3,"n":"abc"},12,true,null]},"x":4,"a b":5,"a":"dup",
  "items":[{"n":1,"s":"abc","t":true},{"n":7.5,"s":"ABC","t":false},{"n":"abc"},{"y":[2,[3]]}],
  "e":{},"f":[]})";

/// The document of AText, or nil when it can't be read (its load isn't this target's subject).
TLxJSONDocument* LoadOrNull(std::u16string_view AText) {
  try {
    return TLxJSONDocument::CreateFromJSON(LxJSONString(AText));
  } catch (const std::exception& E) {
    if (!documented::IsDocumented(documented::TEntry::JSONDocumentLoad, E))
      throw;
    return nullptr;
  }
}

void Run(const uint8_t* AData, size_t ASize) {
  const std::string_view Input(reinterpret_cast<const char*>(AData), ASize);
  const size_t Nul = Input.find('\0');
  const std::string_view PathText = Input.substr(0, Nul);
  // Long paths only repeat what short ones reach.
  if (PathText.size() > 4096)
    return;
  const UnicodeString Path = UTF8ToString(PathText);
  const UnicodeString DocumentText = Nul == std::string_view::npos
                                         ? UnicodeString(SampleDocument)
                                         : UTF8ToString(Input.substr(Nul + 1));
  const TLxJDOCSelectOptions OptionSets[] = {
      {}, {jsoRaise}, {jsoCreate}, {jsoCaseInsensitive}, {jsoCreate, jsoCaseInsensitive}};
  for (const TLxJDOCSelectOptions& Options : OptionSets) {
    TOwned<TLxJSONDocument> Document(LoadOrNull(DocumentText));
    if (!Document)
      return;
    using documented::TEntry;
    documented::Guarded(TEntry::JSONPathSelect, [&] {
      TOwned<TLxJSONArray> Found(Document->CreateNodeList(Path, Options));
      // The result is written as any array is, a nil item too.
      (void)Found->GetAsJSON();
    });
    documented::Guarded(TEntry::JSONPathSelect,
                        [&] { (void)Document->SelectSingleNode(Path, Options); });
    // From a value inside the tree, where "@" and "$" part.
    if (TLxJSONBase* Root = Document->GetRootValue())
      if (Root->Count() > 0)
        documented::Guarded(TEntry::JSONPathSelect, [&] {
          IPtr<ILxJSONArray> Found = Root->Item(Root->Count() - 1)->SelectIntf(Path, Options);
          (void)Found->Count();
        });
  }
}

} // namespace
} // namespace lorvane

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  lorvane::Run(AData, ASize);
  return 0;
}
