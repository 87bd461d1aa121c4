/// The counted faces of the JSON value tree:
///   ILxJSONBase        every value: typed access, members, items, text
///   ILxJSONSimpleType  a string, number, boolean or null
///   ILxJSONMember      a name with its value
///   ILxJSONObject      members, in insertion order
///   ILxJSONArray       items
///   ILxJSONDocument    the top of a tree: root value, loading and saving
///
/// The tree's objects implement these interfaces themselves; no extra object is made for an
/// interface. A value that belongs to a tree isn't freed by its last interface reference (the
/// tree owns it); a value taken out of its tree while references are held lives until the last
/// one goes. Interface arguments are borrowed for the call and lead back to their object through
/// ILxObject; an interface that leads to no object of the expected class raises EInvalidCast
/// "Invalid class typecast". Results are counted references, nil where the object gives none.
/// Failures are those of the object operations (see LxJSONValues.h).
#pragma once

#include "lorvane/json/LxJSONTypes.h"
#include "lorvane/platform/Streams.h"
#include "lorvane/platform/Variants.h"

namespace lorvane {

class ILxJSONObject;
class ILxJSONArray;
class ILxJSONMember;

class ILxJSONBase : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0xB066104C, 0x07FC, 0x478C, {0xBE, 0xCB, 0xA1, 0xDC, 0x4C, 0xD6, 0xD3, 0x02}};
  virtual bool GetAsBoolean() = 0;
  virtual Double GetAsDouble() = 0;
  virtual Integer GetAsInteger() = 0;
  virtual Int64 GetAsLargeInt() = 0;
  virtual LxJSONString GetAsString() = 0;
  virtual Variant GetAsVariant() = 0;
  virtual IPtr<ILxJSONObject> GetAsObjectIntf() = 0;
  virtual IPtr<ILxJSONArray> GetAsArrayIntf() = 0;
  virtual LxJSONString GetName() = 0;
  /// A member's value.
  virtual IPtr<ILxJSONBase> GetValue() = 0;
  virtual TLxJSONDataType GetJSONType() = 0;
  virtual LxJSONString GetAsJSON() = 0;
  /// The member of that name; made (without a value) when there is none.
  virtual IPtr<ILxJSONBase> GetMemberEx(const LxJSONString& AName) = 0;
  virtual IPtr<ILxJSONBase> GetItem(Integer AIdx) = 0;
  virtual void SetAsBoolean(bool AValue) = 0;
  virtual void SetAsDouble(Double AValue) = 0;
  virtual void SetAsInteger(Integer AValue) = 0;
  virtual void SetAsString(const LxJSONString& AValue) = 0;
  virtual void SetAsLargeInt(Int64 AValue) = 0;
  virtual void SetAsJSON(const LxJSONString& AJSON) = 0;
  virtual void SetAsVariant(const Variant& AValue) = 0;
  virtual void SetName(const LxJSONString& AName) = 0;
  virtual Integer Count() = 0;
  virtual IPtr<ILxJSONMember> FindMemberIntf(const LxJSONString& AName,
                                             bool ACaseInsensitive = false) = 0;
  virtual bool HasMember(const LxJSONString& AName, bool ACaseInsensitive = false) = 0;
  virtual IPtr<ILxJSONMember> GetMemberIntf(const LxJSONString& AName,
                                            TLxJDOCSelectOptions ASelectOptions = {}) = 0;
  /// The values APath selects from here (see TLxJSONBase::CreateNodeList), in a list that ends
  /// with its last reference.
  virtual IPtr<ILxJSONArray> SelectIntf(const LxJSONString& APath,
                                        TLxJDOCSelectOptions AOptions = {}) = 0;

protected:
  ~ILxJSONBase() = default;
};

/// GetAsVariant and SetAsVariant read and write the value as it is held.
class ILxJSONSimpleType : public virtual ILxJSONBase {
public:
  static constexpr TGUID IID{
      0x656B8078, 0xC725, 0x46C3, {0x98, 0xF4, 0x2A, 0xC0, 0x0E, 0x94, 0xE8, 0x2D}};
  Variant GetAsVariant() override = 0;
  void SetAsVariant(const Variant& AValue) override = 0;

protected:
  ~ILxJSONSimpleType() = default;
};

