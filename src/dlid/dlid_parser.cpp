#include "dlid/dlid_parser.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <utility>

#include "common/options.h"
#include "common/text.h"
#include "dlid/dlid_elements.h"
#include "dlid/dlid_features.h"
#include "dlid/dlid_format.h"
#include "dlid/dlid_issuers.h"

namespace parser {

namespace {

using nlohmann::json;

// "YYYYMMDD" or "YYYY-MM-DD", and a day that exists.
std::optional<Date> readOptionDate(const std::string& text) {
    std::string digits;
    if (text.size() == 10 && text[4] == '-' && text[7] == '-') {
        digits = text.substr(0, 4) + text.substr(5, 2) + text.substr(8, 2);
    } else if (text.size() == 8) {
        digits = text;
    } else {
        return std::nullopt;
    }
    if (!isInCharset(ParserStringRef(digits), Charset::Numeric)) return std::nullopt;
    auto date = dateFromYYYYMMDD(ParserStringRef(digits));
    if (!date.ok() || !date.value().isValid()) return std::nullopt;
    return date.value();
}

std::string formatDate(const Date& date) {
    char text[32];
    std::snprintf(text, sizeof text, "%04d%02d%02d", date.year, date.month, date.day);
    return text;
}

bool isTerminator(unsigned char byte, int terminator) {
    return byte == '\n' || byte == terminator;
}

bool isAsciiAlphanumeric(unsigned char byte) {
    return isAsciiDigit(byte) || isAsciiUpper(byte) || isAsciiLower(byte);
}

bool isAsciiLetter(unsigned char byte) {
    return isAsciiUpper(byte) || isAsciiLower(byte);
}

// Line ends, terminators, and then anything that cannot begin an element.
void skipNoise(ParserStringRef& view, int terminator) {
    while (!view.empty() && isTerminator(view.front(), terminator)) view = view.drop_front(1);
    while (!view.empty() && !isAsciiAlphanumeric(view.front())) view = view.drop_front(1);
}

std::size_t elementLength(ParserStringRef view, int terminator) {
    std::size_t length = 0;
    while (length < view.size() && !isTerminator(view[length], terminator)) ++length;
    return length;
}

bool twoDigits(ParserStringRef view, int& value) {
    if (view.size() < 2 || !isAsciiDigit(view[0]) || !isAsciiDigit(view[1])) return false;
    value = (view[0] - '0') * 10 + (view[1] - '0');
    return true;
}

std::string firstBytes(ParserStringRef view, std::size_t count) {
    return view.first(std::min(count, view.size())).str();
}

// The IIN, by the first rule that applies; false once the issue is set.
bool readIin(ParserStringRef& view, DLIDParserState& state, ParserResult& result) {
    // No IIN at all: version, jurisdiction version and count stand before the
    // "DL" of the first designator, with at most one stray byte before them.
    const char* firstD = view.find_char('D');
    if (firstD != nullptr) {
        const std::size_t at = view.offsetOf(firstD);
        if (at == 6 || at == 7) {
            state.iin = view.take_front(at - 6).str();
            return true;
        }
    }
    // Some documents carry the jurisdiction's abbreviation in its place.
    if (view.consume_prefix("AL")) {
        state.iin = "AL";
        return true;
    }
    if (view.size() <= 5) {
        result.setError("could not parse IIN, data too short");
        return false;
    }
    if (!isInCharset(view.first(6), Charset::Numeric)) {
        if (view.consume_prefix("HIDE2")) {
            state.iin = "HIDE2";
            return true;
        }
        result.setError("could not parse IIN " + view.first(6).str());
        return false;
    }
    if (view.first(6) == dlid::kIinBermuda) {
        result.setError("Parsing Bermuda driver licenses with IIN = \"168100\" are not supported");
        return false;
    }
    // Some issuers drop the leading 6 of the IIN.
    state.iin = view.take_front(view.starts_with("36") ? 5 : 6).str();
    return true;
}

bool readNumberOfEntries(ParserStringRef& view, DLIDParserState& state, ParserResult& result) {
    if (view.size() < 2) {
        result.setError("subfile too short");
        return false;
    }
    int entries = 0;
    if (twoDigits(view, entries)) {
        view = view.drop_front(2);
    } else if (state.aamvaVersion == 1) {
        entries = 1;
    } else {
        // The header lacks the jurisdiction version: what was read as one is
        // the count.
        entries = state.jurisdictionVersion;
        state.jurisdictionVersion = 0;
    }
    if (entries == 0) {
        result.setError("number of entries must be greater than zero");
        return false;
    }
    state.numberOfEntries = entries;
    return true;
}

bool readPreStandardEntries(ParserStringRef& view, DLIDParserState& state, ParserResult& result) {
    std::size_t digits = 0;
    while (digits < view.size() && isAsciiDigit(view[digits])) ++digits;
    const auto entries = readDigits(view.first(digits));
    if (!entries) {
        result.setError(
            "cannot parse pre-AAMVA-spec barcode. Please contact the Quorvex team for handling "
            "your custom case.");
        return false;
    }
    view = view.drop_front(digits);
    state.numberOfEntries = *entries;
    return true;
}

// Reads the header up to the number of entries and adds the "header" field.
bool readHeader(ParserStringRef& view, DLIDParserState& state, ParserResult& result) {
    if (view.size() <= 18) {
        result.setError("header too short");
        return false;
    }
    if (!view.consume_prefix('@')) {
        result.setError("compliance indicator missing");
        return false;
    }
    if (!view.consume_prefix('\n')) {
        result.setError("data element separator in header is not 0x0A (\\n)");
        return false;
    }
    // Some headers lack the record separator: the file type follows at once.
    if (view.starts_with('A')) {
        state.segmentTerminator = '\n';
    } else {
        const unsigned char recordSeparator = view.take_front(1)[0];
        if (view.starts_with('\r') || view.starts_with('\n')) {
            state.segmentTerminator = view.take_front(1)[0];
        } else {
            state.segmentTerminator = recordSeparator;
        }
    }
    if (const char* a = view.find_char('A')) view = view.drop_front(view.offsetOf(a));
    if (!view.consume_any_prefix({"ANSI ", "AAMVA", "ANSI"})) {
        result.setError(
            "invalid file type, it should contain 'ANSI ' or 'AAMVA' string but contains " +
            firstBytes(view, 5));
        return false;
    }
    while (view.starts_with(' ') || view.starts_with('\n')) view = view.drop_front(1);
    if (!readIin(view, state, result)) return false;

    int version = 0;
    if (!twoDigits(view, version)) {
        result.setError("could not parse AAMVA version number " + firstBytes(view, 2));
        return false;
    }
    view = view.drop_front(2);
    state.aamvaVersion = version;
    if (version == 0) {
        if (!readPreStandardEntries(view, state, result)) return false;
    } else {
        if (version >= 2) {
            int jurisdictionVersion = 0;
            if (!twoDigits(view, jurisdictionVersion)) {
                result.setError("could not parse jurisdiction version number: " +
                                firstBytes(view, 2));
                return false;
            }
            view = view.drop_front(2);
            state.jurisdictionVersion = jurisdictionVersion;
        }
        if (!readNumberOfEntries(view, state, result)) return false;
        // Virginia's version 9 documents announce more subfiles than they hold.
        if (dlid::isVirginia(state.iin) && version == 9 && state.numberOfEntries >= 4) {
            state.numberOfEntries = 1;
        }
    }
    json header = json::object();
    addMember(header, "AAMVAVersion", state.aamvaVersion);
    addMember(header, "IIN", state.iin);
    addMember(header, "issuer", std::string(dlid::issuerForIin(state.iin)));
    addMember(header, "jurisdictionVersion", state.jurisdictionVersion);
    result.addField("header", std::string(), std::move(header));
    return true;
}

}  // namespace

DLIDParser::DLIDParser() : currentDate_(Date::getCurrentDate()) {}

std::unique_ptr<ParserOptionsOutcome> DLIDParser::readOptionsFromJSON(json options) {
    return options::walk(options, [this](const std::string& key, const json& value) {
        if (key == "strictElementIdVerification") {
            return options::readBool(value, strictElementIdVerification_,
                                     options::mustBeBoolean(key));
        }
        if (key == "ignoreCutOffElementId") {
            return options::readBool(value, ignoreCutOffElementId_, options::mustBeBoolean(key));
        }
        if (key == "enhanceDataForFeatureExtraction") {
            return options::readBool(value, enhanceDataForFeatureExtraction_,
                                     options::mustBeBoolean(key));
        }
        if (key == "currentDate") {
            std::optional<Date> date;
            if (value.is_string()) date = readOptionDate(value.get<std::string>());
            if (!date) return "option '" + key + "' must be a date written YYYYMMDD";
            currentDate_ = *date;
            return std::string();
        }
        return options::invalidOption(key);
    });
}

json DLIDParser::optionsToJSON() const {
    json options = json::object();
    addMember(options, "current_date", formatDate(currentDate_));
    addMember(options, "enhance_data_for_feature_extraction", enhanceDataForFeatureExtraction_);
    addMember(options, "ignore_cut_off_element_id", ignoreCutOffElementId_);
    addMember(options, "strict_element_id_verification", strictElementIdVerification_);
    return options;
}

bool DLIDParser::dataElementSeparatorOrSegmentTerminatorIsWindowsEOL(ParserStringRef code) {
    return (code.size() > 2 && code[1] == '\r' && code[2] == '\n') ||
           (code.size() > 5 && code[4] == '\r' && code[5] == '\n');
}

std::string DLIDParser::removeWindowsEOLFromString(std::string_view text) {
    std::string cleaned;
    cleaned.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
        cleaned.push_back(text[i]);
    }
    return cleaned;
}

