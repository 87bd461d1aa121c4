// Which members of a described type a serializer writes, and under which name, worked out once
// per type and run: what the descriptions and their hints decide alone. What depends on the
// values (nil, cycles, the kinds that a TValue member holds) is still decided per object.
#pragma once

#include "lorvane/serializer/LxCustomSerializer.h"

#include <unordered_map>
#include <vector>

namespace lorvane {

/// A member that goes out unless its value says otherwise: a property or a field.
struct TLxPlannedMember {
  const TLxPropertyDescription* Property = nullptr;
  const TLxFieldDescription* Field = nullptr;
  /// The name written: a property's shoName hint, else the member's own name.
  UnicodeString Name;
};

class TLxMemberPlans {
public:
  /// The members of ADescription in writing order: each property, then each field, a name
  /// counting once (a property hides a field of its name).
  const std::vector<TLxPlannedMember>& For(const TLxTypeDescription& ADescription);

private:
  std::unordered_map<const TLxTypeDescription*, std::vector<TLxPlannedMember>> FPlans;
};

} // namespace lorvane
