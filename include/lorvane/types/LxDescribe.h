/// How an application describes its types to the registry, once at start-up:
///
///     LxDescribeRecord<TAddress>(u"Shop.TAddress")
///         .Field(u"Street", &TAddress::Street)
///         .Field(u"Zip", &TAddress::Zip).Hint(shoName, u"zip");   // a hint goes on the member
///         before it
///     LxDescribeEnum<TColor>(u"Shop.TColor", {u"clRed", u"clGreen"}).Hint(shoEnumPrefix, u"cl");
///     LxDescribeClass<TCustomer>(u"Shop.TCustomer")              // ancestor from the metaclass
///         .Property(u"Name", &TCustomer::GetName, &TCustomer::SetName)
///         .Field(u"FId", &TCustomer::FId, mvPrivate)
///         .Method(u"Add", &TCustomer::Add, {u"AOrder"});
///     LxDescribeAggregate<TPoint>(u"Geo.TPoint");               // fields named by the compiler
///
/// The name given is the qualified name; the short name is its part after the last dot. A field
/// is public unless told otherwise, a property streamable. Members are pointers to members of
/// the described type itself, checked at compile time. A property reads through a getter
/// (`R (T::*)() const`) or a data member, and writes through a setter (`void (T::*)(V)`) or the
/// same data member; without a setter it is read-only. Hint(...) annotates the member described
/// last, or the type itself before any member; HintOn(u"Name", ...) annotates a member by name.
/// Describing a type twice raises EInvalidOperation.
///
/// Describing a record or class also makes its dynamic array known ("ArrayOfTAddress"), so that
/// a document can name it.
#pragma once

#include "lorvane/types/LxTypes.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace lorvane {

