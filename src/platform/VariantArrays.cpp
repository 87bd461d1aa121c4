// Variant arrays: one dimension with bounds, elements of one type code.
#include "lorvane/platform/Variants.h"

#include "platform/VariantCore.h"

namespace lorvane {

using namespace variants;

namespace {

detail::TVarArray& ArrayOf(const Variant& AValue) {
  if (!VarIsArray(AValue))
    RaiseNotArray();
  return VA::Array(AValue);
}

std::size_t SlotOf(const detail::TVarArray& AArray, Integer AIndex) {
  const Int64 Slot = Int64{AIndex} - AArray.LowBound;
  if (Slot < 0 || Slot >= static_cast<Int64>(AArray.Items.size()))
    RaiseBadIndex();
  return static_cast<std::size_t>(Slot);
}

std::size_t ElementCount(Integer ALowBound, Integer AHighBound) {
  const Int64 Count = Int64{AHighBound} - ALowBound + 1;
  if (Count < 0 || Count > MaxArrayElements)
    RaiseArrayCreate();
  return static_cast<std::size_t>(Count);
}

} // namespace

Variant VarArrayCreate(std::initializer_list<Integer> ABounds, TVarType AVarType) {
  if (ABounds.size() != 2)
    RaiseArrayCreate();
  if (!IsValidElementType(AVarType))
    RaiseBadVarType();
  const Integer Low = ABounds.begin()[0];
  const std::size_t Count = ElementCount(Low, ABounds.begin()[1]);
  return VA::MakeArray(AVarType, Low, std::vector<Variant>(Count, ZeroOf(AVarType)));
}

Variant VarArrayOf(std::initializer_list<Variant> AValues) {
  return VA::MakeArray(varVariant, 0, std::vector<Variant>(AValues));
}

Variant VarArrayOf(const std::vector<Variant>& AValues) {
  if (static_cast<Int64>(AValues.size()) > MaxArrayElements)
    RaiseArrayCreate();
  return VA::MakeArray(varVariant, 0, AValues);
}

Integer VarArrayDimCount(const Variant& AValue) noexcept { return VarIsArray(AValue) ? 1 : 0; }

Integer VarArrayLowBound(const Variant& AValue, Integer ADim) {
  const detail::TVarArray& Array = ArrayOf(AValue);
  if (ADim != 1)
    RaiseBadIndex();
  return Array.LowBound;
}

Integer VarArrayHighBound(const Variant& AValue, Integer ADim) {
  const detail::TVarArray& Array = ArrayOf(AValue);
  if (ADim != 1)
    RaiseBadIndex();
  return static_cast<Integer>(Array.LowBound + static_cast<Int64>(Array.Items.size()) - 1);
}

Variant VarArrayGet(const Variant& AArray, Integer AIndex) {
  const detail::TVarArray& Array = ArrayOf(AArray);
  return Array.Items[SlotOf(Array, AIndex)];
}

void VarArrayPut(Variant& AArray, const Variant& AValue, Integer AIndex) {
  detail::TVarArray& Array = ArrayOf(AArray);
  const std::size_t Slot = SlotOf(Array, AIndex);
  Array.Items[Slot] =
      Array.ElementType == varVariant ? AValue : VarAsType(AValue, Array.ElementType);
}

void VarArrayRedim(Variant& AArray, Integer AHighBound) {
  detail::TVarArray& Array = ArrayOf(AArray);
  Array.Items.resize(ElementCount(Array.LowBound, AHighBound), ZeroOf(Array.ElementType));
}

} // namespace lorvane
