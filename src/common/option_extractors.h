// Option readers that take named keys out of an options object one by one and
// then refuse whatever nobody asked for.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>

#include "qvx/result.h"

namespace parser {

using OptionOutcome = result<void, std::string>;

// Hands out the values of one options object, each key at most once, and
// remembers which keys were asked for.
class OptionExtractor {
  public:
    explicit OptionExtractor(const nlohmann::json& options) : options_(options) {}

    // The value under `key`, or null when the object has no such key. A key
    // asked for a second time is an error.
    result<const nlohmann::json*, std::string> take(const std::string& key);

    // Success when every key was taken; otherwise "invalid option(s): " and
    // the JSON array of the other keys, in sorted order.
    OptionOutcome refuseLeftovers() const;

  private:
    const nlohmann::json& options_;
    std::set<std::string> extracted_;
};

// Writes the value under `key` to `target` when the key is present and the
// value has the right type; an absent key leaves `target` as it is.
template <class T>
OptionOutcome extract_to(OptionExtractor& options, const std::string& key, T& target);

template <>
OptionOutcome extract_to<bool>(OptionExtractor& options, const std::string& key, bool& target);

// A year of 2000 or later (and no later than 9999).
OptionOutcome extract_reference_year_to(OptionExtractor& options, const std::string& key,
                                        std::optional<int>& target);

}  // namespace parser