namespace detail {

/// The described instance: the object (as its TObject address) for a class, the value's
/// address for a record.
template <class T> T* InstanceAs(void* AInstance) noexcept {
  if constexpr (IsObjectClass<T>)
    return static_cast<T*>(static_cast<TObject*>(AInstance));
  else
    return static_cast<T*>(AInstance);
}
template <class T> const T* InstanceAs(const void* AInstance) noexcept {
  return InstanceAs<T>(const_cast<void*>(AInstance));
}

/// AValue converted to V as the members' setters take it; EInvalidCast when it doesn't convert.
template <class V> V ValueAs(const TValue& AValue) {
  if constexpr (std::is_pointer_v<V> && IsObjectClass<std::remove_pointer_t<V>>) {
    return AValue.AsType<V>();
  } else {
    if (AValue.GetTypeInfo() == TypeHandle<V>())
      return *static_cast<const V*>(AValue.GetReferenceToRawData());
    TValue Converted;
    if (!AValue.ToType(TypeHandle<V>(), Converted))
      throw EInvalidCast(u"Invalid class typecast");
    return *static_cast<const V*>(Converted.GetReferenceToRawData());
  }
}

/// The value of a getter's or a member's result, as the type it is held as.
template <class V> TValue ValueOf(V&& AValue) { return TValue::From(std::forward<V>(AValue)); }

template <class T, class F> class TFieldOf final : public TLxFieldDescription {
public:
  TFieldOf(std::u16string_view AName, TLxMemberVisibility AVisibility, F T::*AMember)
      : TLxFieldDescription(AName, AVisibility, TypeHandle<F>()), FMember(AMember) {}
  void* GetAddress(void* AInstance) const noexcept override {
    return &(InstanceAs<T>(AInstance)->*FMember);
  }

private:
  F T::*FMember;
};

// What a property reads through and writes through: a getter, a setter, a data member, or
// nothing (nullptr).
template <class G, class T> struct GetterTraits { static constexpr bool Valid = false; };
template <class T, class R> struct GetterTraits<R (T::*)() const, T> {
  static constexpr bool Valid = true;
  using Value = std::remove_cvref_t<R>;
};
template <class T, class R> struct GetterTraits<R (T::*)() const noexcept, T> {
  static constexpr bool Valid = true;
  using Value = std::remove_cvref_t<R>;
};
template <class T, class F>
requires(!std::is_function_v<F>) struct GetterTraits<F T::*, T> {
  static constexpr bool Valid = true;
  using Value = F;
};

template <class S, class T> struct SetterTraits { static constexpr bool Valid = false; };
template <class T> struct SetterTraits<std::nullptr_t, T> {
  static constexpr bool Valid = true;
  using Value = void;
};
template <class T, class A> struct SetterTraits<void (T::*)(A), T> {
  static constexpr bool Valid = true;
  using Value = std::remove_cvref_t<A>;
};
template <class T, class A> struct SetterTraits<void (T::*)(A) noexcept, T> {
  static constexpr bool Valid = true;
  using Value = std::remove_cvref_t<A>;
};
template <class T, class F>
requires(!std::is_function_v<F>) struct SetterTraits<F T::*, T> {
  static constexpr bool Valid = true;
  using Value = F;
};

template <class G, class T>
concept PropertyGetter = GetterTraits<G, T>::Valid;
template <class S, class T>
concept PropertySetter = SetterTraits<S, T>::Valid;

template <class T, class G> decltype(auto) ReadThrough(G AGetter, const T& AInstance) {
  if constexpr (std::is_member_function_pointer_v<G>)
    return (AInstance.*AGetter)();
  else
    return AInstance.*AGetter;
}

template <class T, class V, class G, class S>
class TPropertyOf final : public TLxPropertyDescription {
public:
  TPropertyOf(std::u16string_view AName, TLxMemberVisibility AVisibility, G AGetter, S ASetter)
      : TLxPropertyDescription(AName, AVisibility, TypeHandle<V>()), FGetter(AGetter),
        FSetter(ASetter) {}
  bool GetIsReadable() const noexcept override { return FGetter != nullptr; }
  bool GetIsWritable() const noexcept override {
    if constexpr (std::is_null_pointer_v<S>)
      return false;
    else
      return FSetter != nullptr;
  }
  TValue GetValue(const void* AInstance) const override {
    if (!FGetter)
      throw EInvalidOperation(u"Property %s is not readable", {GetName()});
    return ValueOf<V>(V(ReadThrough(FGetter, *InstanceAs<T>(AInstance))));
  }
  void SetValue(void* AInstance, const TValue& AValue) const override {
    if constexpr (std::is_null_pointer_v<S>) {
      (void)AInstance;
      (void)AValue;
      throw EInvalidOperation(u"Property %s is read-only", {GetName()});
    } else {
      T& Instance = *InstanceAs<T>(AInstance);
      if constexpr (std::is_member_function_pointer_v<S>)
        (Instance.*FSetter)(ValueAs<V>(AValue));
      else
        Instance.*FSetter = ValueAs<V>(AValue);
    }
  }

private:
  G FGetter;
  S FSetter;
};

template <class T, class I, class V, class R, class W>
class TIndexedPropertyOf final : public TLxIndexedPropertyDescription {
public:
  TIndexedPropertyOf(std::u16string_view AName, TLxMemberVisibility AVisibility, R AGetter,
                     W ASetter)
      : TLxIndexedPropertyDescription(AName, AVisibility, TypeHandle<V>()), FGetter(AGetter),
        FSetter(ASetter) {}
  TValue GetValue(const void* AInstance, const std::vector<TValue>& AIndexes) const override {
    if (AIndexes.size() != 1)
      throw EInvalidCast(u"Parameter count mismatch");
    return ValueOf<V>(V((InstanceAs<T>(AInstance)->*FGetter)(ValueAs<I>(AIndexes[0]))));
  }
  void SetValue(void* AInstance, const std::vector<TValue>& AIndexes,
                const TValue& AValue) const override {
    if (AIndexes.size() != 1)
      throw EInvalidCast(u"Parameter count mismatch");
    if constexpr (std::is_null_pointer_v<W>) {
      (void)AInstance;
      (void)AValue;
      throw EInvalidOperation(u"Property %s is read-only", {GetName()});
    } else {
      (InstanceAs<T>(AInstance)->*FSetter)(ValueAs<I>(AIndexes[0]), ValueAs<V>(AValue));
    }
  }

private:
  R FGetter;
  W FSetter;
};

template <class M> struct MethodTraits;
template <class T, class R, class... A> struct MethodTraits<R (T::*)(A...)> {
  using Owner = T;
  using Result = std::remove_cvref_t<R>;
  using Arguments = std::tuple<std::remove_cvref_t<A>...>;
  static constexpr std::size_t Arity = sizeof...(A);
};
template <class T, class R, class... A>
struct MethodTraits<R (T::*)(A...) const> : MethodTraits<R (T::*)(A...)> {};
template <class T, class R, class... A>
struct MethodTraits<R (T::*)(A...) noexcept> : MethodTraits<R (T::*)(A...)> {};
template <class T, class R, class... A>
struct MethodTraits<R (T::*)(A...) const noexcept> : MethodTraits<R (T::*)(A...)> {};

template <class T, class M> class TMethodOf final : public TLxMethodDescription {
  using Traits = MethodTraits<M>;

public:
  TMethodOf(std::u16string_view AName, TLxMemberVisibility AVisibility, M AMethod,
            std::vector<TLxParameterDescription> AParameters)
      : TLxMethodDescription(AName, AVisibility, std::move(AParameters), ReturnHandle()),
        FMethod(AMethod) {}

  TValue Invoke(void* AInstance, const std::vector<TValue>& AArguments) const override {
    if (AArguments.size() != Traits::Arity)
      throw EInvalidCast(u"Parameter count mismatch");
    return Call(*InstanceAs<T>(AInstance), AArguments, std::make_index_sequence<Traits::Arity>());
  }

  static std::vector<TLxParameterDescription>
  Parameters(std::initializer_list<std::u16string_view> ANames) {
    return MakeParameters(ANames, std::make_index_sequence<Traits::Arity>());
  }

private:
  static TLxTypeHandle ReturnHandle() {
    if constexpr (std::is_void_v<typename Traits::Result>)
      return nullptr;
    else
      return TypeHandle<typename Traits::Result>();
  }
  template <std::size_t... I>
  static std::vector<TLxParameterDescription>
  MakeParameters(std::initializer_list<std::u16string_view> ANames, std::index_sequence<I...>) {
    std::vector<TLxParameterDescription> Result;
    (Result.emplace_back(I < ANames.size() ? UnicodeString(ANames.begin()[I])
                                           : u"A" + IntToStr(static_cast<Int64>(I) + 1),
                         TypeHandle<std::tuple_element_t<I, typename Traits::Arguments>>()),
     ...);
    return Result;
  }
  template <std::size_t... I>
  TValue Call(T& AInstance, const std::vector<TValue>& AArguments,
              std::index_sequence<I...>) const {
    if constexpr (std::is_void_v<typename Traits::Result>) {
      (AInstance.*
       FMethod)(ValueAs<std::tuple_element_t<I, typename Traits::Arguments>>(AArguments[I])...);
      return TValue();
    } else {
      return ValueOf<typename Traits::Result>((AInstance.*FMethod)(
          ValueAs<std::tuple_element_t<I, typename Traits::Arguments>>(AArguments[I])...));
    }
  }

  M FMethod;
};

/// The call of an event type (a std::function), as the method "Invoke" of its description.
template <class F> class TEventCall;
template <class R, class... A>
class TEventCall<std::function<R(A...)>> final : public TLxMethodDescription {
  using Function = std::function<R(A...)>;
  using Arguments = std::tuple<std::remove_cvref_t<A>...>;

public:
  explicit TEventCall(std::initializer_list<std::u16string_view> ANames)
      : TLxMethodDescription(u"Invoke", mvPublic,
                             MakeParameters(ANames, std::index_sequence_for<A...>()),
                             ReturnHandle()) {}

