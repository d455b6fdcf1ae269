// Single parses are covered by tests/data/vin; this file keeps what needs one
// parser object across several calls.
#include "vin/vin_parser.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

namespace {

std::string errorOf(const parser::ParserResult& result) {
    return result.error ? result.error->message : std::string();
}

TEST(VinParser, OptionsAccumulateAndStayBetweenParses) {
    parser::VinParser vin;
    ASSERT_TRUE(vin.readOptionsFromJSONString(R"({"strictMode": true})")->ok);
    // A second call sets its own key and leaves the other one alone.
    ASSERT_TRUE(vin.readOptionsFromJSONString(R"({"falsePositiveCompensation": true})")->ok);
    EXPECT_EQ(vin.optionsToJSON(),
              nlohmann::json({{"false_positive_compensation", true}, {"strict_mode", true}}));
    EXPECT_EQ(errorOf(*vin.parse("1HGCM82643A004352")), "checksum verification failed");
    EXPECT_EQ(errorOf(*vin.parse("IHGCM82633A004352")), "");
    // A failed call keeps what was set before it.
    EXPECT_FALSE(vin.readOptionsFromJSONString(R"({"strictMode": 1})")->ok);
    EXPECT_EQ(errorOf(*vin.parse("1HGCM82643A004352")), "checksum verification failed");
}

}  // namespace
