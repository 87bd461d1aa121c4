/// TLxDeserializer: the driver of reading. A format class runs an event reader and passes names
/// and text to it; the driver decides whether a name is a member (by its own name first, for a
/// class a field before a property, then by an shoName hint), makes child deserializers for
/// members of complex type, makes instances, stores values, writes value-type members back to
/// their owners, and grows arrays. One deserializer stands for one instance; the chain of parents
/// is the chain of open constructs.
///   TLxDeserializerObjectList   the objects made during a run, owned or not
///   ILxDeserializer             what a deserializer offers as an interface
#pragma once

#include "lorvane/serializer/LxCustomSerializer.h"
#include "lorvane/serializer/LxSerializerHelpers.h"

namespace lorvane {

class TLxTextParser;

/// The objects made during a run; destroyed only by the deserializer that made it (FOwner).
class TLxDeserializerObjectList : public TObjectList {
  LX_CLASS(TLxDeserializerObjectList, TObjectList)
  TLxDeserializerObjectList(TLxDeserializer* AOwner, bool AOwnsObjects) noexcept
      : TObjectList(AOwnsObjects), FOwner(AOwner) {}
  TLxDeserializer* GetOwner() const noexcept { return FOwner; }

protected:
  ~TLxDeserializerObjectList() override = default;

private:
  TLxDeserializer* FOwner;
};

class ILxDeserializer : public virtual ILxCustomSerializer {
public:
  static constexpr TGUID IID{
      0x2D6A8E15, 0x9C47, 0x4B3F, {0x83, 0xE2, 0x5F, 0x17, 0xA9, 0x0C, 0xD4, 0x6B}};
  virtual TObjectList* GetCreatedObjects() = 0;
  /// Reads the UTF-8 text AData into the instance.
  virtual void Deserialize(const TLxSerializedData& AData) = 0;
  virtual void Deserialize(TStream* AStream) = 0;

protected:
  ~ILxDeserializer() = default;
};

class TLxDeserializer : public TLxCustomSerializer, public virtual ILxDeserializer {
  LX_CLASS(TLxDeserializer, TLxCustomSerializer)
  TLxDeserializer() = default;

  /// Keeps AValue also as the member value: for a root array, the elements are read into it.
  void Create(const TValue& AValue) override;
  void Create(void* AInstancePtr, const TLxTypeInfo* ATypeInfo) override;
  /// Takes the parent's stream and its list of created objects.
  void SetParent(TLxCustomSerializer* AParent) override;

  // In slot order.
  /// The class name at the start of the text; the parser is laid over the stream at its position.
  virtual void ReadClassName(TLxTextParser* AParser, UnicodeString& AName) = 0;
  /// The class name of the construct at hand; false when it names none (here: always).
  virtual bool ReadClassName(UnicodeString& AName);
  /// A new object of the type's class: a TLxObject that doesn't destroy itself, a component with
  /// the object option "Owner" as owner, or any other class made without arguments. A type
  /// without a class raises Exception "Failed to retrieve the Class of type \"%s\"!".
  virtual TObject* CreateInstance(const TLxTypeInfo* ATypeInfo);
  /// Runs the format over the stream; called on the deserializer that does the work.
  virtual void DoDeserialize() = 0;
  /// The deserializer that does the work (see the comment of its implementation).
  virtual TLxDeserializer* CheckInstance();
  /// Makes the child deserializer of the member at hand when its type needs one.
  virtual void CreateChildDeserializerIfNeeded(std::u16string_view AName);
  virtual Integer ValueToInt(std::u16string_view AValue) = 0;
  virtual Int64 ValueToInt64(std::u16string_view AValue) = 0;
  virtual Double ValueToFloat(std::u16string_view AValue) = 0;
  virtual UnicodeString ValueToStr(std::u16string_view AValue) = 0;
  virtual TDateTime ValueToDate(std::u16string_view AValue) = 0;
  virtual TDateTime ValueToTime(std::u16string_view AValue) = 0;
  virtual TDateTime ValueToDateTime(std::u16string_view AValue) = 0;
  virtual bool ValueToBool(std::u16string_view AValue) = 0;
  virtual Variant ValueToVar(std::u16string_view AValue,
                             std::u16string_view AQualifiedTypeName) = 0;
  virtual TValue ValueToVal(std::u16string_view AValue, std::u16string_view AQualifiedTypeName) = 0;
  /// Whether AName is a member of the instance: desYes (the member is now the one at hand, and a
  /// child deserializer is made when its type needs one), desIgnore (a member that is not read),
  /// desNo (unknown; with ARaiseIfNo raises ELxSerializeException "Failed to find a property or
  /// field with the name %s.%s!", except for "className", "parent", "owner" and "type").
  /// AQualifiedTypeName gets the member's type when it was empty.
  virtual TLxCanDeserialize CanDeserialize(UnicodeString& ANamespace, UnicodeString& AName,
                                           UnicodeString& AQualifiedTypeName, bool ARaiseIfNo);
  virtual void DeserializeStartType();
  /// Stores AValue, converted to the type of the member or element at hand.
  virtual void DeserializeValue(std::u16string_view ANamespace, std::u16string_view AName,
                                std::u16string_view AValue, std::u16string_view AQualifiedTypeName);
  virtual void DeserializeEndType();
  void Deserialize(const TLxSerializedData& AData) override;
  /// The root run; only a root may run ("The \"Deserialize\" method may only be called on the
  /// root!").
  void Deserialize(TStream* AStream) override;