  /// AInstance is the address of the std::function; an empty one raises EInvalidOperation
  /// "The event is not assigned".
  TValue Invoke(void* AInstance, const std::vector<TValue>& AArguments) const override {
    if (AArguments.size() != sizeof...(A))
      throw EInvalidCast(u"Parameter count mismatch");
    const Function& Call = *static_cast<const Function*>(AInstance);
    if (!Call)
      throw EInvalidOperation(u"The event is not assigned");
    return Apply(Call, AArguments, std::index_sequence_for<A...>());
  }

private:
  static TLxTypeHandle ReturnHandle() {
    if constexpr (std::is_void_v<R>)
      return nullptr;
    else
      return TypeHandle<std::remove_cvref_t<R>>();
  }
  template <std::size_t... I>
  static std::vector<TLxParameterDescription>
  MakeParameters(std::initializer_list<std::u16string_view> ANames, std::index_sequence<I...>) {
    std::vector<TLxParameterDescription> Result;
    (Result.emplace_back(I < ANames.size() ? UnicodeString(ANames.begin()[I])
                                           : u"A" + IntToStr(static_cast<Int64>(I) + 1),
                         TypeHandle<std::tuple_element_t<I, Arguments>>()),
     ...);
    return Result;
  }
  template <std::size_t... I>
  static TValue Apply(const Function& ACall, const std::vector<TValue>& AArguments,
                      std::index_sequence<I...>) {
    if constexpr (std::is_void_v<R>) {
      ACall(ValueAs<std::tuple_element_t<I, Arguments>>(AArguments[I])...);
      return TValue();
    } else {
      return ValueOf<std::remove_cvref_t<R>>(
          ACall(ValueAs<std::tuple_element_t<I, Arguments>>(AArguments[I])...));
    }
  }
};

/// What records and classes share: fields, properties, indexed properties, methods, hints.
template <class T, class Self> class TMembersBuilder {
public:
  explicit TMembersBuilder(TLxTypeDescription& ADescription) noexcept
      : FDescription(ADescription) {}

  template <class F>
  requires(!std::is_function_v<F>) Self& Field(std::u16string_view AName, F T::*AMember,
                                               TLxMemberVisibility AVisibility = mvPublic) {
    return Added(FDescription.AddField(new TFieldOf<T, F>(AName, AVisibility, AMember)));
  }

  /// A property that reads through AGetter and writes through ASetter (nullptr: read-only).
  template <class G, class S>
  requires PropertyGetter<G, T> && PropertySetter<S, T> Self&
  Property(std::u16string_view AName, G AGetter, S ASetter,
           TLxMemberVisibility AVisibility = mvStreamable) {
    using V = typename GetterTraits<G, T>::Value;
    if constexpr (!std::is_null_pointer_v<S>)
      static_assert(std::is_same_v<typename SetterTraits<S, T>::Value, V>,
                    "the setter must take the type that the getter gives");
    return Added(FDescription.AddProperty(
        new TPropertyOf<T, V, G, S>(AName, AVisibility, AGetter, ASetter)));
  }
  /// A read-only property, or one over a data member that it reads and writes.
  template <class G>
  requires PropertyGetter<G, T> Self& Property(std::u16string_view AName, G AGetter,
                                               TLxMemberVisibility AVisibility = mvStreamable) {
    if constexpr (std::is_member_function_pointer_v<G>)
      return Property(AName, AGetter, nullptr, AVisibility);
    else
      return Property(AName, AGetter, AGetter, AVisibility);
  }

  /// A property with one index, such as Items: `V (T::*)(I) const` and `void (T::*)(I, V)`.
  template <class V, class I, class W = std::nullptr_t>
  Self& IndexedProperty(std::u16string_view AName, V (T::*AGetter)(I) const, W ASetter = nullptr,
                        TLxMemberVisibility AVisibility = mvPublic) {
    using Value = std::remove_cvref_t<V>;
    using Index = std::remove_cvref_t<I>;
    static_assert(std::is_null_pointer_v<W> || std::is_same_v<W, void (T::*)(I, V)> ||
                      std::is_same_v<W, void (T::*)(I, const Value&)>,
                  "the setter must take the getter's index and value");
    return Added(FDescription.AddIndexedProperty(
        new TIndexedPropertyOf<T, Index, Value, V (T::*)(I) const, W>(AName, AVisibility, AGetter,
                                                                      ASetter)));
  }

  /// A method; its parameters are named by AParameterNames in order ("A1", "A2"... for the
  /// rest).
  template <class M>
  requires std::is_member_function_pointer_v<M> &&
      std::is_same_v<typename MethodTraits<M>::Owner, T>
          Self& Method(std::u16string_view AName, M AMethod,
                       std::initializer_list<std::u16string_view> AParameterNames = {},
                       TLxMemberVisibility AVisibility = mvPublic) {
    return Added(FDescription.AddMethod(new TMethodOf<T, M>(
        AName, AVisibility, AMethod, TMethodOf<T, M>::Parameters(AParameterNames))));
  }

  /// Annotates the member described last, or the type before any member.
  Self& Hint(TSerializerHintOption AOption, std::u16string_view AValue = {}) {
    TCustomAttribute* Made = SerializerHint::Create(AOption, AValue);
    if (FLast)
      FLast->AddAttribute(Made);
    else
      FDescription.AddAttribute(Made);
    return static_cast<Self&>(*this);
  }
  /// Annotates this type's own field or property named AName (letter case ignored, fields
  /// first), wherever it was described: the way to annotate the fields that LxDescribeAggregate
  /// adds. Hint keeps annotating the member described last. A name that is neither raises
  /// EArgumentException "Type %s has no field or property %s".
  Self& HintOn(std::u16string_view AName, TSerializerHintOption AOption,
               std::u16string_view AValue = {}) {
    TLxMemberDescription* Member = FDescription.FindOwnMember(AName);
    if (!Member)
      throw EArgumentException(u"Type %s has no field or property %s",
                               {FDescription.GetQualifiedName(), UnicodeString(AName)});
    Member->AddAttribute(SerializerHint::Create(AOption, AValue));
    return static_cast<Self&>(*this);
  }
  /// A further schema name; the first one is the type's SchemaName.
  Self& Alias(std::u16string_view AName) {
    TLxTypes::RegisterTypeAlias(FDescription.GetHandle(), AName);
    return static_cast<Self&>(*this);
  }

  const TLxTypeInfo* TypeInfo() const noexcept { return FDescription.GetTypeInfo(); }

protected:
  TLxTypeDescription& FDescription;

private:
  Self& Added(TLxMemberDescription& AMember) noexcept {
    FLast = &AMember;
    return static_cast<Self&>(*this);
  }
  TLxMemberDescription* FLast = nullptr;
};

} // namespace detail

