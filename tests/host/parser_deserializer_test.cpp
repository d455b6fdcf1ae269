// qvx::ParserDeserializer: parsers made and updated from JSON descriptions,
// the failure texts, the helper and listener calls, and the warnings.
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "qvx/qvx.h"

namespace {

using qvx::ParserDeserializer;
using Strings = std::vector<std::string>;

std::string thrownBy(const std::function<void()>& call) {
    try {
        call();
    } catch (const std::invalid_argument& e) {
        return e.what();
    }
    return "";
}

// "<id> <the options that are true, or -> [warnings]", e.g. "g strict_mode []".
std::string state(const qvx::Parser& parser, const ParserDeserializer& deserializer) {
    std::string on;
    const nlohmann::json options = parser.optionsToJSON();
    for (const auto& [key, value] : options.items()) {
        if (value == true) on += (on.empty() ? "" : "+") + key;
    }
    return parser.getComponentId() + " " + (on.empty() ? "-" : on) + " " +
           nlohmann::json(deserializer.getWarnings()).dump();
}

struct Case {
    const char* name;
    std::string description;
    // "<text thrown> | " when a call fails, then the state afterwards: of the
    // new parser, or of a vin parser made with the id "v", strictMode and an
    // unused key, to which the description is then applied as an update.
    std::string created;
    std::string updated;
};

class Describe : public ::testing::TestWithParam<Case> {};

TEST_P(Describe, CreateAndUpdate) {
    const auto& c = GetParam();
    auto deserializer = ParserDeserializer::create();
    std::shared_ptr<qvx::Parser> parser;
    std::string thrown =
        thrownBy([&] { parser = deserializer->parserFromJsonString(nullptr, c.description); });
    EXPECT_EQ(parser ? state(*parser, *deserializer) : thrown + " | ", c.created);

    parser = deserializer->parserFromJsonString(
        nullptr, R"({"type": "parser", "dataFormat": "vin", "id": "v", "extra": 1,
                     "options": {"strictMode": true}})");
    thrown = thrownBy([&] { deserializer->updateParserFromJsonString(parser, c.description); });
    EXPECT_EQ((thrown.empty() ? "" : thrown + " | ") + state(*parser, *deserializer), c.updated);
}

const std::string kNotType =
    "/type is required to be one of ['parser'] to be processed by this deserializer. | ";
const std::string kUpdateFailed = "v strict_mode [\"/extra was not used.\"]";

INSTANTIATE_TEST_SUITE_P(
    Cases, Describe,
    ::testing::Values(
        Case{"Minimal", R"({"type": "parser", "dataFormat": "vin"})", " - []", "v strict_mode []"},
        Case{"IdAndOptions",
             R"({"type": "parser", "dataFormat": "vin", "id": "g",
                 "options": {"falsePositiveCompensation": true}})",
             "g false_positive_compensation []",
             "v false_positive_compensation+strict_mode [\"/id was not used.\"]"},
        Case{"OtherFormat", R"({"type": "parser", "dataFormat": "hibc", "options": {}})", " - []",
             "/ data format does not match the format of the existing parser. | " + kUpdateFailed},
        Case{"IdNotString", R"({"type": "parser", "dataFormat": "vin", "id": 7})",
             "/id is required to be a string. | ", "v strict_mode [\"/id was not used.\"]"},
        Case{"OtherType", R"({"type": "camera", "dataFormat": "vin"})", kNotType,
             kNotType + kUpdateFailed},
        Case{"UnknownFormat", R"({"type": "parser", "dataFormat": "pdf417"})",
             "Can't find appropriate enum value | ",
             "Can't find appropriate enum value | " + kUpdateFailed},
        Case{"BadOptionKeepsThoseBefore",
             R"({"type": "parser", "dataFormat": "vin",
                 "options": {"falsePositiveCompensation": true, "x": 1}})",
             "invalid option: x | ",
             "invalid option: x | v false_positive_compensation+strict_mode "
             "[\"/extra was not used.\"]"},
        Case{"NotAnObject", "[]", "/ is required to be an object. | ",
             "/ is required to be an object. | " + kUpdateFailed}),
    [](const auto& info) { return std::string(info.param.name); });

