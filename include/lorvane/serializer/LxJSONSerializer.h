/// TLxJSONSerializer: objects, records, arrays and simple values as JSON text, in one line of
/// UTF-8 with no blanks:
///
///     {"className":"Person","id":7,"kind":{"className":"TKind","asString":"pkC","asInt":2},
///      "friend":{"className":"Person","id":8},"boss":{},"scores":[3,4]}
///
/// (shown broken; there is no line end). Every object and record opens with its schema name in
/// "className"; member names go through LxCharCase mode 7 (first letter lowered); enumerations
/// and sets are small objects with "className", "asString" and "asInt"; a nil object is "{}",
/// a missing simple value "null". "excluderoot" "true" leaves out the root's braces and its
/// "className": the members stand alone.
#pragma once

#include "lorvane/serializer/LxSerializer.h"

namespace lorvane {

class TLxJSONSerializer : public TLxSerializer {
  LX_CLASS(TLxJSONSerializer, TLxSerializer)
  TLxJSONSerializer() = default;

  TLxSerializeFormat Format() const override { return ldsJSON; }

  /// Complex kinds only: a simple value below the root raises EAssertionFailed "Basic types
  /// are only allowed on the Root level (For serialing basic values)".
  void SerializeStartType(std::u16string_view AMemberName, const TLxTypeInfo* ATypeInfo,
                          Integer AIdx) override;
  void SerializeEndType(std::u16string_view AMemberName, const TLxTypeInfo* ATypeInfo,
                        Integer AIdx) override;
  /// The separator when needed, and the quoted name with a colon.
  void SerializeName(std::u16string_view AMemberName, TLxSerializerMemberType AMemberType,
                     TLxTypeKind AParentTypeKind, TLxTypeKind ATypeKind) override;
  /// A simple value, nil, or an enumeration or set object. An array that isn't empty raises
  /// Exception "JSON Arrays must be serialized by a ChildSerializer!", an object that isn't nil
  /// "JSON Ojbects must be serialized by a ChildSerializer!", a kind without a JSON form
  /// "Unsupported TypeKind detected!".
  void SerializeValue(std::u16string_view AMemberName, const TLxTypeInfo* AMemberTypeInfo,
                      const TValue& AValue, Integer AIdx,
                      const std::vector<TCustomAttribute*>* AAttribs) override;

protected:
  ~TLxJSONSerializer() override = default;

  /// Whether the next member at this level follows another: a comma goes first.
  bool FCommaFirst = false;

private:
  /// Whether this serializer brackets nothing: an interface inside a record writes its own.
  bool IsInterfaceInRecord(const TLxTypeInfo* ATypeInfo) const noexcept;
};

/// The JSON format's start-up registration: TLxJSONSerializer as the default serializer of
/// JSON. Called once by the library's start-up.
void LxJSONSerializerStartup();

} // namespace lorvane