template <class T> class TLxRecordBuilder : public detail::TMembersBuilder<T, TLxRecordBuilder<T>> {
  using detail::TMembersBuilder<T, TLxRecordBuilder<T>>::TMembersBuilder;
};

template <class T> class TLxClassBuilder : public detail::TMembersBuilder<T, TLxClassBuilder<T>> {
  using detail::TMembersBuilder<T, TLxClassBuilder<T>>::TMembersBuilder;
};

/// A record: a value type with fields (and properties and methods, if it has them).
template <class T> TLxRecordBuilder<T> LxDescribeRecord(std::u16string_view AQualifiedName) {
  static_assert(std::is_class_v<T> && !detail::IsObjectClass<T>,
                "a record is a struct or class that doesn't derive from TObject");
  static_assert(std::is_default_constructible_v<T> && std::is_copy_assignable_v<T>,
                "a record is made empty and copied when it is read");
  TLxTypeDescription& Description = TLxTypes::BeginDescription(TypeHandle<T>(), AQualifiedName);
  TLxTypes::GetTypeInfo<std::vector<T>>();
  return TLxRecordBuilder<T>(Description);
}

/// A class derived from TObject; its ancestor comes from its metaclass.
template <class T> TLxClassBuilder<T> LxDescribeClass(std::u16string_view AQualifiedName) {
  static_assert(detail::IsObjectClass<T>, "a class derives from TObject (records: "
                                          "LxDescribeRecord)");
  TLxTypeDescription& Description = TLxTypes::BeginDescription(TypeHandle<T*>(), AQualifiedName);
  TLxTypes::GetTypeInfo<std::vector<T*>>();
  return TLxClassBuilder<T>(Description);
}

