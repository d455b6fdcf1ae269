// Verification features: the barcode read a second way, tolerant of damage,
// into a flat set of facts about how the document is built, and the same set
// with personal content replaced by character classes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/date.h"
#include "qvx/result.h"
#include "qvx/string_ref.h"

namespace parser::dlid {

struct AamvaBarcodeHeader {
    std::string value;  // the whole header text, from the start of the code
    std::string iin;
    std::string aamvaVersion = "??";
    std::string jurisdictionVersion = "??";
    std::int32_t numberOfSubfiles = 0;
};

struct AamvaBarcodeSubfileDesignator {
    std::string text;
    std::string mainType = "DL";
    std::size_t mainOffset = 0;
    std::size_t mainLength = 0;
    std::string jurisdictionType;
    std::size_t jurisdictionOffset = 0;
    std::size_t jurisdictionLength = 0;
};

struct AamvaBarcodeSubfileIndicator {
    std::string text;  // as found, line ends and blanks included
    std::size_t offset = 0;
};

struct FeatureElement {
    std::string separator;
    std::string id;
    std::string value;
    std::string rest;
    bool isJurisdiction = false;
};

// The two-letter code the feature reader gives an IIN; empty when unknown.
std::string_view featureIssuerCode(std::string_view iin);
std::size_t featureIssuerCount();
bool isCanadianCode(std::string_view code);
bool isKnownElement(std::string_view id);
// The ids a document of this AAMVA version ("08", "??") should carry.
std::vector<std::string_view> expectedElements(std::string_view aamvaVersion);

// The header as the pattern
//   [\s\S]+(?:ANSI|AAMVA)(?:[ \n]{1,2})?(\d{6})(\d{2})(\d{2})?(\d{2})?
// finds it in a search: the last file type in the text that is followed by
// the digits. Evaluated by hand in linear time; the groups as the pattern
// would give them.
struct HeaderMatch {
    std::string whole;
    std::string iin;
    std::string version;
    std::string jurisdictionVersion;
    std::string subfiles;
};
std::optional<HeaderMatch> matchFeatureHeader(std::string_view code);

// A date element's value: eight digits, month first or year first (year first
// tried first for Canadian issuers).
std::optional<Date> readFeatureDate(std::string_view value, bool yearFirst);

// The anonymised form of one element value.
std::string anonymizeValue(std::string_view id, std::string_view value, bool yearFirst);

struct Features {
    nlohmann::json verification;
    nlohmann::json anonymized;
};
// Both feature sets, or the message that refuses the code. `today` decides
// ages and expiry.
result<Features, std::string> extractFeatures(ParserStringRef code, const Date& today);

}  // namespace parser::dlid
