/// LxDescribeAggregate<T>(u"Geo.TPoint"): a plain aggregate struct described as a record in one
/// line. Its fields, in declaration order, take their names and types from the compiler:
///
///     struct TPoint { Integer X = 0; Integer Y = 0; UnicodeString Label; };
///     LxDescribeAggregate<TPoint>(u"Geo.TPoint").HintOn(u"Label", shoName, u"label");
///
/// It gives the builder of LxDescribeRecord with every field already added, all public. As the
/// application described no member through the builder, a Hint(...) right after it annotates the
/// type itself; a field is annotated by name with HintOn(u"Field", option, value). Properties and
/// methods may follow as for any record. A member whose type is another aggregate is a record
/// field: describe that type too, once, like every type.
///
/// What it takes: an aggregate struct without base classes, with at most cMaxAggregateFields
/// data members, none of them a reference, a const, a bit-field or a C array (std::array is
/// fine), each of a type that {} initializes; a static_assert says which rule a type breaks. One
/// case escapes the static_assert: a bit-field as wide as its declared type lays out like a plain
/// member, and is refused by the compiler's own error ("cannot bind bit-field").
///
/// How: the members are counted by aggregate initialization with {} for each; a structured
/// binding reaches each member, so a field finds its place in an instance without offsets or
/// pointers to members; a member's name is read from __PRETTY_FUNCTION__ of a function template
/// instantiated with the member's address in an object that is declared, never defined, and only
/// named in constant expressions. The names rely on g++'s spelling of such an address; under
/// another compiler MemberNameOf refuses to compile when it doesn't find the parts it expects.
#pragma once

#include "lorvane/types/LxDescribe.h"

#include <cstddef>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace lorvane {

inline constexpr std::size_t cMaxAggregateFields = 16;

namespace detail {

/// Initializes any member in the count, as a copy of an lvalue of the member's type.
template <std::size_t> struct TAnyMember { template <class U> operator U&() const noexcept; };

/// Initializes only a base class of T: it tells whether T's first element is a base, unless that
/// element takes anything at all (std::any), which TNothing tells.
template <class T> struct TAnyBaseOf {
  template <class B>
  requires(std::is_base_of_v<B, T> && !std::is_same_v<B, T>) operator B&() const noexcept;
};
struct TNothing {};

// Members are counted with {} for each: a braced initializer initializes one member whatever its
// type, where a value would be spread over the elements of a C array member (brace elision), and
// would be ambiguous for a member whose type takes any value through a constructor template.
template <class T, std::size_t N> constexpr bool InitializableByEmptyBraces() noexcept {
  if constexpr (N == 0) {
    return true;
  } else if constexpr (N == 1) {
    return requires { T{{}}; };
  } else if constexpr (N == 2) {
    return requires { T{{}, {}}; };
  } else if constexpr (N == 3) {
    return requires { T{{}, {}, {}}; };
  } else if constexpr (N == 4) {
    return requires { T{{}, {}, {}, {}}; };
  } else if constexpr (N == 5) {
    return requires { T{{}, {}, {}, {}, {}}; };
  } else if constexpr (N == 6) {
    return requires { T{{}, {}, {}, {}, {}, {}}; };
  } else if constexpr (N == 7) {
    return requires { T{{}, {}, {}, {}, {}, {}, {}}; };
  } else if constexpr (N == 8) {
    return requires { T{{}, {}, {}, {}, {}, {}, {}, {}}; };
  } else if constexpr (N == 9) {
    return requires { T{{}, {}, {}, {}, {}, {}, {}, {}, {}}; };
  } else if constexpr (N == 10) {
    return requires { T{{}, {}, {}, {}, {}, {}, {}, {}, {}, {}}; };
  } else if constexpr (N == 11) {
    return requires { T{{}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}}; };
  } else if constexpr (N == 12) {
    return requires { T{{}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}}; };
  } else if constexpr (N == 13) {
    return requires { T{{}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}}; };
  } else if constexpr (N == 14) {
    return requires { T{{}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}}; };
  } else if constexpr (N == 15) {
    return requires { T{{}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}}; };
  } else if constexpr (N == 16) {
    return requires { T{{}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}}; };
  } else if constexpr (N == 17) {
    return requires { T{{}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}}; };
  } else {
    static_assert(N == cMaxAggregateFields + 1, "the count goes one past the limit, no further");
    return false;
  }
}

