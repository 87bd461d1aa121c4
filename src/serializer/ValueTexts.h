// Texts of values that the format classes share: whole numbers, floats and truth values, a set's
// names without their prefix, and a date's text in the form its type and hints ask for.
#pragma once

#include "lorvane/serializer/LxSerializerTypes.h"
#include "lorvane/xmlutils/LxXMLValues.h"

#include <string_view>

namespace lorvane::valuetext {

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

/// A whole number (of the width of AKind), a float or a truth value as document text; both formats
/// write these alike.
inline UnicodeString ScalarText(TLxTypeKind AKind, const TValue& AValue) {
  switch (AKind) {
  case ltkByte:
    return LxByteToXML(AValue.ToByte());
  case ltkWord:
    return LxWordToXML(AValue.ToWord());
  case ltkLongWord:
    return LxLongWordToXML(AValue.ToLongWord());
  case ltkUInt64:
    return LxUInt64ToXML(AValue.ToUInt64());
  case ltkShortInt:
    return LxShortIntToXML(AValue.ToShortInt());
  case ltkSmallInt:
    return LxSmallIntToXML(AValue.ToSmallInt());
  case ltkInteger:
    return LxLongIntToXML(AValue.ToInteger());
  case ltkInt64:
    return LxInt64ToXML(AValue.ToInt64());
  case ltkExtended:
    return LxExtToXML(AValue.ToExtended());
  case ltkBoolean:
    return AValue.ToBoolean() ? u"true" : u"false";
  default:
    return LxDoubleToXML(AValue.ToDouble());
  }
}

/// A date, time or date-time of kind AKind in document text: with "Z" in UTC for the marker types
/// (TLxUTCDate...), in the zone form that an shoTimezoneFormat hint of AAttribs names, else
/// without a zone.
inline UnicodeString MomentText(const TLxTypeInfo* ADeclared, TLxTypeKind AKind, TDateTime AMoment,
                                const std::vector<TCustomAttribute*>* AAttribs) {
  const auto Text = [AKind, AMoment](TLxTimeZoneFormat AFormat) {
    return AKind == ltkDate   ? LxDateToXML(AMoment, AFormat)
           : AKind == ltkTime ? LxTimeToXML(AMoment, AFormat)
                              : LxDateTimeToXML(AMoment, AFormat);
  };
  const UnicodeString& Name = ADeclared->GetName();
  if (Name == u"TLxUTCDate" || Name == u"TLxUTCTime" || Name == u"TLxUTCDateTime")
    return Text(tzfNone) + u"Z";
  TLxTimeZoneFormat Format = tzfNone;
  const SerializerHint* Zone = nullptr;
  if (AAttribs && GetSerializerHint(*AAttribs, shoTimezoneFormat, Zone)) {
    static constexpr std::pair<std::u16string_view, TLxTimeZoneFormat> Names[] = {
        {u"tzfNone", tzfNone}, {u"tzfTimezone", tzfTimezone}, {u"tzfUTC", tzfUTC}};
    for (const auto& [ZoneName, ZoneFormat] : Names)
      if (SameText(ZoneName, Zone->GetValue()))
        Format = ZoneFormat;
  }
  return Text(Format);
}

} // namespace lorvane::valuetext
