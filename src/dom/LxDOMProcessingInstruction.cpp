// Processing instructions: a target that is the node's name, and data kept as it is given.
#include "lorvane/dom/LxDOMProcessingInstruction.h"

namespace lorvane {

TLxDOMProcessingInstruction::TLxDOMProcessingInstruction() { FNodeType = ntProcessingInstruction; }

TLxDOMObjectImpl* TLxDOMProcessingInstruction::CreateDOMImpl(TLxDOMObject* ADOMObject) {
  return New<TLxDOMProcessingInstructionImpl>(
      static_cast<TLxDOMProcessingInstruction*>(ADOMObject));
}

TLxDOMProcessingInstructionImpl*
TLxDOMProcessingInstruction::DOMProcessingInstructionImpl() const noexcept {
  return static_cast<TLxDOMProcessingInstructionImpl*>(FDOMImpl);
}

HRESULT TLxDOMProcessingInstructionImpl::QueryInterface(const TGUID& AIID, void** AObj) {
  return AnswerInterfaces<ILxDOMProcessingInstruction>(
      this, AIID, AObj, [&] { return inherited::QueryInterface(AIID, AObj); });
}

UnicodeString TLxDOMProcessingInstructionImpl::GetData() {
  return DOMProcessingInstruction()->GetData();
}

void TLxDOMProcessingInstructionImpl::SetData(const UnicodeString& Value) {
  DOMProcessingInstruction()->SetData(Value);
}

} // namespace lorvane
