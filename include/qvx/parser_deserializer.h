// qvx::ParserDeserializer: parsers made and updated from a JSON description.
//
// A description is one object:
//   "type"        required, "parser"
//   "dataFormat"  required, a format name ("vin", "gs1ai", ...)
//   "id"          optional, the component id of a new parser (ignored by updates)
//   "options"     optional object, handed to the parser's option setter
//
// Every failure is thrown as `std::invalid_argument`; nothing else in the
// library throws. A failed update leaves the parser as far as it had come.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qvx/core/context.h"
#include "qvx/core/json_value.h"
#include "qvx/core/trovane_component.h"
#include "qvx/core/trovane_component_deserializer.h"
#include "qvx/data_format.h"
#include "qvx/parser.h"

namespace qvx {

class ParserDeserializer;

// Makes the parser objects of a deserializer; a host layer supplies its own.
class ParserDeserializerHelper {
  public:
    ParserDeserializerHelper() = default;
    ParserDeserializerHelper(const ParserDeserializerHelper&) = delete;
    ParserDeserializerHelper& operator=(const ParserDeserializerHelper&) = delete;
    virtual ~ParserDeserializerHelper() = default;

    // A parser of `format` with default options, or null when none can be made.
    virtual std::shared_ptr<Parser> createParser(const std::shared_ptr<core::Context>& context,
                                                 ParserDataFormat format) = 0;
    // Called after the options of a description are set, for settings of the
    // host's own beyond the parser options.
    virtual void applySettings(const std::shared_ptr<Parser>& parser,
                               const std::shared_ptr<core::JsonValue>& json) = 0;
};

// The helper for C++ callers: parsers come from `Parser::create`, so every
// format built into the library can be described.
class DefaultParserDeserializerHelper : public ParserDeserializerHelper {
  public:
    std::shared_ptr<Parser> createParser(const std::shared_ptr<core::Context>& context,
                                         ParserDataFormat format) override;
    void applySettings(const std::shared_ptr<Parser>& parser,
                       const std::shared_ptr<core::JsonValue>& json) override;
};

// Told when an update (also the one that ends every creation) starts, and when
// it has finished without failure.
class ParserDeserializerListener {
  public:
    ParserDeserializerListener() = default;
    ParserDeserializerListener(const ParserDeserializerListener&) = delete;
    ParserDeserializerListener& operator=(const ParserDeserializerListener&) = delete;
    virtual ~ParserDeserializerListener() = default;

    virtual void onParserDeserializationStarted(
        const std::shared_ptr<ParserDeserializer>& deserializer,
        const std::shared_ptr<Parser>& parser, const std::shared_ptr<core::JsonValue>& json) = 0;
    virtual void onParserDeserializationFinished(
        const std::shared_ptr<ParserDeserializer>& deserializer,
        const std::shared_ptr<Parser>& parser, const std::shared_ptr<core::JsonValue>& json) = 0;
};

class ParserDeserializer : public core::TrovaneComponentDeserializer,
                           public std::enable_shared_from_this<ParserDeserializer> {
  public:
    // A null helper is allowed, but then every create and update throws.
    static std::shared_ptr<ParserDeserializer> create(
        std::shared_ptr<ParserDeserializerHelper> helper =
            std::make_shared<DefaultParserDeserializerHelper>());

    bool isTypeSupported(const std::string& type) const override;
    bool isComponentSupported(
        const std::shared_ptr<core::TrovaneComponent>& component) const override;
    // Returns a `Parser` (never null): made by the helper, given the
    // description's id, then updated with the same description.
    std::shared_ptr<core::TrovaneComponent> createComponentFromJson(
        const std::shared_ptr<core::Context>& context,
        const std::shared_ptr<core::JsonValue>& json) override;
    // Checks that the description names the parser's format, then sets its
    // options; options it does not mention keep their values.
    std::shared_ptr<core::TrovaneComponent> updateComponentFromJson(
        const std::shared_ptr<core::TrovaneComponent>& component,
        const std::shared_ptr<core::JsonValue>& json) override;
    // The unused keys of the last successful update, such as "/extra was not used.".
    std::vector<std::string> getWarnings() const override { return warnings_; }

    // The same two operations on JSON text, for callers that hold text.
    std::shared_ptr<Parser> parserFromJsonString(const std::shared_ptr<core::Context>& context,
                                                 const std::string& json);
    std::shared_ptr<Parser> updateParserFromJsonString(const std::shared_ptr<Parser>& parser,
                                                       const std::string& json);

    // Held weakly: the listener's owner decides how long it is told.
    void setListener(const std::shared_ptr<ParserDeserializerListener>& listener) {
        listener_ = listener;
    }

  private:
    explicit ParserDeserializer(std::shared_ptr<ParserDeserializerHelper> helper)
        : helper_(std::move(helper)) {}

    void requireHelper() const;
    ParserDataFormat readDataFormat(const core::JsonValue& json) const;
    void update(const std::shared_ptr<Parser>& parser,
                const std::shared_ptr<core::JsonValue>& json);

    std::shared_ptr<ParserDeserializerHelper> helper_;
    std::weak_ptr<ParserDeserializerListener> listener_;
    std::vector<std::string> warnings_;
};

}  // namespace qvx
