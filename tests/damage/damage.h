#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "damage/base_databases.h"

namespace corvo::test {

/// Numbers that follow from the seed alone, on every platform: the standard's distributions differ.
class Random {
 public:
  explicit Random(std::uint64_t seed) : engine_(seed) {}

  /// A number below `bound`, which must not be 0.
  std::size_t Below(std::size_t bound) { return static_cast<std::size_t>(engine_() % bound); }
  std::uint32_t Word() { return static_cast<std::uint32_t>(engine_()); }
  bool OneIn(std::size_t chances) { return Below(chances) == 0; }

  template <class T>
  const T& Of(const std::vector<T>& values) {
    return values.at(Below(values.size()));
  }

 private:
  std::mt19937_64 engine_;
};

/// Damages an image of the base in its own way and says where and how; nothing when the base has nothing of the kind.
using Damager = std::optional<std::string> (*)(const BaseDatabase& base, Image& image, Random& random);

struct DamageKind {
  const char* name;
  Damager damage;
};

// The kinds of damage by what they hit.
[[nodiscard]] std::vector<DamageKind> BlockDamage();      ///< bits, bytes, sectors, pages, the end of the file
[[nodiscard]] std::vector<DamageKind> StructureDamage();  ///< fields and pointers of the file format
[[nodiscard]] std::vector<DamageKind> SideFileDamage();   ///< write-ahead log and journal

/// One image: how it was made, and its files.
struct DamagedImage {
  const BaseDatabase* base = nullptr;
  std::string kind;
  std::string description;
  Image files;
};

/// The image of this number: one base, damaged once or twice.
[[nodiscard]] DamagedImage MakeDamagedImage(std::uint64_t number);

}  // namespace corvo::test
