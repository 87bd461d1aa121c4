#include "serializer/MemberPlans.h"

#include "lorvane/platform/SysUtils.h"

namespace lorvane {

namespace {

std::vector<TLxPlannedMember> PlanOf(const TLxTypeDescription& ADescription) {
  std::vector<TLxPlannedMember> Plan;
  // Names compared as the walk always has: case-insensitively, and counted even for members
  // that are then left out.
  std::vector<std::u16string_view> Seen;
  const auto FirstTime = [&Seen](std::u16string_view AName) {
    for (std::u16string_view Name : Seen)
      if (SameText(Name, AName))
        return false;
    Seen.push_back(AName);
    return true;
  };

  for (const TLxPropertyDescription* Property : ADescription.GetProperties()) {
    if (!FirstTime(Property->GetName()))
      continue;
    if (Property->FindHint(shoDoNotSerialize) || !Property->GetIsReadable())
      continue;
    const SerializerHint* NameHint = Property->FindHint(shoName);
    switch (Property->GetVisibility()) {
    case mvPublic:
      if (!NameHint || NameHint->GetValue().empty())
        continue;
      break;
    case mvStreamable:
      if (NameHint && NameHint->GetValue().empty())
        continue;
      break;
    default:
      continue;
    }
    Plan.push_back({Property, nullptr, NameHint ? NameHint->GetValue() : Property->GetName()});
  }

  for (const TLxFieldDescription* Field : ADescription.GetFields()) {
    if (!FirstTime(Field->GetName()))
      continue;
    if (Field->FindHint(shoDoNotSerialize) || Field->GetVisibility() < mvPublic)
      continue;
    if (const SerializerHint* NameHint = Field->FindHint(shoName);
        NameHint && NameHint->GetValue().empty())
      continue;
    Plan.push_back({nullptr, Field, Field->GetName()});
  }
  return Plan;
}

} // namespace

const std::vector<TLxPlannedMember>& TLxMemberPlans::For(const TLxTypeDescription& ADescription) {
  auto At = FPlans.find(&ADescription);
  if (At == FPlans.end())
    At = FPlans.emplace(&ADescription, PlanOf(ADescription)).first;
  return At->second;
}

} // namespace lorvane