// Makes no parser at all.
class NullHelper : public qvx::DefaultParserDeserializerHelper {
  public:
    std::shared_ptr<qvx::Parser> createParser(
        const std::shared_ptr<qvx::core::Context>& /*context*/,
        ParserDataFormat /*format*/) override {
        return nullptr;
    }
};

TEST(Deserializer, TypesComponentsAndHelpers) {
    auto deserializer = ParserDeserializer::create();
    EXPECT_TRUE(deserializer->isTypeSupported("parser"));
    EXPECT_FALSE(deserializer->isTypeSupported("Parser"));
    // Null, and a component that claims the parser kind without being one.
    auto foreign =
        std::make_shared<qvx::core::TrovaneComponent>(qvx::core::TrovaneComponent::Kind::Parser);
    auto json = qvx::core::JsonValue::fromString(R"({"type": "parser", "dataFormat": "vin"})");
    EXPECT_FALSE(deserializer->isComponentSupported(nullptr));
    for (const auto& component : {std::shared_ptr<qvx::core::TrovaneComponent>(), foreign}) {
        EXPECT_EQ(thrownBy([&] { deserializer->updateComponentFromJson(component, json); }),
                  "Trovane component to be updated was not of type 'parser'.");
    }
    EXPECT_EQ(thrownBy([&] {
                  ParserDeserializer::create(nullptr)->createComponentFromJson(nullptr, json);
              }),
              "Deserialization requires a helper.");
    EXPECT_EQ(thrownBy([&] {
                  ParserDeserializer::create(std::make_shared<NullHelper>())
                      ->createComponentFromJson(nullptr, json);
              }),
              "/ was unable to be created as a parser.");
}

class Recorder : public qvx::ParserDeserializerListener {
  public:
    void onParserDeserializationStarted(
        const std::shared_ptr<ParserDeserializer>& /*deserializer*/,
        const std::shared_ptr<qvx::Parser>& parser,
        const std::shared_ptr<qvx::core::JsonValue>& json) override {
        record("started", *parser, *json);
    }
    void onParserDeserializationFinished(
        const std::shared_ptr<ParserDeserializer>& /*deserializer*/,
        const std::shared_ptr<qvx::Parser>& parser,
        const std::shared_ptr<qvx::core::JsonValue>& json) override {
        record("finished", *parser, *json);
    }
    void record(const std::string& what, const qvx::Parser& parser,
                const qvx::core::JsonValue& json) {
        const bool strict = parser.optionsToJSON().value("strict_mode", false);
        log.push_back(what + (strict ? " strict " : " lax ") + json.getStringForKey("dataFormat"));
    }
    Strings log;
};

TEST(Deserializer, ListenerIsToldOfEveryUpdateAndHeldWeakly) {
    auto listener = std::make_shared<Recorder>();
    auto deserializer = ParserDeserializer::create();
    deserializer->setListener(listener);
    auto parser = deserializer->parserFromJsonString(
        nullptr, R"({"type": "parser", "dataFormat": "vin", "options": {"strictMode": true}})");
    // A failed update is started but not finished.
    thrownBy([&] {
        deserializer->updateParserFromJsonString(parser,
                                                 R"({"type": "parser", "dataFormat": "mrtd"})");
    });
    EXPECT_EQ(listener->log,
              (Strings{"started lax vin", "finished strict vin", "started strict mrtd"}));

    std::weak_ptr<Recorder> watch = listener;
    listener.reset();
    EXPECT_TRUE(watch.expired());
    EXPECT_TRUE(
        deserializer->parserFromJsonString(nullptr, R"({"type": "parser", "dataFormat": "vin"})"));
}

}  // namespace