class ILxJSONMember : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0xF512BFAB, 0x9426, 0x43D4, {0x93, 0x70, 0xB4, 0x29, 0x9C, 0xFA, 0xBD, 0x78}};
  /// Nil while the member has no value.
  virtual IPtr<ILxJSONBase> GetValue() = 0;
  virtual LxJSONString GetName() = 0;
  virtual Integer GetAsInteger() = 0;
  virtual Double GetAsDouble() = 0;
  virtual LxJSONString GetAsString() = 0;
  virtual bool GetAsBoolean() = 0;
  virtual Int64 GetAsLargeInt() = 0;
  virtual Variant GetAsVariant() = 0;
  virtual IPtr<ILxJSONObject> GetAsObjectIntf() = 0;
  virtual IPtr<ILxJSONArray> GetAsArrayIntf() = 0;
  virtual void SetName(const LxJSONString& AName) = 0;
  virtual void SetAsInteger(Integer AValue) = 0;
  virtual void SetAsDouble(Double AValue) = 0;
  virtual void SetAsString(const LxJSONString& AValue) = 0;
  virtual void SetAsBoolean(bool AValue) = 0;
  virtual void SetAsLargeInt(Int64 AValue) = 0;
  virtual void SetAsVariant(const Variant& AValue) = 0;
  /// Replaces the value by a new one of that type.
  virtual IPtr<ILxJSONBase> CreateValueIntf(TLxJSONDataType AValueType) = 0;

protected:
  ~ILxJSONMember() = default;
};

class ILxJSONObject : public virtual ILxJSONBase {
public:
  static constexpr TGUID IID{
      0x04447BA1, 0xA3B3, 0x4360, {0x80, 0x37, 0x60, 0xD8, 0x93, 0x24, 0x6C, 0x47}};
  virtual IPtr<ILxJSONMember> AddMemberIntf1(const LxJSONString& AName) = 0;
  virtual IPtr<ILxJSONMember> AddMemberIntf2(const LxJSONString& AName,
                                             TLxJSONDataType AValueType) = 0;
  virtual IPtr<ILxJSONMember> AddMemberIntf3(const LxJSONString& AName, TLxJSONDataType AValueType,
                                             const LxJSONString& AValue) = 0;
  virtual IPtr<ILxJSONMember> AddMemberIntf4(const LxJSONString& AName, const Variant& AValue) = 0;
  virtual void DeleteMember(Integer AIdx) = 0;
  virtual void RemoveMemberIntf(ILxJSONMember* AMember) = 0;

protected:
  ~ILxJSONObject() = default;
};

class ILxJSONArray : public virtual ILxJSONBase {
public:
  static constexpr TGUID IID{
      0xB951230A, 0xF697, 0x4675, {0xB7, 0x47, 0xAD, 0x02, 0xC7, 0xD5, 0xE4, 0x42}};
  virtual IPtr<ILxJSONBase> AddValueIntf1(TLxJSONDataType AValueType) = 0;
  virtual IPtr<ILxJSONBase> AddValueIntf2(TLxJSONDataType AValueType,
                                          const LxJSONString& AValue) = 0;
  virtual IPtr<ILxJSONBase> AddValueIntf3(const Variant& AValue) = 0;
  virtual void DeleteValue(Integer AIdx) = 0;
  virtual void RemoveValueIntf(ILxJSONBase* AValue) = 0;
  virtual void Exchange(Integer AIdx1, Integer AIdx2) = 0;

protected:
  ~ILxJSONArray() = default;
};

/// FindMemberIntf and GetMemberIntf ask the root value; without one they raise
/// ELxJSONParseError "There is no root value!" (code 10).
class ILxJSONDocument : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x5B812CA8, 0x9559, 0x447B, {0xA1, 0xA4, 0x25, 0x70, 0x03, 0x47, 0xA2, 0x46}};
  /// Nil for an empty document.
  virtual IPtr<ILxJSONBase> GetRootValueIntf() = 0;
  virtual LxJSONString GetAsJSON() = 0;
  virtual LxJSONString GetFormattedJSON() = 0;
  virtual void SetAsJSON(const LxJSONString& AJSON) = 0;
  /// Replaces the root value by a new one of that type.
  virtual IPtr<ILxJSONBase> CreateRootValueIntf(TLxJSONDataType AValueType) = 0;
  virtual IPtr<ILxJSONMember> FindMemberIntf(const LxJSONString& AName,
                                             bool ACaseInsensitive = false) = 0;
  virtual IPtr<ILxJSONMember> GetMemberIntf(const LxJSONString& AName,
                                            TLxJDOCSelectOptions ASelectOptions = {}) = 0;
  virtual IPtr<ILxJSONArray> SelectIntf(const LxJSONString& APath,
                                        TLxJDOCSelectOptions AOptions = {}) = 0;
  /// A byte order mark at the stream's position decides the code page.
  virtual void LoadFromStream(TStream* AStream) = 0;
  virtual void LoadFromStream(TStream* AStream, Word ACodePage, bool AIsUrlFormEncoded) = 0;
  virtual void LoadFromFile(const TFileName& AFilename, Word AMode) = 0;
  virtual void SaveToFile(const TFileName& AFilename, bool AFormatted) = 0;
  virtual void SaveToStream(TStream* AStream, bool AFormatted, Word ACodePage, bool AWriteBOM) = 0;

protected:
  ~ILxJSONDocument() = default;
};

} // namespace lorvane
