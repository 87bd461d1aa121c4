// Shared by the serializer tests: running a serializer with options, and a format class that
// records the driver's calls instead of writing text.
#pragma once

#include "lorvane/types/LxDescribe.h"
#include "lorvane/uLxSerializer.h"
#include "lorvane/uLxXMLSerializer.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace lorvane::test {

using TOptions = std::initializer_list<std::pair<std::u16string_view, std::u16string_view>>;

/// The XML text of AValue with AOptions set on the root serializer.
inline std::string XmlOf(const TValue& AValue, TOptions AOptions = {}) {
  TOwned<TLxSerializer> Serializer(LxCreateSerializer(ldsXML, AValue));
  for (const auto& [Name, Value] : AOptions)
    Serializer->SetParam(Name, Value);
  return Serializer->Serialize();
}

/// The XML text without namespaces and types: the shape of the walk alone.
inline std::string BareXmlOf(const TValue& AValue, TOptions AOptions = {}) {
  TOwned<TLxSerializer> Serializer(LxCreateSerializer(ldsXML, AValue));
  Serializer->SetParam(u"excludenamespaces", u"true");
  for (const auto& [Name, Value] : AOptions)
    Serializer->SetParam(Name, Value);
  return Serializer->Serialize();
}

/// A format class that writes what the driver asks of it as a line of calls, for the walks whose
/// XML would hide the call (names, indexes, annotations, simple types below the root):
///   S(name:Type[idx]) E(name) N(name:parentkind>kind) V(name:Type=text[idx]{attribs})
/// Registered as the default of format 2, so its children are recorders too.
class TRecordingSerializer : public TLxSerializer {
  LX_CLASS(TRecordingSerializer, TLxSerializer)
  TRecordingSerializer() = default;

  TLxSerializeFormat Format() const override { return ldsFormat2; }

  void SerializeStartType(std::u16string_view AMemberName, const TLxTypeInfo* ATypeInfo,
                          Integer AIdx) override {
    Log(u"S(" + UnicodeString(AMemberName) + u":" + NameOf(ATypeInfo) + Index(AIdx) + u")");
  }
  void SerializeEndType(std::u16string_view AMemberName, const TLxTypeInfo*, Integer) override {
    Log(u"E(" + UnicodeString(AMemberName) + u")");
  }
  void SerializeName(std::u16string_view AMemberName, TLxSerializerMemberType AMemberType,
                     TLxTypeKind AParentTypeKind, TLxTypeKind ATypeKind) override {
    Log(u"N(" + UnicodeString(AMemberName) + (AMemberType == smtField ? u":f" : u":p") +
        IntToStr(AParentTypeKind) + u">" + IntToStr(ATypeKind) + u")");
  }
  void SerializeValue(std::u16string_view AMemberName, const TLxTypeInfo* AMemberTypeInfo,
                      const TValue& AValue, Integer AIdx,
                      const std::vector<TCustomAttribute*>* AAttribs) override {
    Log(u"V(" + UnicodeString(AMemberName) + u":" + NameOf(AMemberTypeInfo) + u"=" +
        (AValue.IsNull() ? UnicodeString(u"nil") : AValue.ToString()) + Index(AIdx) +
        (AAttribs ? u"{" + IntToStr(static_cast<Int64>(AAttribs->size())) + u"}" : u"") + u")");
  }

  /// The calls recorded by this run (kept on the root serializer).
  const UnicodeString& Calls() const noexcept { return FCalls; }

  static void Register() {
    static const bool Registered = [] {
      LxRegisterSerializer(ldsFormat2, TLxTypeHandle(nullptr), StaticClass(), nullptr);
      return true;
    }();
    (void)Registered;
  }

protected:
  ~TRecordingSerializer() override = default;

private:
  static UnicodeString NameOf(const TLxTypeInfo* AType) {
    return AType ? AType->GetName() : UnicodeString(u"-");
  }
  static UnicodeString Index(Integer AIdx) {
    return AIdx < 0 ? UnicodeString() : u"[" + IntToStr(AIdx) + u"]";
  }
  void Log(const UnicodeString& ACall) {
    TLxCustomSerializer* Root = this;
    while (Root->GetParent())
      Root = Root->GetParent();
    static_cast<TRecordingSerializer*>(Root)->FCalls += ACall;
  }

  UnicodeString FCalls;
};

/// The calls that the driver makes for AValue, with AOptions on the root.
inline std::string CallsFor(const TValue& AValue, TOptions AOptions = {}) {
  TRecordingSerializer::Register();
  TOwned<TLxSerializer> Serializer(LxCreateSerializer(ldsFormat2, AValue));
  for (const auto& [Name, Value] : AOptions)
    Serializer->SetParam(Name, Value);
  Serializer->Serialize();
  return StringToUTF8(static_cast<TRecordingSerializer*>(Serializer.get())->Calls());
}

} // namespace lorvane::test
