/// The character data of the document tree and its faces:
///   TLxDOMCharacterData  the stored value and the edits on it; the base of the three below
///   TLxDOMText           text, stored as it stands in a document, entity references in place
///   TLxDOMComment        the text between a comment's delimiters, stored as it is
///   TLxDOMCDATA          the text between a CDATA section's delimiters, stored as it is
///   TLxDOM...Impl        the faces, answering ILxDOMCharacterData, ILxDOMText, ILxDOMComment and
///                        ILxDOMCDATA
///
/// The stored value is what a document holds and what output writes. Text decodes it on every
/// read (LxXMLToStr) and escapes a value once on every write (LxStrToXML); no decoded copy is
/// kept. A loader stores what it read through SetStoredValue, which converts nothing.
#pragma once

#include "lorvane/dom/LxDOMNode.h"

namespace lorvane {

class TLxDOMCharacterDataImpl;
class TLxDOMText;
class TLxDOMTextImpl;
class TLxDOMCommentImpl;
class TLxDOMCDATAImpl;

/// A node with a value and no content. Made itself it is a text node in all but its class: its
/// name is "#text", its kind ntText, and it keeps the escaped form, which comments and CDATA
/// sections replace by the value as it is.
///
/// The edits work on the decoded value (GetNodeValue) and store the result with SetNodeValue,
/// so on text a reference that stood for a character that needs no escaping is not restored.
/// Offsets count UTF-16 code units from 1 (a surrogate pair is two), and an offset below 1
/// counts as 1, as Copy takes it. Offsets past the end and counts beyond it are clamped: the
/// part that exists is used, and a count below 1 takes nothing. No offset or count raises; a
/// text whose stored form holds a malformed numeric reference raises LxXMLToStr's
/// EConvertError on every read, edits included.
class TLxDOMCharacterData : public TLxDOMNode {
  LX_CLASS(TLxDOMCharacterData, TLxDOMNode)
  TLxDOMCharacterData();

  TLxDOMObjectImpl* CreateDOMImpl(TLxDOMObject* ADOMObject) override;
  /// The decoded stored value.
  UnicodeString GetNodeValue() override;
  /// Stores Value escaped, apostrophes and double quotes included.
  void SetNodeValue(const UnicodeString& Value) override;
  /// Copies the stored value unchanged: nothing is escaped twice.
  TLxDOMNode* CreateClone() override;

  UnicodeString GetData() { return GetNodeValue(); }
  void SetData(const UnicodeString& Value) { SetNodeValue(Value); }

  /// The value in the form a document holds it (for text: escaped), without conversion.
  const UnicodeString& GetStoredValue() const noexcept { return FNodeValue; }
  /// Stores AValue as the document form of the value, converting nothing: for text the caller
  /// vouches that it is escaped text as a document holds it.
  void SetStoredValue(const UnicodeString& AValue) { FNodeValue = AValue; }

  /// Up to ACount characters of the value from AOffset.
  UnicodeString Substring(Integer AOffset, Integer ACount);
  void AppendStr(const UnicodeString& AData);
  /// An offset past the end appends.
  void InsertStr(Integer AOffset, const UnicodeString& AData);
  void DeleteStr(Integer AOffset, Integer ACount);
  /// Deletes Count characters at AOffset, then inserts AData there.
  void ReplaceStr(Integer AOffset, Integer Count, const UnicodeString& AData);

  /// The face, nil while no interface is held.
  TLxDOMCharacterDataImpl* DOMCharacterDataImpl() const noexcept;

protected:
  ~TLxDOMCharacterData() override = default;

  UnicodeString FNodeValue;
};

/// Text: the stored value is the escaped form, references undecoded, so that a document that is
/// loaded and saved keeps its references as they came.
class TLxDOMText : public TLxDOMCharacterData {
  LX_CLASS(TLxDOMText, TLxDOMCharacterData)
  TLxDOMText();

  TLxDOMObjectImpl* CreateDOMImpl(TLxDOMObject* ADOMObject) override;

  /// Keeps the first AOffset characters of the value (none for an offset below 1) and gives the
  /// rest (all of it beyond the end: then nothing) to a new TLxDOMText, also when this is a
  /// CDATA section. The parent makes the new node right behind this one through its AddChild,
  /// and owns it. Raises ELxDomException "A text node can't be split without a parent node."
  /// when there is no parent, changing nothing.
  TLxDOMText* SplitText(Integer AOffset);

