/// The standard DOM abstraction that code written against the W3C interfaces uses: so far the
/// implementation object. Booleans are 16-bit words, true with all bits set.
#pragma once

#include "lorvane/platform/System.h"

namespace lorvane {

using DOMString = UnicodeString;
/// 0 is false; any other value counts as true, and true is given as -1.
using WordBool = SmallInt;
constexpr WordBool WordTrue = -1;
constexpr WordBool WordFalse = 0;

/// A document type declaration. This tree has none; the interface names the result type of
/// IDOMImplementation::createDocumentType.
class IDOMDocumentType : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x2A72357E, 0xC28D, 0x42AC, {0x83, 0x1C, 0xEE, 0xAA, 0x96, 0xEC, 0x65, 0x77}};

protected:
  ~IDOMDocumentType() = default;
};

class IDOMImplementation : public virtual IInterface {
public:
  static constexpr TGUID IID{
      0x05C885C5, 0x8CF0, 0x4975, {0x93, 0x66, 0x8F, 0x30, 0x4D, 0x86, 0x26, 0x73}};
  virtual WordBool hasFeature(const DOMString& feature, const DOMString& version) = 0;
  /// Clears AResult first; gives 0 or raises.
  virtual HRESULT createDocumentType(const DOMString& qualifiedName, const DOMString& publicId,
                                     const DOMString& systemId,
                                     IPtr<IDOMDocumentType>& AResult) = 0;

protected:
  ~IDOMImplementation() = default;
};

} // namespace lorvane
