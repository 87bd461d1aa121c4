/// The named character references that the decoder knows, and the 32-bit key it finds them by:
///   TEntity           one name and its character
///   EntityTable       the 253 names (HTML 4.01's Latin-1, symbol and special sets, and apos)
///   FoldEntityName    the key of a name of at most 8 characters
///   FindEntity        the character of a key
#pragma once

#include "lorvane/platform/System.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace lorvane {

struct TEntity {
  std::string_view Name;
  WideChar Char;
};

/// The entity names in the order of the standard's lists. Static, never freed.
std::span<const TEntity> EntityTable() noexcept;

/// The most characters a name can have and still be looked up.
inline constexpr std::size_t cMaxEntityName = 8;

/// Folds the low bytes c0..c7 of a name of at most 8 characters (0 behind its end) into a key
/// whose bytes, from the most significant, are c0+c7, c1+c6, c2+c5 and c3+c4, each modulo 256.
/// A name of 4 characters or fewer is therefore its own key. ALength must be at most 8.
template <class TChar>
constexpr std::uint32_t FoldEntityName(const TChar* AName, std::size_t ALength) noexcept {
  std::uint8_t Bytes[cMaxEntityName] = {};
  for (std::size_t I = 0; I < ALength; ++I)
    Bytes[I] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(AName[I]) & 0xFF);
  std::uint32_t Key = 0;
  for (std::size_t I = 0; I < 4; ++I)
    Key = (Key << 8) | static_cast<std::uint8_t>(Bytes[I] + Bytes[7 - I]);
  return Key;
}

/// True with the entity's character in AChar when some name of the table folds to AKey. A name
/// that isn't in the table but folds to the key of one that is finds that entity: the table is
/// searched by key only, never by name.
bool FindEntity(std::uint32_t AKey, WideChar& AChar) noexcept;

} // namespace lorvane