  TLxDOMTextImpl* DOMTextImpl() const noexcept;

protected:
  /// The stored form, without line end or indentation.
  void WriteXML(TLxDOMWriter& AWriter, bool AFormatted, Integer& ALevel) override;
  ~TLxDOMText() override = default;
};

/// A comment: the value is stored and given as it is, "--" included.
class TLxDOMComment : public TLxDOMCharacterData {
  LX_CLASS(TLxDOMComment, TLxDOMCharacterData)
  TLxDOMComment();

  TLxDOMObjectImpl* CreateDOMImpl(TLxDOMObject* ADOMObject) override;
  UnicodeString GetNodeValue() override;
  void SetNodeValue(const UnicodeString& Value) override;

  TLxDOMCommentImpl* DOMCommentImpl() const noexcept;

protected:
  /// Formatted: on its own line, indented under an element that doesn't preserve space.
  void WriteXML(TLxDOMWriter& AWriter, bool AFormatted, Integer& ALevel) override;
  ~TLxDOMComment() override = default;
};

/// A CDATA section: the value is stored and given as it is, markup characters included.
class TLxDOMCDATA : public TLxDOMText {
  LX_CLASS(TLxDOMCDATA, TLxDOMText)
  TLxDOMCDATA();

  TLxDOMObjectImpl* CreateDOMImpl(TLxDOMObject* ADOMObject) override;
  UnicodeString GetNodeValue() override;
  void SetNodeValue(const UnicodeString& Value) override;

  TLxDOMCDATAImpl* DOMCDATAImpl() const noexcept;

protected:
  /// The stored form between the section's delimiters, without line end or indentation.
  void WriteXML(TLxDOMWriter& AWriter, bool AFormatted, Integer& ALevel) override;
  ~TLxDOMCDATA() override = default;
};

class TLxDOMCharacterDataImpl : public TLxDOMNodeImpl, public virtual ILxDOMCharacterData {
  LX_CLASS(TLxDOMCharacterDataImpl, TLxDOMNodeImpl)
  explicit TLxDOMCharacterDataImpl(TLxDOMCharacterData* ADOMObject) : TLxDOMNodeImpl(ADOMObject) {}

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;
  TLxDOMCharacterData* DOMCharacterData() const noexcept {
    return static_cast<TLxDOMCharacterData*>(FDOMObject);
  }

  UnicodeString Substring(Integer AOffset, Integer ACount) override;
  void AppendStr(const UnicodeString& AData) override;
  void InsertStr(Integer AOffset, const UnicodeString& AData) override;
  void DeleteStr(Integer AOffset, Integer ACount) override;
  void ReplaceStr(Integer AOffset, Integer Count, const UnicodeString& AData) override;

protected:
  ~TLxDOMCharacterDataImpl() override = default;
};

class TLxDOMTextImpl : public TLxDOMCharacterDataImpl, public virtual ILxDOMText {
  LX_CLASS(TLxDOMTextImpl, TLxDOMCharacterDataImpl)
  explicit TLxDOMTextImpl(TLxDOMText* ADOMObject) : TLxDOMCharacterDataImpl(ADOMObject) {}

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;
  TLxDOMText* DOMText() const noexcept { return static_cast<TLxDOMText*>(FDOMObject); }

  IPtr<ILxDOMText> SplitTxt(Integer AOffset) override;

protected:
  ~TLxDOMTextImpl() override = default;
};

class TLxDOMCommentImpl : public TLxDOMCharacterDataImpl, public virtual ILxDOMComment {
  LX_CLASS(TLxDOMCommentImpl, TLxDOMCharacterDataImpl)
  explicit TLxDOMCommentImpl(TLxDOMComment* ADOMObject) : TLxDOMCharacterDataImpl(ADOMObject) {}

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

protected:
  ~TLxDOMCommentImpl() override = default;
};

class TLxDOMCDATAImpl : public TLxDOMTextImpl, public virtual ILxDOMCDATA {
  LX_CLASS(TLxDOMCDATAImpl, TLxDOMTextImpl)
  explicit TLxDOMCDATAImpl(TLxDOMCDATA* ADOMObject) : TLxDOMTextImpl(ADOMObject) {}

  HRESULT QueryInterface(const TGUID& AIID, void** AObj) override;

protected:
  ~TLxDOMCDATAImpl() override = default;
};

} // namespace lorvane