/// The number of T's members, up to cMaxAggregateFields + 1.
template <class T, std::size_t N = cMaxAggregateFields + 1> constexpr std::size_t CountMembers() {
  if constexpr (N == 0 || InitializableByEmptyBraces<T, N>())
    return N;
  else
    return CountMembers<T, N - 1>();
}

template <class T, std::size_t... I>
constexpr bool InitializableByValues(std::index_sequence<I...>) noexcept {
  return requires { T{TAnyMember<I>{}...}; };
}

/// The most values that initialize T, up to cMaxAggregateFields + 1: more than its members when
/// a C array takes one per element.
template <class T, std::size_t N = cMaxAggregateFields + 1>
constexpr std::size_t CountInitializers() {
  if constexpr (N == 0 || InitializableByValues<T>(std::make_index_sequence<N>()))
    return N;
  else
    return CountInitializers<T, N - 1>();
}

/// The declared types of the N members, as decltype of a structured binding gives them.
template <class... F> struct TMemberTypes {};
template <std::size_t N, class T> auto MemberTypesOf(const T& AObject) {
  if constexpr (N == 0) {
    (void)AObject;
    return TMemberTypes<>();
  } else if constexpr (N == 1) {
    const auto& [m0] = AObject;
    return TMemberTypes<decltype(m0)>();
  } else if constexpr (N == 2) {
    const auto& [m0, m1] = AObject;
    return TMemberTypes<decltype(m0), decltype(m1)>();
  } else if constexpr (N == 3) {
    const auto& [m0, m1, m2] = AObject;
    return TMemberTypes<decltype(m0), decltype(m1), decltype(m2)>();
  } else if constexpr (N == 4) {
    const auto& [m0, m1, m2, m3] = AObject;
    return TMemberTypes<decltype(m0), decltype(m1), decltype(m2), decltype(m3)>();
  } else if constexpr (N == 5) {
    const auto& [m0, m1, m2, m3, m4] = AObject;
    return TMemberTypes<decltype(m0), decltype(m1), decltype(m2), decltype(m3), decltype(m4)>();
  } else if constexpr (N == 6) {
    const auto& [m0, m1, m2, m3, m4, m5] = AObject;
    return TMemberTypes<decltype(m0), decltype(m1), decltype(m2), decltype(m3), decltype(m4),
                        decltype(m5)>();
  } else if constexpr (N == 7) {
    const auto& [m0, m1, m2, m3, m4, m5, m6] = AObject;
    return TMemberTypes<decltype(m0), decltype(m1), decltype(m2), decltype(m3), decltype(m4),
                        decltype(m5), decltype(m6)>();
  } else if constexpr (N == 8) {
    const auto& [m0, m1, m2, m3, m4, m5, m6, m7] = AObject;
    return TMemberTypes<decltype(m0), decltype(m1), decltype(m2), decltype(m3), decltype(m4),
                        decltype(m5), decltype(m6), decltype(m7)>();
  } else if constexpr (N == 9) {
    const auto& [m0, m1, m2, m3, m4, m5, m6, m7, m8] = AObject;
    return TMemberTypes<decltype(m0), decltype(m1), decltype(m2), decltype(m3), decltype(m4),
                        decltype(m5), decltype(m6), decltype(m7), decltype(m8)>();
  } else if constexpr (N == 10) {
    const auto& [m0, m1, m2, m3, m4, m5, m6, m7, m8, m9] = AObject;
    return TMemberTypes<decltype(m0), decltype(m1), decltype(m2), decltype(m3), decltype(m4),
                        decltype(m5), decltype(m6), decltype(m7), decltype(m8), decltype(m9)>();
  } else if constexpr (N == 11) {
    const auto& [m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10] = AObject;
    return TMemberTypes<decltype(m0), decltype(m1), decltype(m2), decltype(m3), decltype(m4),
                        decltype(m5), decltype(m6), decltype(m7), decltype(m8), decltype(m9),
                        decltype(m10)>();
  } else if constexpr (N == 12) {
    const auto& [m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11] = AObject;
    return TMemberTypes<decltype(m0), decltype(m1), decltype(m2), decltype(m3), decltype(m4),
                        decltype(m5), decltype(m6), decltype(m7), decltype(m8), decltype(m9),
                        decltype(m10), decltype(m11)>();
  } else if constexpr (N == 13) {
    const auto& [m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12] = AObject;
    return TMemberTypes<decltype(m0), decltype(m1), decltype(m2), decltype(m3), decltype(m4),
                        decltype(m5), decltype(m6), decltype(m7), decltype(m8), decltype(m9),
                        decltype(m10), decltype(m11), decltype(m12)>();
  } else if constexpr (N == 14) {
    const auto& [m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13] = AObject;
    return TMemberTypes<decltype(m0), decltype(m1), decltype(m2), decltype(m3), decltype(m4),
                        decltype(m5), decltype(m6), decltype(m7), decltype(m8), decltype(m9),
                        decltype(m10), decltype(m11), decltype(m12), decltype(m13)>();
  } else if constexpr (N == 15) {
    const auto& [m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14] = AObject;
    return TMemberTypes<decltype(m0), decltype(m1), decltype(m2), decltype(m3), decltype(m4),
                        decltype(m5), decltype(m6), decltype(m7), decltype(m8), decltype(m9),
                        decltype(m10), decltype(m11), decltype(m12), decltype(m13),
                        decltype(m14)>();
  } else if constexpr (N == 16) {
    const auto& [m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15] = AObject;
    return TMemberTypes<decltype(m0), decltype(m1), decltype(m2), decltype(m3), decltype(m4),
                        decltype(m5), decltype(m6), decltype(m7), decltype(m8), decltype(m9),
                        decltype(m10), decltype(m11), decltype(m12), decltype(m13), decltype(m14),
                        decltype(m15)>();
  }
}

