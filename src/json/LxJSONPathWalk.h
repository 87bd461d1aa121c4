// Between the path walk and the filters: a path text cut into steps as the walk first reaches
// them, the selection over it, and the bound on nesting.
#pragma once

#include "lorvane/json/LxJSONPath.h"

#include <array>
#include <cstddef>
#include <memory>
#include <memory_resource>
#include <vector>

namespace lorvane {

/// What a walk selects, in order. Walks that select little keep it on the stack.
using TJSONSelection = std::pmr::vector<TLxJSONBase*>;

/// The tree's fields that the walk reads directly, without the virtual getters.
struct TJSONPathAccess {
  using TKind = TLxJSONBase::TKind;
  static TKind Kind(const TLxJSONBase* AValue) noexcept { return AValue->FKind; }
  static const TJSONChildList& Children(const TLxJSONBase* AValue) noexcept {
    return AValue->FObjects;
  }
  static TLxJSONBase* Owner(const TLxJSONBase* AValue) noexcept { return AValue->FOwner; }
  static std::u16string_view Name(const TLxJSONMember* AMember) noexcept {
    return AMember->FName.View();
  }
  static TLxJSONBase* Value(const TLxJSONMember* AMember) noexcept { return AMember->FValue; }
  static bool IsSimple(const TLxJSONBase* AValue) noexcept {
    return AValue->FKind == TKind::Simple;
  }
  /// LxVarToStr of the simple value's Variant, without making the Variant of a short text.
  static UnicodeString SimpleText(const TLxJSONSimpleType* AValue);
  /// A new array without owner that lists AItems without holding them.
  static TLxJSONArray* NewSelection(const TJSONSelection& AItems);
};

/// A path text: its alternatives, and each one's steps as far as a walk has cut them. Cutting
/// is the same work whenever a step is reached, so its result is kept; a failure isn't, and is
/// raised again by the next walk that gets there.
class TJSONPathText {
public:
  /// Without AKeepText the text is read where it is, and must outlive this object.
  TJSONPathText(std::u16string_view APath, bool AKeepText);
  ~TJSONPathText();
  TJSONPathText(const TJSONPathText&) = delete;
  TJSONPathText& operator=(const TJSONPathText&) = delete;

  /// Appends what the path selects from AThis to AResult, alternative by alternative.
  void Select(TLxJSONBase* AThis, TLxJDOCSelectOptions AOptions, TJSONSelection& AResult);
  /// When the path is one plain name from "@" ("@.name"): the first value it selects from
  /// AThis (a value, not a member) in AFound, and true; false for any other path, which the
  /// caller then selects.
  bool SelectFirstByName(TLxJSONBase* AThis, TLxJDOCSelectOptions AOptions, TLxJSONBase*& AFound);

  struct TStep;
  struct TAlternative;

private:
  UnicodeString FText;
  // The pieces of a short path fit in here.
  std::array<std::byte, 512> FRoom;
  std::pmr::monotonic_buffer_resource FArena;
  std::pmr::vector<TAlternative> FAlternatives;
};

/// Counts nested selections and filter groups on this thread's stack; beyond cJSONPathMaxDepth
/// raises ELxJSONException _cLxJSONScriptExprTooComplex (code 17).
class TJSONPathDepthGuard {
public:
  TJSONPathDepthGuard();
  ~TJSONPathDepthGuard() { --Depth(); }
  TJSONPathDepthGuard(const TJSONPathDepthGuard&) = delete;
  TJSONPathDepthGuard& operator=(const TJSONPathDepthGuard&) = delete;

private:
  static Integer& Depth() noexcept;
};

[[noreturn]] void RaiseScriptTooComplex();

/// Parses the text of a filter (the selector without "?(" and its last character) into a new
/// expression that the caller frees; raises as TLxJSONBase::CreateNodeList documents.
TLxBoolExpression* ParseJSONFilter(std::u16string_view AText, bool ACaseInsensitive);

} // namespace lorvane
