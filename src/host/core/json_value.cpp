#include "qvx/core/json_value.h"

namespace qvx::core {

std::shared_ptr<JsonValue> JsonValue::fromNlohmannJson(const nlohmann::json& json) {
    return std::shared_ptr<JsonValue>(new JsonValue(json));
}

std::string JsonValue::toString() const {
    return json_.dump(-1, ' ', false, nlohmann::json::error_handler_t::ignore);
}

}  // namespace qvx::core
