// qvx::ParserDeserializer: parsers made and updated from JSON descriptions,
// the failure texts, the helper and listener calls, and the warnings.
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "qvx/qvx.h"

namespace {

using nlohmann::json;
using qvx::ParserDeserializer;
using Strings = std::vector<std::string>;

std::string thrownBy(const std::function<void()>& call) {
    try {
        call();
    } catch (const std::invalid_argument& e) {
        return e.what();
    }
    return "<nothing thrown>";
}

const json kVinDefaults = {{"false_positive_compensation", false}, {"strict_mode", false}};

struct CreateCase {
    const char* name;
    const char* description;
    std::string error;  // empty: the parser is made
    std::string id = {};
    json options = {};
    Strings warnings = {};
};

class DeserializerCreate : public ::testing::TestWithParam<CreateCase> {};

TEST_P(DeserializerCreate, MakesParserOrThrows) {
    const auto& c = GetParam();
    auto deserializer = ParserDeserializer::create();
    std::shared_ptr<qvx::Parser> parser;
    std::string thrown =
        thrownBy([&] { parser = deserializer->parserFromJsonString(nullptr, c.description); });
    if (!c.error.empty()) {
        EXPECT_EQ(thrown, c.error);
        return;
    }
    ASSERT_EQ(thrown, "<nothing thrown>");
    EXPECT_EQ(parser->getComponentId(), c.id);
    EXPECT_EQ(parser->optionsToJSON(), c.options);
    EXPECT_EQ(deserializer->getWarnings(), c.warnings);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, DeserializerCreate,
    ::testing::Values(
        CreateCase{
            "Minimal", R"({"type": "parser", "dataFormat": "vin"})", "", "", kVinDefaults, {}},
        CreateCase{"IdAndOptions",
                   R"({"type": "parser", "dataFormat": "vin", "id": "gate 3",
                       "options": {"strictMode": true}})",
                   "",
                   "gate 3",
                   {{"false_positive_compensation", false}, {"strict_mode", true}},
                   {}},
        CreateCase{"UnusedKeysWarn",
                   R"({"type": "parser", "dataFormat": "vin", "option": {"strictMode": true},
                       "z": {"a": 1}})",
                   "",
                   "",
                   kVinDefaults,
                   {"/option was not used.", "/z was not used."}},
        CreateCase{"EmptyOptionsAnyFormat",
                   R"({"type": "parser", "dataFormat": "hibc",
                                                "options": {}})",
                   "",
                   "",
                   json::object(),
                   {}},
        CreateCase{
            "OtherType", R"({"type": "camera", "dataFormat": "vin"})",
            "/type is required to be one of ['parser'] to be processed by this deserializer."},
        CreateCase{"TypeMissing", R"({"dataFormat": "vin"})", "/type is required but missing."},
        CreateCase{"TypeNotString", R"({"type": ["parser"], "dataFormat": "vin"})",
                   "/type is required to be a string."},
        CreateCase{"UnknownFormat", R"({"type": "parser", "dataFormat": "pdf417"})",
                   "Can't find appropriate enum value"},
        CreateCase{"FormatNameIsCaseSensitive", R"({"type": "parser", "dataFormat": "VIN"})",
                   "Can't find appropriate enum value"},
        CreateCase{"FormatMissing", R"({"type": "parser"})",
                   "/dataFormat is required but missing."},
        CreateCase{"IdNotString", R"({"type": "parser", "dataFormat": "vin", "id": 7})",
                   "/id is required to be a string."},
        CreateCase{"OptionsNotObject",
                   R"({"type": "parser", "dataFormat": "vin", "options": "{}"})",
                   "/options is required to be an object."},
        CreateCase{"InvalidOption", R"({"type": "parser", "dataFormat": "vin",
                                        "options": {"strictMode": true, "x": 1}})",
                   "invalid option: x"},
        CreateCase{"OptionWrongType", R"({"type": "parser", "dataFormat": "vin",
                                          "options": {"strictMode": "yes"}})",
                   "option 'strictMode' must be a boolean"},
        CreateCase{"SnakeCaseOptionRefused", R"({"type": "parser", "dataFormat": "swissqr",
                                                 "options": {"strict_mode": true}})",
                   "invalid option: strict_mode"},
        CreateCase{"NotAnObject", "[]", "/ is required to be an object."},
        CreateCase{"NotJson", "{\"type\": ",
                   "Invalid JSON: parse error at line 1, column 10: syntax error while parsing "
                   "value - unexpected end of input; expected '[', '{', or a literal"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Deserializer, EveryBuiltFormatCanBeDescribed) {
    auto deserializer = ParserDeserializer::create();
    for (const auto& [format, name] : parser::dataFormatTable()) {
        const std::string description = json{{"type", "parser"}, {"dataFormat", name}}.dump();
        std::shared_ptr<qvx::Parser> parser;
        std::string thrown =
            thrownBy([&] { parser = deserializer->parserFromJsonString(nullptr, description); });
        if (qvx::Parser::isFormatAvailable(format)) {
            ASSERT_TRUE(parser) << thrown;
            EXPECT_EQ(parser->format(), format);
        } else {
            EXPECT_EQ(thrown, "/ was unable to be created as a parser.") << name;
        }
    }
}

