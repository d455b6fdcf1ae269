// Host integration point: the capture library's JSON value.
//
// In the host application this class belongs to the closed capture library.
// This stand-in wraps an nlohmann JSON value and offers only what the parsers'
// host layer calls.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

namespace qvx::core {

class JsonValue {
  public:
    // Null when the value cannot be represented (never, for this stand-in).
    static std::shared_ptr<JsonValue> fromNlohmannJson(const nlohmann::json& json);

    // Compact JSON text; invalid UTF-8 is dropped.
    std::string toString() const;
    const nlohmann::json& nlohmannJson() const noexcept { return json_; }

  private:
    explicit JsonValue(nlohmann::json json) : json_(std::move(json)) {}

    nlohmann::json json_;
};

}  // namespace qvx::core
