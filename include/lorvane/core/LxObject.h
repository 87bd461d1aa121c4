/// The reference counted base object whose last release destroys it only when AutoDestroy says
/// so, the interface that leads from an interface back to its object, and the base exception of
/// the readers with its error code.
#pragma once

#include "lorvane/platform/SysUtils.h"

#include <atomic>

namespace lorvane {

/// Leads from an interface that the library receives back to the object behind it.
class ILxObject : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x6C8E2A31, 0x94B7, 0x4D0E, {0x8A, 0x5F, 0x31, 0xC2, 0x7E, 0x90, 0x1B, 0x44}};
  virtual TObject* Implementor() = 0;

protected:
  ~ILxObject() = default;
};

/// Counts interface references atomically. The count starts at 1 while the constructor chain
/// runs (interfaces taken and dropped there can't destroy the object) and drops to 0 in
/// AfterConstruction. When a release brings it to 0, the object destroys itself only if
/// AutoDestroy is true (the default); an owner that frees the object directly sets it false.
///
/// Interfaces derive virtually from IInterface, so this class's three operations serve every
/// interface that a descendant adds; a descendant answers its own IIDs in QueryInterface and
/// passes the rest to the inherited one.
class TLxObject : public TObject, public ILxObject {
  LX_CLASS(TLxObject, TObject)
  TLxObject() noexcept = default;

  void AfterConstruction() override;
  /// Runs whatever the count; an object destroyed with interfaces still held leaves them dangling,
  /// exactly as the owner patterns expect the owner to know.
  void BeforeDestruction() override {}

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;
  Integer _AddRef() override;
  /// Gives the new count; at 0 with AutoDestroy true the object is gone when this returns.
  Integer _Release() override;
  TObject* Implementor() override { return this; }

  virtual bool GetAutoDestroy() const { return FAutoDestroy; }
  void SetAutoDestroy(bool AValue) noexcept { FAutoDestroy = AValue; }
  Integer RefCount() const noexcept { return FRefCount.load(std::memory_order_acquire); }

protected:
  ~TLxObject() override = default;
  std::atomic<Integer> FRefCount{1};

private:
  bool FAutoDestroy = true;
};

/// The base of the readers' failures: a message and a 32-bit error code.
class ELxException : public Exception {
public:
  ELxException(const UnicodeString& AMessage, Integer AErrorCode);
  /// AArgsHigh is the index of the last argument of AArgs.
  ELxException(std::u16string_view AFormat, const TVarRec* AArgs, Integer AArgsHigh,
               Integer AErrorCode);
  ELxException(std::u16string_view AFormat, TFormatArgs AArgs, Integer AErrorCode);
  Integer ErrorCode() const noexcept { return FErrorCode; }

private:
  Integer FErrorCode;
};

/// Stepping beyond the end of a text; the readers tell a truncated text from a malformed one by
/// this class.
class ELxTextParserEOF : public ELxException {
public:
  using ELxException::ELxException;
};

} // namespace lorvane
