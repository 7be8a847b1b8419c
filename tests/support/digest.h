// Digests of a kernel's results over fixed operands.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/library.h"

namespace zorp::test {

/// One value for the results over the first `operands` of the sequence.
struct Digest {
  std::size_t operands;
  std::uint64_t value;
};

/// What stands in the table for an algorithm: digests of the portable build over a beginning of the
/// operands and over all of them. All only if results don't depend on estimates, which are the
/// processor's own in the library.
struct DigestRow {
  Digest beginning;
  std::optional<Digest> all;
};

/// "exp double default": the row of a variant's algorithm, named after the tier that others share.
std::string digest_key(const Variant& variant);

/// The row of the table in tests/digests.txt, or nullptr.
const DigestRow* digest_row(const Variant& variant);

/// How many operands the digests of a variant cover.
std::size_t digest_operands(const Variant& variant);
constexpr std::size_t kDigestBeginning = 1 << 16;

/// The digest of the widest kernel's results over the first `operands` of the sequence.
Digest digest(const Library& library, const Variant& variant, std::size_t operands);

}  // namespace zorp::test
