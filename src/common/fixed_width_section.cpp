#include "common/fixed_width_section.h"

#include <string_view>
#include <utility>

#include "common/text.h"

namespace parser {

ParsedField* FieldTarget::add(const char* name, ParserStringRef raw, nlohmann::json value,
                              const std::string& issueText) {
    if (members_ != nullptr) {
        members_->insert_or_assign(name, std::move(value));
        return nullptr;
    }
    return &result_.fields.emplace_back(name, raw.str(), std::move(value), issueText);
}

ParsedField* FieldTarget::add(const char* name, std::string&& raw, nlohmann::json value,
                              const std::string& issueText) {
    if (members_ != nullptr) {
        members_->insert_or_assign(name, std::move(value));
        return nullptr;
    }
    return &result_.fields.emplace_back(name, std::move(raw), std::move(value), issueText);
}

bool FieldTarget::fail(const std::string& message) {
    result_.setError(message);
    return false;
}

bool fitFixedWidth(std::size_t& width, std::size_t available, bool requireFullWidth,
                   FieldTarget& target) {
    if (available >= width) return true;
    if (requireFullWidth) return target.fail("code string is too small");
    width = available;
    return true;
}

}  // namespace parser
