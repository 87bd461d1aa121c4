/// Collations through which the document tree compares names and text: the abstract
/// TLxXPathCollation, its class reference TLxXPathCollationClass, and the two collations
/// TLxXPathCollationASCIICI (case-insensitive, the default) and TLxXPathCollationCodepoint.
#pragma once

#include "lorvane/platform/System.h"

namespace lorvane {

class TLxXPathCollation;
/// The address of the one instance of a collation class; equal references name the same class.
using TLxXPathCollationClass = const TLxXPathCollation*;

/// Reached only through class references (StaticClass() of a concrete class); its instances are
/// immutable, live for the whole process, and may be used from several threads at once.
class TLxXPathCollation {
  // Not a TObject: TObject counts live instances for the leak checks, and these never die.
public:
  TLxXPathCollation(const TLxXPathCollation&) = delete;
  TLxXPathCollation& operator=(const TLxXPathCollation&) = delete;

  /// -1, 0 or 1; a total order, the same on every machine.
  virtual Integer Compare(const UnicodeString& AValue1, const UnicodeString& AValue2) const = 0;
  /// First position, from 1, of ASubStr in AStr under this collation's notion of case; 0 when
  /// absent and for an empty ASubStr.
  virtual Integer Pos(const UnicodeString& ASubStr, const UnicodeString& AStr) const = 0;
  /// True exactly when Compare gives 0, but cheaper: name look-ups use it.
  bool SameText(const UnicodeString& AValue1, const UnicodeString& AValue2) const {
    return Equals(AValue1, AValue2);
  }
  virtual UnicodeString ClassName() const = 0;

protected:
  constexpr TLxXPathCollation() noexcept = default;
  ~TLxXPathCollation() = default;
  /// What SameText answers. An override must agree with Compare() == 0.
  virtual bool Equals(const UnicodeString& AValue1, const UnicodeString& AValue2) const {
    return Compare(AValue1, AValue2) == 0;
  }
};

/// Case-insensitive: texts are equal when they are equal after Unicode simple case folding;
/// Pos ignores the case of A to Z only.
class TLxXPathCollationASCIICI final : public TLxXPathCollation {
public:
  static TLxXPathCollationClass StaticClass() noexcept;

  Integer Compare(const UnicodeString& AValue1, const UnicodeString& AValue2) const override;
  Integer Pos(const UnicodeString& ASubStr, const UnicodeString& AStr) const override;
  UnicodeString ClassName() const override;

protected:
  bool Equals(const UnicodeString& AValue1, const UnicodeString& AValue2) const override;

private:
  constexpr TLxXPathCollationASCIICI() noexcept = default;
};

/// Code point order; equality and Pos are exact.
class TLxXPathCollationCodepoint final : public TLxXPathCollation {
public:
  static TLxXPathCollationClass StaticClass() noexcept;

  Integer Compare(const UnicodeString& AValue1, const UnicodeString& AValue2) const override;
  Integer Pos(const UnicodeString& ASubStr, const UnicodeString& AStr) const override;
  UnicodeString ClassName() const override;

protected:
  bool Equals(const UnicodeString& AValue1, const UnicodeString& AValue2) const override;

private:
  constexpr TLxXPathCollationCodepoint() noexcept = default;
};

} // namespace lorvane
