#pragma once

#include <cstddef>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace VekHost {

// How expected JSON (written in a scenario) meets actual JSON (the dump, the command log).
// Everywhere an expected integer also matches a decimal string of the same value, as the
// data plane writes 64-bit integers as strings.
namespace JsonMatch {

// Deep equality: same keys, same array lengths and order.
bool equals(const nlohmann::json& expected, const nlohmann::json& actual);

enum class Strings { substring, exact };

// Subset match: every key of an expected object is in the actual object and its value
// matches in turn; every element of an expected array matches a different element of the
// actual array, in any order; strings match as substrings or exactly, as `strings` says;
// other values are equal.
bool contains(const nlohmann::json& expected, const nlohmann::json& actual, Strings strings);

// Pairs each of `expectedCount` items with a different one of `actualCount` items for
// which `matches(expected, actual)` holds, as many as possible; returns the positions of
// the expected items left without a partner.
std::vector<std::size_t> unmatched(std::size_t expectedCount, std::size_t actualCount,
                                   const std::function<bool(std::size_t, std::size_t)>& matches);

// Compact JSON text cut to `limit` characters, for messages.
std::string brief(const nlohmann::json& value, std::size_t limit = 160);

}  // namespace JsonMatch

}  // namespace VekHost
