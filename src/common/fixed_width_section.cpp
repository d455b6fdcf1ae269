#include "common/fixed_width_section.h"

#include <climits>
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

std::optional<int> readDecimalInt(ParserStringRef text) {
    std::string_view digits = text.view();
    while (!digits.empty() && isCSpace(static_cast<unsigned char>(digits.front()))) {
        digits.remove_prefix(1);
    }
    if (digits.empty()) return std::nullopt;
    long long value = 0;
    for (const char c : digits) {
        if (!isAsciiDigit(static_cast<unsigned char>(c))) return std::nullopt;
        value = value * 10 + (c - '0');
        if (value > INT_MAX) return std::nullopt;
    }
    return static_cast<int>(value);
}

namespace {

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isCSpace(static_cast<unsigned char>(text.front()))) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isCSpace(static_cast<unsigned char>(text.back()))) {
        text.remove_suffix(1);
    }
    return text;
}

}  // namespace

nlohmann::json piecesLastFirst(ParserStringRef text, char delimiter) {
    std::string_view rest = text.view();
    if (rest.empty()) return nullptr;
    if (rest.back() == delimiter) rest.remove_suffix(1);
    nlohmann::json array = nlohmann::json::array();
    auto& pieces = array.get_ref<nlohmann::json::array_t&>();
    std::size_t count = 1;
    for (const char c : rest) count += c == delimiter ? 1 : 0;
    pieces.reserve(count);
    // Walking from the end yields the pieces in the order they are wanted.
    while (true) {
        const std::size_t at = rest.rfind(delimiter);
        if (at == std::string_view::npos) {
            pieces.emplace_back(std::string(trimmed(rest)));
            break;
        }
        pieces.emplace_back(std::string(trimmed(rest.substr(at + 1))));
        rest = rest.substr(0, at);
    }
    return array;
}

}  // namespace parser