std::unique_ptr<ParserResult> DLIDParser::parse(ParserStringRef code) {
    auto result = std::make_unique<ParserResult>();
    while (!code.empty() && (code.front() == ' ' || code.front() == '\n')) {
        code = code.drop_front(1);
    }
    if (code.empty()) {
        result->setError("code is empty");
        return result;
    }
    const bool stripe = code.front() == '%';
    if (enhanceDataForFeatureExtraction_) {
        if (stripe) {
            result->setError("Magstripe unsupported");
            return result;
        }
        return generate_offline_features(code);
    }
    if (stripe) {
        parseMagstripeFormat(code, *result);
        generateUnifiedField(*result, 6, "DL", false);
        return result;
    }
    if (code.size() < 6) {
        result->setError("separator too small to parse");
        return result;
    }
    if (dataElementSeparatorOrSegmentTerminatorIsWindowsEOL(code)) {
        const std::string cleaned = removeWindowsEOLFromString(code.view());
        parseBarcode(ParserStringRef(cleaned), *result);
    } else {
        parseBarcode(code, *result);
    }
    return result;
}

std::unique_ptr<ParserResult> DLIDParser::generate_offline_features(ParserStringRef code) const {
    auto result = std::make_unique<ParserResult>();
    if (code.starts_with("%BC")) {
        result->setError("Failed to extract DL features from non-AAMVA barcode value");
        return result;
    }
    if (code.starts_with('%')) {
        result->setError("Magstripe unsupported");
        return result;
    }
    // Other codes that begin like a licence: eleven digits before the
    // compliance indicator, or a tab where the record separator belongs.
    std::size_t digits = 0;
    while (digits < code.size() && digits < 11 && isAsciiDigit(code[digits])) ++digits;
    const bool elevenDigits = digits == 11 && code.size() > 11 && code[11] == '@';
    if (elevenDigits || code.starts_with("@\n\t\rAAMVA") || !code.starts_with('@')) {
        result->setError("Failed to extract DL features from non-AAMVA barcode value");
        return result;
    }
    auto features = dlid::extractFeatures(code, currentDate_);
    if (!features.ok()) {
        result->setError(features.error());
        return result;
    }
    auto& [verification, anonymized] = features.value();
    std::string verificationText =
        verification.dump(-1, ' ', false, json::error_handler_t::replace);
    std::string anonymizedText = anonymized.dump(-1, ' ', false, json::error_handler_t::replace);
    result->addField("VERIFICATION_FEATURE_JSON", std::move(verificationText),
                     std::move(verification));
    result->addField("ANONYMIZED_VERIFICATION_FEATURE_JSON", std::move(anonymizedText),
                     std::move(anonymized));
    return result;
}