  TObjectList* GetCreatedObjects() override { return CreatedObjects(); }
  /// The list that collects the objects made during the run: nil gives a list of this
  /// deserializer that doesn't own them; a list from elsewhere is taken and never destroyed here.
  void SetCreatedObjects(TObjectList* AList);

  /// True for an array deserializer (it has a parent and an array type); AKind gets the
  /// element's kind.
  bool IsArraySerializer(TLxTypeKind* AKind = nullptr);
  /// For an array deserializer: the next element becomes the member at hand (a dynamic array
  /// grows to hold it), and its address is given; nil for any other deserializer.
  TValue* InitializeArrayElement(std::u16string_view ANamespace, std::u16string_view AName);

  /// Children for a member: of the class registered for the type; AHint an shoDeserializerHelper
  /// hint or nil. The child is this deserializer's child from here on; the format decides who
  /// frees it.
  TLxDeserializer* CreateChildDeserializer(std::u16string_view AName, void* AData,
                                           const TLxTypeInfo* ATypeInfo,
                                           const SerializerHint* AHint);
  TLxDeserializer* CreateChildDeserializer(std::u16string_view AName, TClass AClass, void* AData,
                                           const TLxTypeInfo* ATypeInfo,
                                           const SerializerHint* AHint);
  /// From the member value AValue, which the child keeps as its member value.
  TLxDeserializer* CreateChildDeserializer(std::u16string_view AName, const TValue& AValue,
                                           const SerializerHint* AHint);

  Integer GetArrIdx() const noexcept { return FArrIdx; }
  const TLxTypeInfo* GetMemberTypeInfo() const noexcept { return FMemberTypeInfo; }
  TValue& GetMemberValue() noexcept { return FMemberValue; }
  const TLxFieldDescription* GetMemberField() const noexcept { return FMemberField; }
  const TLxPropertyDescription* GetMemberProp() const noexcept { return FMemberProp; }
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

protected:
  ~TLxDeserializer() override;

  TObjectList* FCreatedObjs = nullptr;
  /// Set by Create: the list of its own that this deserializer owns is made when first asked
  /// for, as a child takes its parent's list instead.
  bool FOwnListOnDemand = false;
  /// FCreatedObjs, made on demand.
  TObjectList* CreatedObjects();
  Integer FArrIdx = -1;
  /// The count of the created-objects list when the root's run began.
  Integer FRunStart = 0;
  IPtr<ILxDeserializerHelper> FIHelper;
  TLxDeserializerHelper* FCHelper = nullptr;
  const TLxFieldDescription* FMemberField = nullptr;
  const TLxPropertyDescription* FMemberProp = nullptr;
  const TLxTypeInfo* FMemberTypeInfo = nullptr;
  TValue FMemberValue;

private:
  /// Children that no reader took over (members read outside a parse); freed with this one.
  std::vector<TLxDeserializer*> FUnownedChildren;

  TLxDeserializer* FinishChild(TOwned<TLxDeserializer> AChild, std::u16string_view AName,
                               const SerializerHint* AHint);
  void ClearMember() noexcept;
  /// The created-objects list when this deserializer made it; nil for a list from elsewhere.
  TLxDeserializerObjectList* OwnList() const noexcept;
  void StoreMemberValue();
  void FetchInstanceHelper();
  void FreeStrandedObjects(bool ASucceeded);
  TLxDeserializer* SubRoot();
};

} // namespace lorvane
