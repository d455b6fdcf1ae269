#include "qvx/parser_deserializer.h"

#include <stdexcept>

#include "qvx/contract.h"

namespace qvx {

namespace {

// The description types this deserializer handles.
const std::vector<std::string>& allowedTypes() {
    static const std::vector<std::string> types = {"parser"};
    return types;
}

void checkType(const core::JsonValue& json) {
    const std::string type = json.getStringForKey("type");
    for (const auto& allowed : allowedTypes()) {
        if (type == allowed) return;
    }
    std::string message = json.getForKey("type")->getAbsolutePath() + " is required to be one of [";
    for (std::size_t i = 0; i < allowedTypes().size(); ++i) {
        message += (i == 0 ? "'" : "', '") + allowedTypes()[i];
    }
    message += "'] to be processed by this deserializer.";
    throw std::invalid_argument(message);
}

}  // namespace

std::shared_ptr<Parser> DefaultParserDeserializerHelper::createParser(
    const std::shared_ptr<core::Context>& context, ParserDataFormat format) {
    auto created = Parser::create(context, format);
    return created ? created.value() : nullptr;
}

void DefaultParserDeserializerHelper::applySettings(
    const std::shared_ptr<Parser>& /*parser*/, const std::shared_ptr<core::JsonValue>& /*json*/) {}

std::shared_ptr<ParserDeserializer> ParserDeserializer::create(
    std::shared_ptr<ParserDeserializerHelper> helper) {
    return std::shared_ptr<ParserDeserializer>(new ParserDeserializer(std::move(helper)));
}

bool ParserDeserializer::isTypeSupported(const std::string& type) const {
    for (const auto& allowed : allowedTypes()) {
        if (type == allowed) return true;
    }
    return false;
}

bool ParserDeserializer::isComponentSupported(
    const std::shared_ptr<core::TrovaneComponent>& component) const {
    return component && component->kind() == core::TrovaneComponent::Kind::Parser;
}

void ParserDeserializer::requireHelper() const {
    if (!helper_) throw std::invalid_argument("Deserialization requires a helper.");
}

ParserDataFormat ParserDeserializer::readDataFormat(const core::JsonValue& json) const {
    auto format = parser::dataFormatFromName(json.getStringForKey("dataFormat"));
    if (!format) throw std::invalid_argument("Can't find appropriate enum value");
    return *format;
}

std::shared_ptr<core::TrovaneComponent> ParserDeserializer::createComponentFromJson(
    const std::shared_ptr<core::Context>& context, const std::shared_ptr<core::JsonValue>& json) {
    QVX_REQUIRE(json != nullptr, "precondition failed: json != nullptr");
    requireHelper();
    checkType(*json);
    auto parser = helper_->createParser(context, readDataFormat(*json));
    if (!parser) {
        throw std::invalid_argument(json->getAbsolutePath() +
                                    " was unable to be created as a parser.");
    }
    parser->setComponentId(json->getStringForKeyOrDefault("id", ""));
    return updateComponentFromJson(parser, json);
}

std::shared_ptr<core::TrovaneComponent> ParserDeserializer::updateComponentFromJson(
    const std::shared_ptr<core::TrovaneComponent>& component,
    const std::shared_ptr<core::JsonValue>& json) {
    QVX_REQUIRE(json != nullptr, "precondition failed: json != nullptr");
    requireHelper();
    checkType(*json);
    // The kind says parser for every qvx::Parser; the cast also keeps out a
    // foreign component that claims the kind.
    auto parser =
        isComponentSupported(component) ? std::dynamic_pointer_cast<Parser>(component) : nullptr;
    if (!parser) {
        throw std::invalid_argument("Trovane component to be updated was not of type 'parser'.");
    }
    update(parser, json);
    return parser;
}

void ParserDeserializer::update(const std::shared_ptr<Parser>& parser,
                                const std::shared_ptr<core::JsonValue>& json) {
    if (auto listener = listener_.lock()) {
        listener->onParserDeserializationStarted(shared_from_this(), parser, json);
    }
    if (readDataFormat(*json) != parser->format()) {
        throw std::invalid_argument(
            json->getAbsolutePath() +
            " data format does not match the format of the existing parser.");
    }
    auto options = json->getObjectForKeyOrDefault("options", nlohmann::json::object());
    auto set = parser->setOptions(options->toString());
    if (!set) throw std::invalid_argument(set.error());
    // The parser read the options itself; none of their keys is unused.
    options->setRecursivelyUsed(true);
    helper_->applySettings(parser, json);
    if (auto listener = listener_.lock()) {
        listener->onParserDeserializationFinished(shared_from_this(), parser, json);
    }
    warnings_ = json->getWarnings();
}

std::shared_ptr<Parser> ParserDeserializer::parserFromJsonString(
    const std::shared_ptr<core::Context>& context, const std::string& json) {
    return std::static_pointer_cast<Parser>(
        createComponentFromJson(context, core::JsonValue::fromString(json)));
}

std::shared_ptr<Parser> ParserDeserializer::updateParserFromJsonString(
    const std::shared_ptr<Parser>& parser, const std::string& json) {
    return std::static_pointer_cast<Parser>(
        updateComponentFromJson(parser, core::JsonValue::fromString(json)));
}

}  // namespace qvx
