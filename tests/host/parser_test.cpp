// qvx::Parser: creation over the format table, the parse outcome, options and
// the usage event a host's capture library receives.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "qvx/qvx.h"

namespace {

using nlohmann::json;

class RecordingSink : public qvx::core::EventSink {
  public:
    void send(int eventId, const qvx::core::JsonValue& payload) override {
        events.emplace_back(eventId, payload.nlohmannJson());
    }
    std::vector<std::pair<int, json>> events;
};

struct Fixture {
    std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();
    std::shared_ptr<qvx::Parser> parser;

    explicit Fixture(ParserDataFormat format) {
        auto created = qvx::Parser::create(std::make_shared<qvx::core::Context>(sink), format);
        EXPECT_TRUE(created.ok());
        if (created.ok()) parser = created.value();
    }
};

TEST(Parser, CreationCoversBuiltFormatsAndRefusesTheRest) {
    for (const auto& [format, name] : parser::dataFormatTable()) {
        auto created = qvx::Parser::create(nullptr, format);
        EXPECT_EQ(created.ok(), qvx::Parser::isFormatAvailable(format)) << name;
        if (created.ok()) {
            EXPECT_EQ(created.value()->format(), format);
            EXPECT_EQ(created.value()->getComponentId(), "");
            EXPECT_EQ(created.value()->kind(), qvx::core::TrovaneComponent::Kind::Parser);
        } else {
            EXPECT_NE(created.error().find("'" + name + "'"), std::string::npos) << created.error();
        }
    }
    EXPECT_TRUE(qvx::Parser::isFormatAvailable(ParserDataFormat::Vin));
    auto outside = qvx::Parser::create(nullptr, static_cast<ParserDataFormat>(9));
    ASSERT_FALSE(outside.ok());
    EXPECT_EQ(outside.error(), "unknown data format: 9");
}

TEST(Parser, SuccessSendsOneUsageEvent) {
    Fixture f(ParserDataFormat::Vin);
    ASSERT_TRUE(f.parser);
    auto outcome = f.parser->parse("1HGCM82633A004352");
    ASSERT_TRUE(outcome.ok()) << outcome.error()->message;
    EXPECT_FALSE(outcome.value()->fields().empty());
    ASSERT_EQ(f.sink->events.size(), 1u);
    EXPECT_EQ(f.sink->events[0].first, 15);
    EXPECT_EQ(f.sink->events[0].second,
              json::parse(R"({"format": "vin", "operation": "string", "success": true,
                              "error": null,
                              "options": {"strict_mode": false,
                                          "false_positive_compensation": false}})"));
}

TEST(Parser, NoSinkNoEvent) {
    auto created =
        qvx::Parser::create(std::make_shared<qvx::core::Context>(), ParserDataFormat::Vin);
    ASSERT_TRUE(created.ok());
    EXPECT_TRUE(created.value()->parse("x").error());
}

TEST(Parser, ResultsOutliveTheParser) {
    std::shared_ptr<parser::ParsedData> data;
    {
        Fixture f(ParserDataFormat::Vin);
        ASSERT_TRUE(f.parser);
        auto outcome = f.parser->parse("1HGCM82633A004352");
        ASSERT_TRUE(outcome.ok());
        data = outcome.value();
    }
    EXPECT_EQ(data->asJson(), json::parse(data->jsonString()));
}

}  // namespace

// The quick start parses every bundled sample: each must name a format and parse.
TEST(Parser, BundledSamplesParse) {
    namespace fs = std::filesystem;
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator(QVX_SAMPLES_DIR)) {
        // "<format>.txt", or "<format>.<variant>.txt" for a second sample.
        const std::string file = entry.path().filename().string();
        const std::string name = file.substr(0, file.find('.'));
        auto format = parser::dataFormatFromName(name);
        ASSERT_TRUE(format.has_value()) << "sample not named after a format: " << entry.path();
        auto created = qvx::Parser::create(nullptr, *format);
        ASSERT_TRUE(created.ok()) << created.error();
        std::ifstream in(entry.path(), std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(in)),
                                std::istreambuf_iterator<char>());
        auto outcome = created.value()->parse(bytes);
        EXPECT_TRUE(outcome.ok()) << entry.path() << ": " << outcome.error()->message;
        ++count;
    }
    for (const auto& [format, name] : parser::dataFormatTable()) {
        if (qvx::Parser::isFormatAvailable(format)) {
            EXPECT_TRUE(fs::exists(fs::path(QVX_SAMPLES_DIR) / (name + ".txt")))
                << "every available format has a bundled sample: " << name;
        }
    }
    EXPECT_GT(count, 0u);
}
