/// Helpers that replace the walk for the classes they serve, their registry, and the base
/// classes through which application objects steer their own walk:
///   TLxSerializerHelper, TLxDeserializerHelper    the two helper bases
///   LxRegisterSerializerHelper                    by class (descendants ahead of ancestors) or
///                                                 by name pattern ("TObjectList<T>")
///   LxFindSerializerHelper, LxFindDeserializerHelper   a new helper for a class, or nil
///   TLxSerializableObject, TLxSerializableComponent    hold their lock during their own walk
#pragma once

#include "lorvane/classes/LxComponent.h"
#include "lorvane/classes/LxObjectEx.h"
#include "lorvane/platform/SyncObjs.h"
#include "lorvane/serializer/LxSerializerTypes.h"

namespace lorvane {

/// Writes a member or a root object in place of the walk. The base writes nothing and sets
/// Handled.
class TLxSerializerHelper : public TObject {
  LX_CLASS(TLxSerializerHelper, TObject)
  TLxSerializerHelper() = default;
  virtual void Serialize(TLxSerializer* ASerializer, std::u16string_view AName,
                         const TLxTypeInfo* ATypeInfo, const TValue& AValue, bool& Handled);

protected:
  ~TLxSerializerHelper() override = default;
};

/// Reads a member in place of the driver. The base answers desNo and does nothing.
class TLxDeserializerHelper : public TObject {
  LX_CLASS(TLxDeserializerHelper, TObject)
  TLxDeserializerHelper() = default;
  virtual TLxCanDeserialize CanDeserialize(TLxDeserializer* ADeserializer,
                                           std::u16string_view ANamespace,
                                           std::u16string_view AName,
                                           std::u16string_view AQualifiedTypeName);
  virtual void DeserializeStartType(TLxDeserializer* ADeserializer);
  virtual void DeserializeEndType(TLxDeserializer* ADeserializer);
  virtual void DeserializeValue(TLxDeserializer* ADeserializer, std::u16string_view ANamespace,
                                std::u16string_view AName, std::u16string_view AValue,
                                std::u16string_view AQualifiedTypeName, bool& Handled);

protected:
  ~TLxDeserializerHelper() override = default;
};

/// Registers helpers for AClass and its descendants, ahead of the entries of its ancestors; the
/// same class and serializer helper again only sets the deserializer helper, and a different
/// one there raises EAssertionFailed "Invalid Serializer/Deserializer combination!".
void LxRegisterSerializerHelper(TClass AClass, TLxSerializerHelperClass ASerializerHelper,
                                TLxDeserializerHelperClass ADeserializerHelper);
/// Registers helpers for classes whose name has the pattern AName ("TObjectList<T>"); such an
/// entry goes first.
void LxRegisterSerializerHelper(std::u16string_view AName,
                                TLxSerializerHelperClass ASerializerHelper,
                                TLxDeserializerHelperClass ADeserializerHelper);
/// A new helper for objects of AClass, which the caller frees; nil when none is registered.
/// A class name with type arguments is matched by its pattern first ("TObjectList<Shop.TOrder>"
/// is "TObjectList<T>"); otherwise the first entry of an ancestor or the class itself decides.
TLxSerializerHelper* LxFindSerializerHelper(TClass AClass);
TLxDeserializerHelper* LxFindDeserializerHelper(TClass AClass);

/// A counted object that serializes one thread at a time: its lock is held from BeforeSerialize
/// to AfterSerialize and from BeforeDeserialize to AfterDeserialize, and the same thread may
/// enter again. Descendants override the operations to steer their own walk. AutoDestroy starts
/// false: its owner frees it, and the interfaces the walk takes don't end it.
class TLxSerializableObject : public TLxObjectEx,
                              public virtual ILxSerializerHelper,
                              public virtual ILxDeserializerHelper {
  LX_CLASS(TLxSerializableObject, TLxObjectEx)
  TLxSerializableObject();

  bool CanSerializeChild(TLxSerializer* ASerializer, TObject* AObject, TClass AClass,
                         std::u16string_view AName) override;
  void BeforeSerialize(TLxSerializer* ASerializer, bool& Handled) override;
  void AfterSerialize(TLxSerializer* ASerializer) override;
  void BeforeDeserialize(TLxDeserializer* ADeserializer) override;
  void AfterDeserialize(TLxDeserializer* ADeserializer) override;
  TLxCanDeserialize CanDeserialize(TLxDeserializer* ADeserializer, std::u16string_view ANamespace,
                                   std::u16string_view AName,
                                   std::u16string_view AQualifiedTypeName) override;
  void DeserializeValue(TLxDeserializer* ADeserializer, std::u16string_view ANamespace,
                        std::u16string_view AName, std::u16string_view AValue,
                        std::u16string_view AQualifiedTypeName, bool& Handled) override;

  bool GetSerializing() const noexcept { return FSerializing; }
  bool GetDeserializing() const noexcept { return FDeserializing; }
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

protected:
  ~TLxSerializableObject() override;

  bool FSerializing = false;
  bool FDeserializing = false;
  TCriticalSection* FCritSection;
};

/// The component form of TLxSerializableObject (AutoDestroy starts false here too).
class TLxSerializableComponent : public TLxComponent,
                                 public virtual ILxSerializerHelper,
                                 public virtual ILxDeserializerHelper {
  LX_CLASS(TLxSerializableComponent, TLxComponent)
  explicit TLxSerializableComponent(TComponent* AOwner);

  bool CanSerializeChild(TLxSerializer* ASerializer, TObject* AObject, TClass AClass,
                         std::u16string_view AName) override;
  void BeforeSerialize(TLxSerializer* ASerializer, bool& Handled) override;
  void AfterSerialize(TLxSerializer* ASerializer) override;
  void BeforeDeserialize(TLxDeserializer* ADeserializer) override;
  void AfterDeserialize(TLxDeserializer* ADeserializer) override;
  TLxCanDeserialize CanDeserialize(TLxDeserializer* ADeserializer, std::u16string_view ANamespace,
                                   std::u16string_view AName,
                                   std::u16string_view AQualifiedTypeName) override;
  void DeserializeValue(TLxDeserializer* ADeserializer, std::u16string_view ANamespace,
                        std::u16string_view AName, std::u16string_view AValue,
                        std::u16string_view AQualifiedTypeName, bool& Handled) override;

  bool GetSerializing() const noexcept { return FSerializing; }
  bool GetDeserializing() const noexcept { return FDeserializing; }
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

protected:
  ~TLxSerializableComponent() override;

  bool FSerializing = false;
  bool FDeserializing = false;
  TCriticalSection* FCritSection;
};

} // namespace lorvane