/// The N members of AObject as a tuple of references, through a structured binding.
template <std::size_t N, class T> constexpr auto TieMembers(T& AObject) noexcept {
  if constexpr (N == 0) {
    (void)AObject;
    return std::tuple<>();
  } else if constexpr (N == 1) {
    auto& [m0] = AObject;
    return std::tie(m0);
  } else if constexpr (N == 2) {
    auto& [m0, m1] = AObject;
    return std::tie(m0, m1);
  } else if constexpr (N == 3) {
    auto& [m0, m1, m2] = AObject;
    return std::tie(m0, m1, m2);
  } else if constexpr (N == 4) {
    auto& [m0, m1, m2, m3] = AObject;
    return std::tie(m0, m1, m2, m3);
  } else if constexpr (N == 5) {
    auto& [m0, m1, m2, m3, m4] = AObject;
    return std::tie(m0, m1, m2, m3, m4);
  } else if constexpr (N == 6) {
    auto& [m0, m1, m2, m3, m4, m5] = AObject;
    return std::tie(m0, m1, m2, m3, m4, m5);
  } else if constexpr (N == 7) {
    auto& [m0, m1, m2, m3, m4, m5, m6] = AObject;
    return std::tie(m0, m1, m2, m3, m4, m5, m6);
  } else if constexpr (N == 8) {
    auto& [m0, m1, m2, m3, m4, m5, m6, m7] = AObject;
    return std::tie(m0, m1, m2, m3, m4, m5, m6, m7);
  } else if constexpr (N == 9) {
    auto& [m0, m1, m2, m3, m4, m5, m6, m7, m8] = AObject;
    return std::tie(m0, m1, m2, m3, m4, m5, m6, m7, m8);
  } else if constexpr (N == 10) {
    auto& [m0, m1, m2, m3, m4, m5, m6, m7, m8, m9] = AObject;
    return std::tie(m0, m1, m2, m3, m4, m5, m6, m7, m8, m9);
  } else if constexpr (N == 11) {
    auto& [m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10] = AObject;
    return std::tie(m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10);
  } else if constexpr (N == 12) {
    auto& [m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11] = AObject;
    return std::tie(m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11);
  } else if constexpr (N == 13) {
    auto& [m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12] = AObject;
    return std::tie(m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12);
  } else if constexpr (N == 14) {
    auto& [m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13] = AObject;
    return std::tie(m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13);
  } else if constexpr (N == 15) {
    auto& [m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14] = AObject;
    return std::tie(m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14);
  } else if constexpr (N == 16) {
    auto& [m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15] = AObject;
    return std::tie(m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15);
  }
}

