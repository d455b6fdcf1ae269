// Host integration point: the capture library's JSON value.
//
// In the host application this class belongs to the closed capture library.
// This stand-in wraps an nlohmann JSON value and offers only what the parsers'
// host layer calls. Besides the value it keeps where the value sits in the
// document it came from, and which object keys were read, so that keys nobody
// read (most often misspelt ones) can be reported as warnings.
//
// Reads of members fail with `std::invalid_argument`, whose text names the
// member by its path. Not safe for concurrent use: reading records usage.
#pragma once

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace qvx::core {

class JsonValue {
  public:
    // Shared, never copied: a copy would share the record of what was read.
    JsonValue(const JsonValue&) = delete;
    JsonValue& operator=(const JsonValue&) = delete;
    ~JsonValue() = default;

    // Null when the value cannot be represented (never, for this stand-in).
    static std::shared_ptr<JsonValue> fromNlohmannJson(const nlohmann::json& json);
    // Parses strict JSON text (no comments); throws on anything else.
    static std::shared_ptr<JsonValue> fromString(const std::string& text);

    // The member `key` of this object, recorded as read. Throws when this is
    // not an object or has no such member.
    std::shared_ptr<JsonValue> getForKey(const std::string& key) const;
    // The string member `key`; throws when it is missing or not a string.
    std::string getStringForKey(const std::string& key) const;
    // As above, but a missing member gives `defaultValue`.
    std::string getStringForKeyOrDefault(const std::string& key,
                                         const std::string& defaultValue) const;
    // The object member `key`, or a value of `defaultValue` at the member's
    // path when it is missing; throws when it is present but not an object.
    std::shared_ptr<JsonValue> getObjectForKeyOrDefault(const std::string& key,
                                                        const nlohmann::json& defaultValue) const;

    // Where the value sits in its document, as a JSON pointer: "/" for the
    // root, "/options/strictMode" for a member of a member.
    const std::string& getAbsolutePath() const noexcept { return path_; }

    // Marks this value and everything in it as read (or, with false, as not
    // read), for values that are consumed whole.
    void setRecursivelyUsed(bool used);
    // One text per object member below this value that was never read, in
    // document order (keys sorted), each naming the member's path.
    std::vector<std::string> getWarnings() const;

    // Compact JSON text; invalid UTF-8 is dropped.
    std::string toString() const;
    const nlohmann::json& nlohmannJson() const noexcept { return json_; }

  private:
    JsonValue(nlohmann::json json, std::string path)
        : json_(std::move(json)), path_(std::move(path)) {}

    // The member `key`, made on first access and recorded as read; null when
    // missing. Throws when this is not an object.
    std::shared_ptr<JsonValue> member(const std::string& key) const;
    std::string memberPath(const std::string& key) const;
    static std::string stringOf(const JsonValue& value);
    void collectWarnings(std::vector<std::string>& out) const;

    nlohmann::json json_;
    std::string path_;
    // Usage is bookkeeping, not part of the value: reads stay const.
    mutable bool used_ = false;
    mutable bool allUsed_ = false;
    mutable std::map<std::string, std::shared_ptr<JsonValue>> members_;
};

}  // namespace qvx::core
