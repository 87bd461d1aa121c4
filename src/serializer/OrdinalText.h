// The text of sets that the format classes share.
#pragma once

#include "lorvane/platform/SysUtils.h"

#include <string_view>

namespace lorvane::ordinaltext {

/// "[clRed,clBlue]" without its brackets and with APrefix cut from each name.
inline UnicodeString WithoutPrefixes(std::u16string_view ASetText, std::u16string_view APrefix) {
  if (ASetText.size() >= 2 && ASetText.front() == u'[' && ASetText.back() == u']')
    ASetText = ASetText.substr(1, ASetText.size() - 2);
  UnicodeString Result;
  for (bool First = true; First || !ASetText.empty(); First = false) {
    const auto Comma = ASetText.find(u',');
    std::u16string_view Name = ASetText.substr(0, Comma);
    if (Name.size() >= APrefix.size() && SameText(Name.substr(0, APrefix.size()), APrefix))
      Name.remove_prefix(APrefix.size());
    if (!First)
      Result += u',';
    Result += Name;
    ASetText.remove_prefix(Comma == std::u16string_view::npos ? ASetText.size() : Comma + 1);
  }
  return Result;
}

} // namespace lorvane::ordinaltext