struct UpdateCase {
    const char* name;
    const char* description;
    std::string error;
    json options;  // after the update, failed or not
    Strings warnings;
};

class DeserializerUpdate : public ::testing::TestWithParam<UpdateCase> {};

// Every update starts from a vin parser with strictMode set and the id "first".
TEST_P(DeserializerUpdate, KeepsWhatTheDescriptionDoesNotMention) {
    const auto& c = GetParam();
    auto deserializer = ParserDeserializer::create();
    auto parser = deserializer->parserFromJsonString(
        nullptr,
        R"({"type": "parser", "dataFormat": "vin", "id": "first", "extra": 1,
            "options": {"strictMode": true}})");
    ASSERT_EQ(deserializer->getWarnings(), Strings{"/extra was not used."});
    std::string thrown = thrownBy([&] {
        EXPECT_EQ(deserializer->updateParserFromJsonString(parser, c.description), parser);
    });
    EXPECT_EQ(thrown, c.error.empty() ? "<nothing thrown>" : c.error);
    EXPECT_EQ(parser->getComponentId(), "first");
    EXPECT_EQ(parser->optionsToJSON(), c.options);
    EXPECT_EQ(deserializer->getWarnings(), c.warnings);
}

const json kStrict = {{"false_positive_compensation", false}, {"strict_mode", true}};
const json kBoth = {{"false_positive_compensation", true}, {"strict_mode", true}};
const Strings kCreateWarnings = {"/extra was not used."};

INSTANTIATE_TEST_SUITE_P(
    Cases, DeserializerUpdate,
    ::testing::Values(
        UpdateCase{"OptionsAbsent", R"({"type": "parser", "dataFormat": "vin"})", "", kStrict, {}},
        UpdateCase{"OptionsMerged",
                   R"({"type": "parser", "dataFormat": "vin",
                       "options": {"falsePositiveCompensation": true}})",
                   "",
                   kBoth,
                   {}},
        UpdateCase{"IdIgnored",
                   R"({"type": "parser", "dataFormat": "vin", "id": "second"})",
                   "",
                   kStrict,
                   {"/id was not used."}},
        UpdateCase{"OtherFormat",
                   R"({"type": "parser", "dataFormat": "gs1ai", "options": {"strictMode": false}})",
                   "/ data format does not match the format of the existing parser.", kStrict,
                   kCreateWarnings},
        UpdateCase{
            "OtherType", R"({"type": "camera", "dataFormat": "vin"})",
            "/type is required to be one of ['parser'] to be processed by this deserializer.",
            kStrict, kCreateWarnings},
        UpdateCase{"FailedOptionKeepsThoseBefore",
                   R"({"type": "parser", "dataFormat": "vin",
                       "options": {"falsePositiveCompensation": true, "x": 1}})",
                   "invalid option: x", kBoth, kCreateWarnings}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Deserializer, TypesAndComponents) {
    auto deserializer = ParserDeserializer::create();
    EXPECT_TRUE(deserializer->isTypeSupported("parser"));
    for (const char* type : {"Parser", "parser ", "", "camera"}) {
        EXPECT_FALSE(deserializer->isTypeSupported(type)) << type;
    }
    auto created = qvx::Parser::create(nullptr, ParserDataFormat::Vin);
    ASSERT_TRUE(created.ok());
    EXPECT_TRUE(deserializer->isComponentSupported(created.value()));
    EXPECT_FALSE(deserializer->isComponentSupported(nullptr));

    // A component that claims the parser kind without being one.
    auto foreign =
        std::make_shared<qvx::core::TrovaneComponent>(qvx::core::TrovaneComponent::Kind::Parser);
    auto description =
        qvx::core::JsonValue::fromString(R"({"type": "parser", "dataFormat": "vin"})");
    for (const auto& component : {std::shared_ptr<qvx::core::TrovaneComponent>(), foreign}) {
        EXPECT_EQ(thrownBy([&] { deserializer->updateComponentFromJson(component, description); }),
                  "Trovane component to be updated was not of type 'parser'.");
    }
}

TEST(Deserializer, WithoutHelperNothingIsMadeOrUpdated) {
    auto deserializer = ParserDeserializer::create(nullptr);
    auto description = qvx::core::JsonValue::fromString(R"({"type": "camera"})");
    EXPECT_EQ(thrownBy([&] { deserializer->createComponentFromJson(nullptr, description); }),
              "Deserialization requires a helper.");
    EXPECT_EQ(thrownBy([&] { deserializer->updateComponentFromJson(nullptr, description); }),
              "Deserialization requires a helper.");
}