/// The object whose members' addresses name the members; declared only, never defined or read.
/// Not const: a const binding would copy a bit-field into a temporary where a plain one refuses
/// to bind to it.
template <class T> struct TNamingObject { T Value; };
template <class T> extern TNamingObject<T> NamingObject;

template <class T, std::size_t N> consteval auto MemberAddresses() {
  return std::apply([](auto&... AMembers) { return std::tuple(&AMembers...); },
                    TieMembers<N>(NamingObject<T>.Value));
}

/// g++ spells AMember "(& lorvane::detail::NamingObject<Geo::TPoint>.lorvane::detail::
/// TNamingObject<Geo::TPoint>::Value.Geo::TPoint::X)", last of the template arguments (the
/// function's own name has no parenthesis after them): the name is what follows the last scope
/// or dot before the last parenthesis.
template <auto AMember> constexpr std::string_view MemberNameOf() noexcept {
  constexpr std::string_view Function = __PRETTY_FUNCTION__;
  constexpr std::size_t Start = Function.find("AMember = ");
  constexpr std::size_t End = Function.rfind(')');
  static_assert(Start != std::string_view::npos && End != std::string_view::npos && Start < End,
                "the compiler doesn't spell member addresses as LxDescribeAggregate reads them");
  constexpr std::size_t Begin = Function.find_last_of(":.", End) + 1;
  static_assert(Begin > Start && Begin < End, "no member name in the compiler's spelling");
  return Function.substr(Begin, End - Begin);
}

template <class T, std::size_t N, std::size_t I>
inline constexpr std::string_view AggregateMemberName =
    // Straight from the consteval call: a variable holding the addresses would be emitted by
    // unoptimized builds, with references to the object that is never defined.
    MemberNameOf<std::get<I>(MemberAddresses<T, N>())>();

/// A field of an aggregate: its place is the I-th of the N members that a binding reaches.
template <class T, std::size_t N, std::size_t I, class F>
class TAggregateFieldOf final : public TLxFieldDescription {
public:
  TAggregateFieldOf(std::u16string_view AName, TLxMemberVisibility AVisibility)
      : TLxFieldDescription(AName, AVisibility, TypeHandle<F>()) {}
  void* GetAddress(void* AInstance) const noexcept override {
    F& Member = std::get<I>(TieMembers<N>(*static_cast<T*>(AInstance)));
    return &Member;
  }
};

/// The size of the members laid out one after another with their natural alignment, as the ABI
/// lays out plain members; bit-fields pack tighter.
template <class... F> constexpr std::size_t PlainLayoutSize(TMemberTypes<F...>) noexcept {
  std::size_t Size = 0;
  std::size_t Align = 1;
  ((Size = (Size + alignof(F) - 1) / alignof(F) * alignof(F) + sizeof(F),
    Align = alignof(F) > Align ? alignof(F) : Align),
   ...);
  return (Size + Align - 1) / Align * Align;
}

