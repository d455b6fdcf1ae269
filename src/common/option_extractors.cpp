#include "common/option_extractors.h"

#include <cstdint>
#include <vector>

namespace parser {

namespace {

constexpr int kMinimumReferenceYear = 2000;
// Far enough for any pass, near enough that date arithmetic cannot overflow.
constexpr int kMaximumReferenceYear = 9999;

}  // namespace

result<const nlohmann::json*, std::string> OptionExtractor::take(const std::string& key) {
    using Outcome = result<const nlohmann::json*, std::string>;
    if (!extracted_.insert(key).second) {
        return Outcome::failure("option '" + key + "' has already been extracted");
    }
    if (!options_.is_object()) return Outcome::success(nullptr);
    const auto it = options_.find(key);
    return Outcome::success(it == options_.end() ? nullptr : &*it);
}

OptionOutcome OptionExtractor::refuseLeftovers() const {
    if (!options_.is_object()) return OptionOutcome::success();
    std::vector<std::string> leftovers;
    for (const auto& item : options_.items()) {
        if (extracted_.count(item.key()) == 0) leftovers.push_back(item.key());
    }
    if (leftovers.empty()) return OptionOutcome::success();
    return OptionOutcome::failure("invalid option(s): " + nlohmann::json(leftovers).dump());
}

template <>
OptionOutcome extract_to<bool>(OptionExtractor& options, const std::string& key, bool& target) {
    auto taken = options.take(key);
    if (!taken.ok()) return OptionOutcome::failure(taken.error());
    const nlohmann::json* value = taken.value();
    if (value == nullptr) return OptionOutcome::success();
    if (!value->is_boolean()) {
        return OptionOutcome::failure("option '" + key + "' ( = '" + value->dump() +
                                      "' ) is not a boolean.");
    }
    target = value->get<bool>();
    return OptionOutcome::success();
}

OptionOutcome extract_reference_year_to(OptionExtractor& options, const std::string& key,
                                        std::optional<int>& target) {
    auto taken = options.take(key);
    if (!taken.ok()) return OptionOutcome::failure(taken.error());
    const nlohmann::json* value = taken.value();
    if (value == nullptr) return OptionOutcome::success();
    bool valid = false;
    if (value->is_number_unsigned()) {
        const auto year = value->get<std::uint64_t>();
        valid = year >= kMinimumReferenceYear && year <= kMaximumReferenceYear;
    } else if (value->is_number_integer()) {
        const auto year = value->get<std::int64_t>();
        valid = year >= kMinimumReferenceYear && year <= kMaximumReferenceYear;
    }
    if (!valid) {
        return OptionOutcome::failure("option '" + key +
                                      "' must be a valid year greater than or equal 2000");
    }
    target = value->get<int>();
    return OptionOutcome::success();
}

}  // namespace parser
