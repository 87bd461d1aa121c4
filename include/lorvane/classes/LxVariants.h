/// Lenient reading of Variant values with a default:
///   LxVarIsEmpty, LxVarArrayCount                 tests
///   LxVarToStr, LxVarToBool, LxVarBool            text and truth
///   LxVarToInt, LxVarToInt64, LxVarToDouble, LxVarToExtended   numbers
///
/// Rules shared by the conversions:
/// - Empty and Null give the default, whatever ARaiseError says.
/// - Any other value converts by the Variant rules (Variants.h): true is -1 as a number, a float
///   goes to an integer rounded half to even, a date is its day number, a text is a number by
///   StrToFloat or StrToInt64 ('$' hex too) and a boolean when it is "true"/"false" in any case
///   or a number; blanks around a decimal number or a boolean text don't matter (" 12 " is 12).
///   An empty text is a text: LxVarToStr gives "", the others find no number in it.
/// - A value that doesn't convert (a text that isn't a number, an array, an interface, a number
///   too big for the result) gives the default when ARaiseError is false, and raises the Variant
///   failure when it is true: EVariantTypeCastError "Could not convert variant of type
///   (UnicodeString) into type (Double)", EVariantOverflowError "Overflow while converting
///   variant of type (Double) into type (Integer)" and their kin.
#pragma once

#include "lorvane/platform/Variants.h"

#include <string_view>

namespace lorvane {

/// Empty or Null.
bool LxVarIsEmpty(const Variant& AValue) noexcept;
/// The number of elements of an array Variant; 0 for any other value.
Integer LxVarArrayCount(const Variant& AValue) noexcept;

/// The Variant's text: a boolean is "True"/"False", a float FloatToStr, a date DateTimeToStr.
UnicodeString LxVarToStr(const Variant& AValue, std::u16string_view ADefault, bool ARaiseError);
bool LxVarToBool(const Variant& AValue, bool ADefault, bool ARaiseError);
/// LxVarToBool that never raises.
bool LxVarBool(const Variant& AValue, bool ADefault);
Integer LxVarToInt(const Variant& AValue, Integer ADefault, bool ARaiseError);
Int64 LxVarToInt64(const Variant& AValue, Int64 ADefault, bool ARaiseError);
Double LxVarToDouble(const Variant& AValue, Double ADefault, bool ARaiseError);
/// The same as LxVarToDouble: Extended is 64 bits here.
Extended LxVarToExtended(const Variant& AValue, Extended ADefault, bool ARaiseError);

} // namespace lorvane