enum class TAggregateFault {
  None,
  NotAggregate,
  BaseClass,
  TooManyMembers,
  NotCopyable,
  CArray,
  BitField
};

/// The first rule that T breaks. Each check runs only once the ones before it passed, as a
/// binding of the wrong count would fail to compile rather than answer.
template <class T> consteval TAggregateFault CheckAggregate() {
  if constexpr (!std::is_class_v<T> || std::is_union_v<T> || !std::is_aggregate_v<T> ||
                IsObjectClass<T>) {
    return TAggregateFault::NotAggregate;
  } else if constexpr (
      requires { T{TAnyBaseOf<T>{}}; } && !requires { T{TNothing{}}; }) {
    return TAggregateFault::BaseClass;
  } else if constexpr (CountMembers<T>() > cMaxAggregateFields) {
    return TAggregateFault::TooManyMembers;
  } else if constexpr (!std::is_default_constructible_v<T> || !std::is_copy_assignable_v<T>) {
    return TAggregateFault::NotCopyable;
  } else if constexpr (CountInitializers<T>() > CountMembers<T>()) {
    return TAggregateFault::CArray;
  } else if constexpr (PlainLayoutSize(decltype(MemberTypesOf<CountMembers<T>()>(
                           std::declval<const T&>()))()) > sizeof(T)) {
    return TAggregateFault::BitField;
  } else {
    return TAggregateFault::None;
  }
}

template <class T, std::size_t N, std::size_t... I, class... F>
void AddAggregateFields(TLxTypeDescription& ADescription, std::index_sequence<I...>,
                        TMemberTypes<F...>) {
  (ADescription.AddField(new TAggregateFieldOf<T, N, I, std::remove_cv_t<F>>(
       UTF8ToString(AggregateMemberName<T, N, I>), mvPublic)),
   ...);
}

} // namespace detail

/// Describes the aggregate T as a record named AQualifiedName whose fields are T's members (see
/// the header comment). Describing a type twice raises EInvalidOperation.
template <class T> TLxRecordBuilder<T> LxDescribeAggregate(std::u16string_view AQualifiedName) {
  using enum detail::TAggregateFault;
  constexpr detail::TAggregateFault Fault = detail::CheckAggregate<T>();
  static_assert(Fault != NotAggregate,
                "LxDescribeAggregate takes a plain aggregate struct (no constructors, no private "
                "members, no virtual functions, not a TObject); describe other types with "
                "LxDescribeRecord or LxDescribeClass");
  static_assert(Fault != BaseClass, "an aggregate with a base class can't be described member "
                                    "by member: describe it with LxDescribeRecord");
  static_assert(Fault != TooManyMembers, "LxDescribeAggregate takes at most cMaxAggregateFields "
                                         "(16) members: describe larger types with "
                                         "LxDescribeRecord");
  static_assert(Fault != NotCopyable,
                "a record is made empty and copied when it is read: a reference or const member, "
                "or a member that can't be copied, rules that out");
  static_assert(Fault != CArray, "a member is a C array (use std::array), or of a type that {} "
                                 "doesn't initialize");
  static_assert(Fault != BitField,
                "a member is a bit-field (or [[no_unique_address]]): a field is read and written "
                "in place, so it must be addressable; describe the type with LxDescribeRecord "
                "and properties");
  TLxTypeDescription& Description = TLxTypes::BeginDescription(TypeHandle<T>(), AQualifiedName);
  if constexpr (Fault == None) {
    constexpr std::size_t N = detail::CountMembers<T>();
    TLxTypes::GetTypeInfo<std::vector<T>>();
    detail::AddAggregateFields<T, N>(
        Description, std::make_index_sequence<N>(),
        decltype(detail::MemberTypesOf<N>(std::declval<const T&>()))());
  }
  return TLxRecordBuilder<T>(Description);
}

} // namespace lorvane