void DLIDParser::parseBarcode(ParserStringRef code, ParserResult& result) const {
    DLIDParserState state;
    // One field per line at most, and the header and the unified field: room
    // made once spares the field list its doublings.
    result.fields.reserve(static_cast<std::size_t>(std::count(code.begin(), code.end(), '\n')) + 4);
    ParserStringRef header = code;
    if (!readHeader(header, state, result)) return;
    const std::size_t headerSize = code.size() - header.size();
    if (!DLIDFormat::choose(state)->parseSubfileDesignators(code, headerSize, result)) return;
    state.elementTable = &dlid::elementTableFor(state.aamvaVersion, state.iin);
    state.datesYearFirst = dlid::datesAreYearFirst(state.aamvaVersion, state.iin);
    for (const DLIDSubfile& subfile : state.subfiles) {
        if (!parseSubfile(subfile, code, result, state)) return;
    }
    generateUnifiedField(result, state.aamvaVersion, state.documentType,
                         state.neverExpiresCandidate);
}

bool DLIDParser::parseSubfile(const DLIDSubfile& subfile, ParserStringRef code,
                              ParserResult& result, DLIDParserState& state) const {
    if (code.size() < subfile.size) {
        result.setError("subfile.size too large");
        return false;
    }
    ParserStringRef view;
    if (subfile.offset + subfile.size <= code.size()) {
        view = code.slice(subfile.offset, subfile.offset + subfile.size);
    } else if (subfile.offset <= code.size()) {
        // A subfile cut short by the scan is read as far as it goes.
        view = code.drop_front(subfile.offset);
    } else {
        result.setError("code is shorter than the provided offset(code size after 'DL': " +
                        std::to_string(code.size()) + " should be equal to the expected offset [" +
                        std::to_string(subfile.offset) + "] + subfile size: [" +
                        std::to_string(subfile.size) +
                        "] = " + std::to_string(subfile.offset + subfile.size) + ")");
        return false;
    }
    if (view.size() <= 1) {
        result.setError("subfile too small");
        return false;
    }
    const int terminator = state.segmentTerminator;
    skipNoise(view, terminator);
    if (view.size() > 2 && !isAsciiAlphanumeric(view[2])) {
        // The subfile type on a line of its own.
        view = view.drop_front(3);
    } else {
        while (!view.empty() && !isAsciiLetter(view.front())) view = view.drop_front(1);
        // The type glued to the first element; an element of three or four
        // bytes that merely begins with the same letters keeps them.
        const std::size_t length = elementLength(view, terminator);
        if ((length == 2 || length >= 5) && view.starts_with(subfile.type)) {
            view = view.drop_front(2);
        }
    }
    skipNoise(view, terminator);
    const DLIDElementTable& table = *state.elementTable;
    while (!view.empty()) {
        const std::size_t length = elementLength(view, terminator);
        if (length < 3) {
            if (ignoreCutOffElementId_) return true;
            result.setError("element_data id is cut off");
            return false;
        }
        const ParserStringRef element = view.take_front(length);
        const ParserStringRef id = element.first(3);
        const ParserStringRef value = element.drop_front(3);
        const DLIDElement* row = dlid::findElement(table, id.view());
        if (row == nullptr) {
            if (strictElementIdVerification_ && id.front() != 'Z') {
                result.setError("Unknown element_data ID: '" + id.str() + "'");
                return false;
            }
            row = &dlid::fallbackElement();
        }
        dlid::readElement(*row, id, value, result, state);
        skipNoise(view, terminator);
    }
    return true;
}

}  // namespace parser