/// The hints that an enumeration, a set or an interface takes.
class TLxTypeBuilder {
public:
  explicit TLxTypeBuilder(TLxTypeDescription& ADescription) noexcept : FDescription(ADescription) {}
  TLxTypeBuilder& Hint(TSerializerHintOption AOption, std::u16string_view AValue = {}) {
    FDescription.AddAttribute(SerializerHint::Create(AOption, AValue));
    return *this;
  }
  TLxTypeBuilder& Alias(std::u16string_view AName) {
    TLxTypes::RegisterTypeAlias(FDescription.GetHandle(), AName);
    return *this;
  }
  const TLxTypeInfo* TypeInfo() const noexcept { return FDescription.GetTypeInfo(); }

private:
  TLxTypeDescription& FDescription;
};

/// An enumeration whose values are 0, 1, ... in the order of ANames.
template <class E>
TLxTypeBuilder LxDescribeEnum(std::u16string_view AQualifiedName,
                              std::initializer_list<std::u16string_view> ANames) {
  static_assert(std::is_enum_v<E>, "an enumeration");
  TLxTypeDescription& Description = TLxTypes::BeginDescription(TypeHandle<E>(), AQualifiedName);
  Description.SetEnumNames(std::vector<UnicodeString>(ANames.begin(), ANames.end()));
  return TLxTypeBuilder(Description);
}

/// A set type (a TSet of a described enumeration) under a name of its own.
template <class S> TLxTypeBuilder LxDescribeSet(std::u16string_view AQualifiedName) {
  static_assert(detail::IsLxSet<S>::value, "a set is a TSet<E>");
  return TLxTypeBuilder(TLxTypes::BeginDescription(TypeHandle<S>(), AQualifiedName));
}

/// An event type, a std::function, with the names of its parameters; its description's method
/// "Invoke" calls it and gives the parameters to the serializers.
template <class F>
TLxTypeBuilder LxDescribeEvent(std::u16string_view AQualifiedName,
                               std::initializer_list<std::u16string_view> AParameterNames = {}) {
  static_assert(detail::IsFunction<F>::value, "an event type is a std::function");
  TLxTypeDescription& Description = TLxTypes::BeginDescription(TypeHandle<F>(), AQualifiedName);
  Description.AddMethod(new detail::TEventCall<F>(AParameterNames));
  return TLxTypeBuilder(Description);
}

/// An interface, held as IPtr<I>.
template <class I> TLxTypeBuilder LxDescribeInterface(std::u16string_view AQualifiedName) {
  static_assert(std::is_base_of_v<IInterface, I>, "an interface derives from IInterface");
  return TLxTypeBuilder(TLxTypes::BeginDescription(TypeHandle<IPtr<I>>(), AQualifiedName));
}

} // namespace lorvane
