/// Processing instructions of the document tree (TLxDOMProcessingInstruction) and their face
/// (TLxDOMProcessingInstructionImpl, answering ILxDOMProcessingInstruction). The target is the
/// node's qualified name; the data is kept as it is given, and so is what a loader stores and
/// what output writes.
#pragma once

#include "lorvane/dom/LxDOMNode.h"

namespace lorvane {

class TLxDOMProcessingInstructionImpl;

/// Has no node value: GetNodeValue is empty and SetNodeValue raises ELxDomNotSupported; the data
/// is reached through GetData and SetData. A clone keeps the target and has empty data.
class TLxDOMProcessingInstruction : public TLxDOMNode {
  LX_CLASS(TLxDOMProcessingInstruction, TLxDOMNode)
  TLxDOMProcessingInstruction();

  TLxDOMObjectImpl* CreateDOMImpl(TLxDOMObject* ADOMObject) override;

  /// Set through SetQualifiedName; there is no setter of its own.
  UnicodeString GetTarget() const { return GetQualifiedName(); }
  /// The text behind the target, as it was stored: nothing is escaped or decoded.
  const UnicodeString& GetData() const noexcept { return FData; }
  void SetData(const UnicodeString& Value) { FData = Value; }

  /// The face, nil while no interface is held.
  TLxDOMProcessingInstructionImpl* DOMProcessingInstructionImpl() const noexcept;

protected:
  /// Formatted: on a line of its own unless the stream holds at most 4 bytes.
  void WriteXML(TLxDOMWriter& AWriter, bool AFormatted, Integer& ALevel) override;
  ~TLxDOMProcessingInstruction() override = default;

  UnicodeString FData;
};

class TLxDOMProcessingInstructionImpl : public TLxDOMNodeImpl,
                                        public virtual ILxDOMProcessingInstruction {
  LX_CLASS(TLxDOMProcessingInstructionImpl, TLxDOMNodeImpl)
  explicit TLxDOMProcessingInstructionImpl(TLxDOMProcessingInstruction* ADOMObject)
      : TLxDOMNodeImpl(ADOMObject) {}

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;
  TLxDOMProcessingInstruction* DOMProcessingInstruction() const noexcept {
    return static_cast<TLxDOMProcessingInstruction*>(FDOMObject);
  }

  UnicodeString GetData() override;
  void SetData(const UnicodeString& Value) override;

protected:
  ~TLxDOMProcessingInstructionImpl() override = default;
};

} // namespace lorvane
