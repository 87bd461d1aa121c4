// Unicode normalization and case folding through ICU.
#include "lorvane/platform/Normalization.h"

#include "lorvane/platform/SysUtils.h"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>
#include <unicode/utypes.h>

#include <cstdint>
#include <limits>

namespace lorvane {

namespace {

[[noreturn]] void RaiseFailure(UErrorCode AStatus) {
  throw Exception(u"Unicode normalization failed: %s", {UTF8ToString(u_errorName(AStatus))});
}

int32_t Length32(std::u16string_view AText) {
  if (AText.size() > static_cast<size_t>(std::numeric_limits<int32_t>::max() / 4))
    RaiseFailure(U_INDEX_OUTOFBOUNDS_ERROR);
  return static_cast<int32_t>(AText.size());
}

/// Runs an ICU call that writes UTF-16 into a buffer, growing the buffer once if it was short.
template <class F> UnicodeString IntoBuffer(std::u16string_view AText, F&& ACall) {
  const int32_t Length = Length32(AText);
  UnicodeString Result(static_cast<size_t>(Length) + 16, u'\0');
  UErrorCode Status = U_ZERO_ERROR;
  int32_t Written = ACall(Result.data(), static_cast<int32_t>(Result.size()), Status);
  if (Status == U_BUFFER_OVERFLOW_ERROR) {
    Result.assign(static_cast<size_t>(Written), u'\0');
    Status = U_ZERO_ERROR;
    Written = ACall(Result.data(), static_cast<int32_t>(Result.size()), Status);
  }
  if (U_FAILURE(Status))
    RaiseFailure(Status);
  Result.resize(static_cast<size_t>(Written));
  return Result;
}

const UNormalizer2* Instance(TNorm_Form AForm) {
  UErrorCode Status = U_ZERO_ERROR;
  const UNormalizer2* Result = nullptr;
  switch (AForm) {
  case NormalizationC:
    Result = unorm2_getNFCInstance(&Status);
    break;
  case NormalizationD:
    Result = unorm2_getNFDInstance(&Status);
    break;
  case NormalizationKC:
    Result = unorm2_getNFKCInstance(&Status);
    break;
  case NormalizationKD:
    Result = unorm2_getNFKDInstance(&Status);
    break;
  default:
    return nullptr;
  }
  if (U_FAILURE(Status))
    RaiseFailure(Status);
  return Result;
}

} // namespace

UnicodeString NormalizeString(TNorm_Form AForm, std::u16string_view AText) {
  const UNormalizer2* Normalizer = Instance(AForm);
  if (!Normalizer || AText.empty())
    return UnicodeString(AText);
  return IntoBuffer(AText, [&](char16_t* ADest, int32_t ACapacity, UErrorCode& AStatus) {
    return unorm2_normalize(Normalizer, AText.data(), static_cast<int32_t>(AText.size()), ADest,
                            ACapacity, &AStatus);
  });
}

UnicodeString StripDiacritics(std::u16string_view AText) {
  const UnicodeString Decomposed = NormalizeString(NormalizationKD, AText);
  UnicodeString Kept;
  Kept.reserve(Decomposed.size());
  for (size_t I = 0; I < Decomposed.size();) {
    const size_t Start = I;
    char32_t Code = Decomposed[I++];
    if (Code >= 0xD800 && Code <= 0xDBFF && I < Decomposed.size() && Decomposed[I] >= 0xDC00 &&
        Decomposed[I] <= 0xDFFF)
      Code = 0x10000 + ((Code - 0xD800) << 10) + (Decomposed[I++] - 0xDC00);
    if (u_charType(static_cast<UChar32>(Code)) != U_NON_SPACING_MARK)
      Kept.append(Decomposed, Start, I - Start);
  }
  return NormalizeString(NormalizationC, Kept);
}

UnicodeString FoldCase(std::u16string_view AText) {
  if (AText.empty())
    return UnicodeString();
  return IntoBuffer(AText, [&](char16_t* ADest, int32_t ACapacity, UErrorCode& AStatus) {
    return u_strFoldCase(ADest, ACapacity, AText.data(), static_cast<int32_t>(AText.size()),
                         U_FOLD_CASE_DEFAULT, &AStatus);
  });
}

} // namespace lorvane