// Records what the deserializer asks of it; makes nothing for "hibc".
class RecordingHelper : public qvx::ParserDeserializerHelper {
  public:
    std::shared_ptr<qvx::Parser> createParser(const std::shared_ptr<qvx::core::Context>& context,
                                              ParserDataFormat format) override {
        calls.push_back("create " + parser::dataFormatName(format));
        contexts.push_back(context);
        if (format == ParserDataFormat::Hibc) return nullptr;
        return qvx::Parser::create(context, format).value();
    }
    void applySettings(const std::shared_ptr<qvx::Parser>& parser,
                       const std::shared_ptr<qvx::core::JsonValue>& json) override {
        calls.push_back("apply " + parser->optionsToJSON().dump() + " " + json->toString());
    }
    Strings calls;
    std::vector<std::shared_ptr<qvx::core::Context>> contexts;
};

class RecordingListener : public qvx::ParserDeserializerListener {
  public:
    void onParserDeserializationStarted(
        const std::shared_ptr<ParserDeserializer>& deserializer,
        const std::shared_ptr<qvx::Parser>& parser,
        const std::shared_ptr<qvx::core::JsonValue>& json) override {
        record("started", deserializer, parser, json);
    }
    void onParserDeserializationFinished(
        const std::shared_ptr<ParserDeserializer>& deserializer,
        const std::shared_ptr<qvx::Parser>& parser,
        const std::shared_ptr<qvx::core::JsonValue>& json) override {
        record("finished", deserializer, parser, json);
    }
    void record(const std::string& what, const std::shared_ptr<ParserDeserializer>& deserializer,
                const std::shared_ptr<qvx::Parser>& parser,
                const std::shared_ptr<qvx::core::JsonValue>& json) {
        calls.push_back(what + " " + parser->optionsToJSON().dump() + " " +
                        json->getStringForKey("dataFormat"));
        deserializers.push_back(deserializer);
    }
    Strings calls;
    std::vector<std::shared_ptr<ParserDeserializer>> deserializers;
};

TEST(Deserializer, HelperAndListenerAreToldInOrder) {
    auto helper = std::make_shared<RecordingHelper>();
    auto listener = std::make_shared<RecordingListener>();
    auto deserializer = ParserDeserializer::create(helper);
    deserializer->setListener(listener);
    auto context = std::make_shared<qvx::core::Context>();

    auto parser =
        deserializer->parserFromJsonString(context, R"({"type": "parser", "dataFormat": "mrtd",
                     "options": {"relaxedChecksumValidation": true}})");
    const std::string relaxed =
        R"({"allow_false_positive_compensation":false,"relaxed_checksum_validation":true})";
    const std::string defaults =
        R"({"allow_false_positive_compensation":false,"relaxed_checksum_validation":false})";
    EXPECT_EQ(
        helper->calls,
        (Strings{
            "create mrtd",
            "apply " + relaxed +
                R"( {"dataFormat":"mrtd","options":{"relaxedChecksumValidation":true},"type":"parser"})"}));
    EXPECT_EQ(helper->contexts, std::vector<std::shared_ptr<qvx::core::Context>>{context});
    EXPECT_EQ(listener->calls,
              (Strings{"started " + defaults + " mrtd", "finished " + relaxed + " mrtd"}));
    EXPECT_EQ(listener->deserializers,
              (std::vector<std::shared_ptr<ParserDeserializer>>{deserializer, deserializer}));

    // A failed update is started but never finished, and applies no settings.
    listener->calls.clear();
    helper->calls.clear();
    EXPECT_NE(thrownBy([&] {
                  deserializer->updateParserFromJsonString(
                      parser, R"({"type": "parser", "dataFormat": "vin"})");
              }),
              "<nothing thrown>");
    EXPECT_EQ(listener->calls, Strings{"started " + relaxed + " vin"});
    EXPECT_EQ(helper->calls, Strings{});

    // The helper's null parser; a listener that is gone is not told.
    listener.reset();
    EXPECT_EQ(thrownBy([&] {
                  deserializer->parserFromJsonString(context,
                                                     R"({"type": "parser", "dataFormat": "hibc"})");
              }),
              "/ was unable to be created as a parser.");
}

class RecordingSink : public qvx::core::EventSink {
  public:
    void send(int eventId, const qvx::core::JsonValue& payload) override {
        events.push_back(std::to_string(eventId) + " " + payload.toString());
    }
    Strings events;
};

TEST(Deserializer, DescribedParserReportsUsageEventsToTheContextSink) {
    auto sink = std::make_shared<RecordingSink>();
    auto parser = ParserDeserializer::create()->parserFromJsonString(
        std::make_shared<qvx::core::Context>(sink),
        R"({"type": "parser", "dataFormat": "vin", "options": {"strictMode": true}})");
    EXPECT_FALSE(parser->parse("1HGCM").ok());
    EXPECT_EQ(sink->events,
              Strings{R"(15 {"error":"valid VIN consists of 17 characters","format":"vin",)"
                      R"("operation":"string","options":{"false_positive_compensation":false,)"
                      R"("strict_mode":true},"success":false})"});
}

}  // namespace
