// The two built-in collations of the document tree, over the platform's invariant orders.
#include "lorvane/dom/LxDOMCollation.h"

#include "lorvane/platform/Collation.h"
#include "lorvane/platform/SysUtils.h"

namespace lorvane {

// The instances are constant-initialized and trivially destroyed: usable from any static
// initializer or destructor, and never a leak report.

TLxXPathCollationClass TLxXPathCollationASCIICI::StaticClass() noexcept {
  static constinit const TLxXPathCollationASCIICI Instance;
  return &Instance;
}

Integer TLxXPathCollationASCIICI::Compare(const UnicodeString& AValue1,
                                          const UnicodeString& AValue2) const {
  return CompareStringInvariant(AValue1, AValue2, /*AIgnoreCase=*/true);
}

Integer TLxXPathCollationASCIICI::Pos(const UnicodeString& ASubStr,
                                      const UnicodeString& AStr) const {
  return lorvane::Pos(LowerCase(ASubStr), LowerCase(AStr));
}

UnicodeString TLxXPathCollationASCIICI::ClassName() const { return u"TLxXPathCollationASCIICI"; }

bool TLxXPathCollationASCIICI::Equals(const UnicodeString& AValue1,
                                      const UnicodeString& AValue2) const {
  return SameStringInvariant(AValue1, AValue2, /*AIgnoreCase=*/true);
}

TLxXPathCollationClass TLxXPathCollationCodepoint::StaticClass() noexcept {
  static constinit const TLxXPathCollationCodepoint Instance;
  return &Instance;
}

Integer TLxXPathCollationCodepoint::Compare(const UnicodeString& AValue1,
                                            const UnicodeString& AValue2) const {
  return CompareStringInvariant(AValue1, AValue2, /*AIgnoreCase=*/false);
}

Integer TLxXPathCollationCodepoint::Pos(const UnicodeString& ASubStr,
                                        const UnicodeString& AStr) const {
  return lorvane::Pos(ASubStr, AStr);
}

UnicodeString TLxXPathCollationCodepoint::ClassName() const {
  return u"TLxXPathCollationCodepoint";
}

bool TLxXPathCollationCodepoint::Equals(const UnicodeString& AValue1,
                                        const UnicodeString& AValue2) const {
  return AValue1 == AValue2;
}

} // namespace lorvane
