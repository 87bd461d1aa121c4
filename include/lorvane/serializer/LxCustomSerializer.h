/// TLxCustomSerializer: what serializers and deserializers share: the value or instance they
/// work on, its type, the stream, and the options that a child inherits from its parents.
///
/// Options are text lines "name=value" (names without regard to case) with an object beside
/// each line. A child sees its parents' options unless it sets its own: GetParam asks the parent
/// when the line isn't here. Known options: "excluderoot", "excludechildren",
/// "excludenamespaces", "xsi-namespace", "xsi-prefix", "xsd-namespace", "xsd-prefix", "xmlns",
/// "UrlEncoded"; object options "Owner" and "Parent".
#pragma once

#include "lorvane/serializer/LxSerializerTypes.h"

namespace lorvane {

class TLxCustomSerializer : public TLxObject, public virtual ILxCustomSerializer {
  LX_CLASS(TLxCustomSerializer, TLxObject)
  TLxCustomSerializer();

  /// The object of the line whose whole text is AName, here or else up the parents; nil when
  /// there is none.
  TObject* GetObjParam(std::u16string_view AName) override;
  /// The value of the line named AName, here or else up the parents; empty when there is none.
  UnicodeString GetParam(std::u16string_view AName) override;
  /// Takes the stream of AParent (when there is one) and keeps AParent.
  virtual void SetParent(TLxCustomSerializer* AParent);
  /// Made from a value: keeps it, and works on the object (a class value), on the value's own
  /// storage inside the kept copy (numbers, enumerations, sets, Variants, arrays, records), or
  /// on nothing (texts, which are written from the kept value; and the empty value). A value of
  /// any other kind raises Exception "Values of type \"%s\" cannot be serialized!" with the name
  /// of its language kind.
  virtual void Create(const TValue& AValue);
  /// Made from an instance and its type: without a kept value, a simple value at AInstancePtr
  /// is copied in, so that it can be written from there. Clears the options, the parent, and
  /// names the serializer "root".
  virtual void Create(void* AInstancePtr, const TLxTypeInfo* ATypeInfo);
  virtual TLxSerializeFormat Format() const = 0;

  /// A line named AName here or up the parents.
  bool HasParam(std::u16string_view AName) const;
  /// An empty AValue removes the line.
  void SetParam(std::u16string_view AName, std::u16string_view AValue) override;
  /// Puts AObject beside the line "AName=value", or adds a line of the bare name (a further one
  /// each time: GetObjParam keeps finding the first).
  void SetObjParam(std::u16string_view AName, TObject* AObject) override;
  /// This serializer's own lines (made on first use: most children of a walk have none).
  TStrings* GetParams() const;
  /// Copies each line of AParams (name, value and object); lines already here stay.
  void SetParams(TStrings* AParams);
  /// Changes to the options of this serializer and its parents, counted: what was read from
  /// them while this count stood still is still what GetParam gives.
  UInt64 ParamChangesAlongParents() const noexcept;
  /// Whether this serializer has lines of its own.
  bool HasOwnParams() const noexcept { return FParams && FParams->GetCount() > 0; }

  void* GetInstancePtr() override { return FInstancePtr; }
  void* GetInstance() const noexcept { return FInstancePtr; }
  const TLxTypeInfo* GetInstanceTypeInfo() const noexcept { return FInstanceTypeInfo; }
  TLxCustomSerializer* GetParent() const noexcept { return FParent; }
  TStream* GetStream() const noexcept { return FStream; }
  const UnicodeString& GetName() const noexcept { return FName; }
  const TValue& GetValue() const noexcept { return FValue; }

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

protected:
  ~TLxCustomSerializer() override;

  TLxCustomSerializer* FParent = nullptr;
  void* FInstancePtr = nullptr;
  const TLxTypeInfo* FInstanceTypeInfo = nullptr;
  TStream* FStream = nullptr;
  mutable TStringList* FParams = nullptr;
  /// Bumped by every change to FParams, and by every hand-out of it (GetParams), which may be
  /// changed behind this object's back.
  mutable UInt64 FParamChanges = 0;
  UnicodeString FName = u"root";
  TValue FValue;
};

} // namespace lorvane
