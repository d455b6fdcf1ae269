// The shared habit of option readers: walk the keys in sorted order, write
// each value at once, stop at the first bad key.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "qvx/bc_parser.h"

namespace parser::options {

// `handle(key, value)` applies one option and returns "" or the error text.
// Options read before a failure stay set.
template <class Handler>
std::unique_ptr<ParserOptionsOutcome> walk(const nlohmann::json& options, Handler&& handle) {
    for (const auto& item : options.items()) {
        std::string error = handle(item.key(), item.value());
        if (!error.empty()) return ParserOptionsOutcome::failure(std::move(error));
    }
    return ParserOptionsOutcome::success();
}

inline std::string invalidOption(const std::string& key) {
    return "invalid option: " + key;
}

inline std::string mustBeBoolean(const std::string& key) {
    return "option '" + key + "' must be boolean";
}

// Writes a boolean option; `wrongType` is the text when the value is not boolean.
inline std::string readBool(const nlohmann::json& value, bool& target, std::string wrongType) {
    if (!value.is_boolean()) return wrongType;
    target = value.get<bool>();
    return std::string();
}

}  // namespace parser::options
