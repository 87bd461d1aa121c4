// The counted base object and the readers' base exception.
#include "lorvane/core/LxObject.h"

namespace lorvane {

void TLxObject::AfterConstruction() {
  // Only the constructing thread can see the object yet: no locked operation is needed.
  FRefCount.store(FRefCount.load(std::memory_order_relaxed) - 1, std::memory_order_release);
}

HRESULT TLxObject::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxObject, IInterface>(this, AIID, AObj,
                                                 [AObj] { return RefuseInterface(AObj); });
}

Integer TLxObject::_AddRef() { return FRefCount.fetch_add(1, std::memory_order_relaxed) + 1; }

Integer TLxObject::_Release() {
  const Integer Count = FRefCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
  if (Count == 0 && GetAutoDestroy())
    Free();
  return Count;
}

ELxException::ELxException(const UnicodeString& AMessage, Integer AErrorCode)
    : Exception(AMessage), FErrorCode(AErrorCode) {}

ELxException::ELxException(std::u16string_view AFormat, const TVarRec* AArgs, Integer AArgsHigh,
                           Integer AErrorCode)
    : Exception(Format(AFormat, AArgs, AArgsHigh)), FErrorCode(AErrorCode) {}

ELxException::ELxException(std::u16string_view AFormat, TFormatArgs AArgs, Integer AErrorCode)
    : Exception(Format(AFormat, AArgs)), FErrorCode(AErrorCode) {}

} // namespace lorvane
