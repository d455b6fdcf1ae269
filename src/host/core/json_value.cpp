#include "qvx/core/json_value.h"

#include "qvx/parsed.h"

namespace qvx::core {

std::shared_ptr<JsonValue> JsonValue::fromNlohmannJson(const nlohmann::json& json) {
    return std::shared_ptr<JsonValue>(new JsonValue(json));
}

std::string JsonValue::toString() const {
    return parser::toCompactJsonText(json_);
}

}  // namespace qvx::core
