// Copyable counted objects: the default copy protocol and its failure.
#include "lorvane/classes/LxObjectEx.h"

namespace lorvane {

namespace {

UnicodeString NameOrNil(const TObject* AObject) {
  return AObject ? AObject->ClassName() : UnicodeString(u"nil");
}

} // namespace

void TLxObjectEx::OnObjectDestroyed(TObject* /*AObject*/) {}

void TLxObjectEx::AssignTo(TLxObjectEx* ADest) {
  // Reached only when neither side knows the other.
  if (!ADest)
    throw EConvertError(SAssignError, {ClassName(), UnicodeString(u"nil")});
  ADest->AssignError(this);
}

void TLxObjectEx::DefineProperties(TFiler* /*AFiler*/) {}

void TLxObjectEx::Assign(TLxObjectEx* ASource) {
  if (!ASource)
    AssignError(/*ASource=*/nullptr);
  ASource->AssignTo(this);
}

void TLxObjectEx::AssignError(TLxObjectEx* ASource) const {
  throw EConvertError(SAssignError, {NameOrNil(ASource), ClassName()});
}

} // namespace lorvane
