/// TLxObjectEx: the counted base object that can be copied (Assign, AssignTo), streamed
/// (DefineProperties) and told that an object it watches is gone (OnObjectDestroyed).
#pragma once

#include "lorvane/core/LxObject.h"
#include "lorvane/platform/Classes.h"

namespace lorvane {

/// Counts references exactly as TLxObject does, and adds copying.
///
/// Copying follows the two-sided pattern: Assign(ASource) asks ASource->AssignTo(this). A class
/// that knows how to copy from some source classes overrides Assign, handles them and calls the
/// inherited Assign for the rest; a class that knows how to copy itself into some destination
/// classes overrides AssignTo likewise. When nobody handles the pair, the base AssignTo raises
/// EConvertError "Cannot assign a TSource to a TDest" with the two class names; a nil source
/// raises "Cannot assign a nil to a TDest", and AssignTo of a nil destination "Cannot assign a
/// TSource to a nil". Copying an object onto itself is no special case: it
/// raises too unless an override handles it.
class TLxObjectEx : public TLxObject {
  LX_CLASS(TLxObjectEx, TLxObject)
  TLxObjectEx() noexcept = default;

  /// Told that AObject, which this object watches, is gone; AObject is past its destructor, so
  /// compare its address and don't call it. Does nothing here.
  virtual void OnObjectDestroyed(TObject* AObject);
  /// Copies this object to ADest; an override handles the classes that it knows and calls this
  /// one for the others, which raises as the class comment says.
  virtual void AssignTo(TLxObjectEx* ADest);
  /// The hook for streaming data that isn't a property; does nothing here.
  virtual void DefineProperties(TFiler* AFiler);
  /// Copies from ASource; an override handles the classes that it knows and calls this one for
  /// the others, which passes the work to ASource->AssignTo(this).
  virtual void Assign(TLxObjectEx* ASource);

protected:
  ~TLxObjectEx() override = default;
  /// Raises EConvertError "Cannot assign a %s to a %s" with ASource's class name ("nil" for
  /// none) and this object's.
  [[noreturn]] void AssignError(TLxObjectEx* ASource) const;
};

} // namespace lorvane
