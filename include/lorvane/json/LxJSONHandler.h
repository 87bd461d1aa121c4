/// TLxJSONHandler: builds the value tree from the events of a JSON reader, starting at a given
/// value of the tree.
#pragma once

#include "lorvane/json/LxJSONEventInterfaces.h"
#include "lorvane/json/LxJSONValues.h"

namespace lorvane {

class TLxJSONReader;
struct TJSONByteTokens;

/// The cursor starts at AAddTo and moves as follows:
///   StartObject, StartArray  on a document: a new root value; on an array: a new item; on a
///                            member: a new value; on an object: a new value for the member
///                            added last. An object without members takes an object text's
///                            members itself (the cursor stays). The new value is the cursor.
///   StartMember              a new member (with a null value) on the object under the cursor,
///                            with the raw name; the cursor stays
///   Value                    a new simple value for the object's member added last, or a new
///                            item of the array; it holds the unescaped text (LxJSONtoStr) as a
///                            string whatever its type, and is typed AValueType
///   EndObject, EndArray      the cursor climbs to the owner, and on over members, to the next
///                            object, array or document (nil at the top). A nil cursor stays nil.
/// A form post reader (TLxFormURLEncodedJSONReader) sends closing calls that don't pair with
/// the opening ones (an EndObject for a member whose value was an array, or at the change of an
/// array index). For its events a closing call leaves the nearest value of its own kind under
/// the cursor's path (EndObject an object, EndArray an array), climbing over values of the other
/// kind, and never leaves the form's object: every pair of the form lands where its name says.
/// Anything else raises: a structure or value where the tree can't take it (on a simple value,
/// on nil, a simple value on a document or member, an array or value on an object without
/// members) ELxJSONException "oeps?" (code 0); a member outside an object Exception "Invalid
/// objecttype"; a Value event of type jdtObject or jdtArray EInvalidCast "Invalid class
/// typecast". The other events and the error handler's methods do nothing.
///
/// A handler is made for one parse by its user, who frees it; take it off the reader first.
class TLxJSONHandler : public TLxObject, public ILxJSONErrorHandler, public ILxJSONContentHandler {
  LX_CLASS(TLxJSONHandler, TLxObject)
  TLxJSONHandler(TLxJSONReader* AJSONReader, TLxJSONBase* AAddTo);

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

  // ILxJSONContentHandler
  void SetDocumentLocator(ILxJSONLocator* ALocator) override;
  void StartDocument() override;
  void StartObject() override;
  void StartMember(const LxJSONString& AName) override;
  void StartArray() override;
  void Value(TLxJSONDataType AValueType, const LxJSONString& AValue) override;
  void EndArray() override;
  void EndMember() override;
  void EndObject() override;
  void EndDocument() override;

  // ILxJSONErrorHandler
  void Warning(ILxJSONLocator* ALocator, const LxJSONString& AErrMsg) override;
  void Error(ILxJSONLocator* ALocator, const LxJSONString& AErrMsg) override;
  void FatalError(ILxJSONLocator* ALocator, const LxJSONString& AErrMsg) override;

  /// Where the next value goes.
  TLxJSONBase* GetCurrValue() const noexcept { return FCurrValue; }

protected:
  ~TLxJSONHandler() override = default;

  TLxJSONReader* FReader;
  TLxJSONBase* FCurrValue;

private:
  /// The events come from a form post reader.
  bool FFormPost;
  /// The form's object, out of which closing calls of a form post don't climb.
  TLxJSONBase* FFormObject = nullptr;
  /// Names met lately, by a hash of their text: members of the same name share one text.
  static constexpr std::size_t NameSlots = 64;
  TJSONName FNames[NameSlots];
  /// Set by the tree's own load, which calls Settle when the parse ends however it ends: a new
  /// member waits for its value instead of taking a null value that an object or array value
  /// would free again. No one else sees the tree in between.
  bool FDeferNullValues = false;
  TLxJSONMember* FPending = nullptr;
  /// The waiting member, if any, takes its null value now.
  void Settle();
  /// Settle, unless the member that waits is the one the next value goes to.
  void SettleUnlessNext();
  friend class TLxJSONBase;

  void StartStructure(TLxJSONDataType AValueType);
  void EndStructure(TLxJSONDataType AValueType);

  // The tree's own load takes short plain tokens of UTF-8 text from its reader as bytes, through
  // the reader's grammar (src/json/LxJSONReader.cpp).
  friend struct TJSONByteTokens;
  /// StartMember with a name of ASCII bytes.
  void StartMemberBytes(std::string_view AName);
  /// Value with a text of at most TLxJSONSimpleType::ShortCapacity ASCII bytes without escapes;
  /// that many bytes can be read at AText, of which ALength are the text.
  void ValueBytes(TLxJSONDataType AValueType, const char* AText, std::size_t ALength);
  /// The object the next member goes to, after the waiting member has settled; nil when the
  /// object's class is a user's, which adds members its own way.
  TLxJSONObject* MemberTarget();
  /// A member named AName as the last one of AObject, the tree's own class.
  void AddLoadedMember(TLxJSONObject* AObject, const TJSONName& AName);
  /// The simple value the next Value goes to, made as StartMember's value or as an array item.
  TLxJSONSimpleType* ValueTarget(TLxJSONDataType AValueType);

  /// A new value of class T as the last child of AOwner, the tree's own class whose linking
  /// nobody overrides: made without New and linked without the virtual insert, the owner's hold
  /// being the count the constructor starts with.
  template <class T> static T* Link(TLxJSONBase* AOwner);
  /// A new object, array or simple value for AOwner as Link makes it.
  static TLxJSONBase* LinkValue(TLxJSONBase* AOwner, TLxJSONDataType AValueType);
  /// AMember's new value: linked as Link does when the member is the tree's own and has none
  /// yet, else by CreateValue.
  static TLxJSONBase* NewMemberValue(TLxJSONMember* AMember, TLxJSONDataType AValueType);
};

} // namespace lorvane
