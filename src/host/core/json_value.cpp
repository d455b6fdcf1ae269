#include "qvx/core/json_value.h"

#include <stdexcept>
#include <string_view>

#include "qvx/parsed.h"

namespace qvx::core {

std::shared_ptr<JsonValue> JsonValue::fromNlohmannJson(const nlohmann::json& json) {
    return std::shared_ptr<JsonValue>(new JsonValue(json, "/"));
}

std::shared_ptr<JsonValue> JsonValue::fromString(const std::string& text) {
    try {
        return std::shared_ptr<JsonValue>(new JsonValue(nlohmann::json::parse(text), "/"));
    } catch (const nlohmann::json::parse_error& e) {
        // Without nlohmann's "[json.exception.parse_error.N] " prefix.
        std::string_view what = e.what();
        if (auto end = what.find("] "); !what.empty() && what[0] == '[' && end != what.npos) {
            what.remove_prefix(end + 2);
        }
        throw std::invalid_argument("Invalid JSON: " + std::string(what));
    }
}

std::string JsonValue::memberPath(const std::string& key) const {
    std::string path = path_ == "/" ? "" : path_;
    path += '/';
    for (char c : key) {
        if (c == '~') {
            path += "~0";
        } else if (c == '/') {
            path += "~1";
        } else {
            path += c;
        }
    }
    return path;
}

std::shared_ptr<JsonValue> JsonValue::member(const std::string& key) const {
    if (!json_.is_object()) throw std::invalid_argument(path_ + " is required to be an object.");
    auto found = json_.find(key);
    if (found == json_.end()) return nullptr;
    auto& slot = members_[key];
    if (!slot) slot = std::shared_ptr<JsonValue>(new JsonValue(*found, memberPath(key)));
    slot->used_ = true;
    return slot;
}

std::shared_ptr<JsonValue> JsonValue::getForKey(const std::string& key) const {
    auto value = member(key);
    if (!value) throw std::invalid_argument(memberPath(key) + " is required but missing.");
    return value;
}

std::string JsonValue::stringOf(const JsonValue& value) {
    if (!value.json_.is_string()) {
        throw std::invalid_argument(value.path_ + " is required to be a string.");
    }
    return value.json_.get<std::string>();
}

std::string JsonValue::getStringForKey(const std::string& key) const {
    return stringOf(*getForKey(key));
}

std::string JsonValue::getStringForKeyOrDefault(const std::string& key,
                                                const std::string& defaultValue) const {
    auto value = member(key);
    return value ? stringOf(*value) : defaultValue;
}

std::shared_ptr<JsonValue> JsonValue::getObjectForKeyOrDefault(
    const std::string& key, const nlohmann::json& defaultValue) const {
    auto value = member(key);
    if (!value) return std::shared_ptr<JsonValue>(new JsonValue(defaultValue, memberPath(key)));
    if (!value->json_.is_object()) {
        throw std::invalid_argument(value->path_ + " is required to be an object.");
    }
    return value;
}

void JsonValue::setRecursivelyUsed(bool used) {
    used_ = used;
    allUsed_ = used;
    for (auto& [key, value] : members_) value->setRecursivelyUsed(used);
}

std::vector<std::string> JsonValue::getWarnings() const {
    std::vector<std::string> warnings;
    collectWarnings(warnings);
    return warnings;
}

// Array elements are not followed: this value offers no way to read them one
// by one, so an array is consumed whole or not at all.
void JsonValue::collectWarnings(std::vector<std::string>& out) const {
    if (allUsed_ || !json_.is_object()) return;
    for (const auto& item : json_.items()) {
        auto found = members_.find(item.key());
        if (found == members_.end() || !found->second->used_) {
            out.push_back(memberPath(item.key()) + " was not used.");
        } else {
            found->second->collectWarnings(out);
        }
    }
}

std::string JsonValue::toString() const {
    return parser::toCompactJsonText(json_);
}

}  // namespace qvx::core
