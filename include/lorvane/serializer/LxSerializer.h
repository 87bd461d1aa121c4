/// TLxSerializer: the driver that walks one value by its type description and calls the write
/// operations that a format class fills in (SerializeStartType, SerializeEndType,
/// SerializeName, SerializeValue). It decides which members go out and in which order, and how
/// nil, cycles, components, arrays, records and interfaces are treated. Every nested object,
/// record and array gets a child serializer of the class registered for its type; all write to
/// one stream, in walking order.
///
/// Members of a class or record: each property, then each field, in the order of the
/// description; a name counts once (a property hides a field of its name). A property goes out
/// when readable and streamable (unless an shoName hint with an empty value hides it), or public
/// with a non-empty shoName hint; a field when at least public; shoDoNotSerialize keeps either
/// out. An object already being written by this serializer or a parent is skipped (a cycle).
#pragma once

#include "lorvane/serializer/LxCustomSerializer.h"

#include <memory>
#include <vector>

namespace lorvane {

class TLxMemberPlans;

class TLxSerializer : public TLxCustomSerializer, public virtual ILxSerializer {
  LX_CLASS(TLxSerializer, TLxCustomSerializer)
  TLxSerializer() = default;

  void Create(void* AInstancePtr, const TLxTypeInfo* ATypeInfo) override;
  using TLxCustomSerializer::Create;

  // The walk and the write operations, in slot order.
  /// Writes this serializer's value as the member AMemberName of AParent; APath is the parent's
  /// path (messages name members by their dotted path from the root).
  virtual void DoSerialize(TLxSerializer* AParent, std::u16string_view AMemberName,
                           std::u16string_view APath);
  /// The opening of a record, class or array (and of the root); nothing here.
  virtual void SerializeStartType(std::u16string_view AMemberName, const TLxTypeInfo* ATypeInfo,
                                  Integer AIdx);
  virtual void SerializeEndType(std::u16string_view AMemberName, const TLxTypeInfo* ATypeInfo,
                                Integer AIdx);
  /// Before each member, on the enclosing object's serializer; nothing here.
  virtual void SerializeName(std::u16string_view AMemberName, TLxSerializerMemberType AMemberType,
                             TLxTypeKind AParentTypeKind, TLxTypeKind ATypeKind);
  /// One simple value (and nil); AIdx is -1 for a member, the index for an array element;
  /// AAttribs the member's annotations or nil. Nothing here.
  virtual void SerializeValue(std::u16string_view AMemberName, const TLxTypeInfo* AMemberTypeInfo,
                              const TValue& AValue, Integer AIdx,
                              const std::vector<TCustomAttribute*>* AAttribs);
  /// The text as UTF-8 bytes.
  TLxSerializedData Serialize() override;
  /// The root run into AStream.
  void Serialize(TStream* AStream) override;
  /// The arguments of a call of the event type AType (described with LxDescribeEvent) as one
  /// construct, each argument as a member named by its parameter. A count other than the
  /// parameters' raises Exception "Failed to trigger the event!\r\nThe paramatercount does not
  /// match the count of the prototype.". ATypeName is not used.
  virtual void Serialize(TStream* AStream, const TLxTypeInfo* AType, std::u16string_view ATypeName,
                         const std::vector<TValue>& AArgs);

  // The steps of the walk, public to helpers.
  void SerializeChild(std::u16string_view AMemberName, std::u16string_view ATypeName, void* AData,
                      const TLxTypeInfo* ATypeInfo, Integer AIdx);
  /// A new serializer of the class registered for ATypeInfo, with this one as parent; the
  /// caller frees it.
  TLxSerializer* CreateChildSerializer(void* AData, const TLxTypeInfo* ATypeInfo);
  void SerializeClass(std::u16string_view AName, TClass AClass, TObject* AObject, Integer AIdx);
  void SerializeRecord(std::u16string_view AName, const TLxTypeInfo* ATypeInfo, void* AData,
                       const TLxTypeInfo* AValueType, Integer AIdx);
  void SerializeArray(std::u16string_view AName, const TLxTypeInfo* ATypeInfo, void* AData,
                      const TLxTypeInfo* AValueType, Integer AIdx);
  void SerializeInterface(std::u16string_view AName, const TLxTypeInfo* ATypeInfo,
                          IInterface* AInterface, Integer AIdx);
  void SerializeFieldOrProp(std::u16string_view AName, const TLxTypeInfo* ATypeInfo,
                            const TValue& AValue, const std::vector<TCustomAttribute*>* AAttribs);

  /// Raw bytes, and wide text as UTF-8, into the stream: for format classes.
  void Write(std::string_view ABytes);
  void Write(std::u16string_view AText);

  const UnicodeString& GetMemberName() const noexcept { return FMemberName; }
  const UnicodeString& GetPath() const noexcept { return FPath; }
  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

protected:
  ~TLxSerializer() override = default;

  UnicodeString FMemberName;
  UnicodeString FPath;
  IPtr<ILxSerializerHelper> FHelper;

private:
  /// The members to write of each type met, worked out once per run: the root makes them, its
  /// children share them.
  std::shared_ptr<TLxMemberPlans> FMemberPlans;
  const std::shared_ptr<TLxMemberPlans>& MemberPlansShared();
  TLxMemberPlans& MemberPlans();

  void SerializeMembers();
  void SerializeArrayElements(TLxSerializer* AParent, std::u16string_view AMemberName);
  bool IsBeingWritten(TObject* AObject) const noexcept;
  bool OptionIsTrue(std::u16string_view AName);
  /// OptionIsTrue("excludechildren"), read again only after an option changed: asked for every
  /// member that holds an object or record.
  bool ExcludesChildren();
  UInt64 FExcludeChildrenReadAt = ~UInt64(0);
  bool FExcludeChildren = false;
};

} // namespace lorvane
