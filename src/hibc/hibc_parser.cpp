#include "hibc/hibc_parser.h"

#include <cstddef>
#include <string>
#include <utility>

#include "common/options.h"
#include "common/text.h"
#include "hibc/hibc_tools.h"

namespace parser {

namespace {

constexpr std::size_t kMinPrimarySize = 7;  // "+", four lic bytes, one pcn byte, uom
constexpr std::size_t kMaxPrimarySize = 24;
constexpr std::size_t kMinSecondarySize = 6;
constexpr std::size_t kMaxSecondarySize = 36;
constexpr std::size_t kMaxLotSize = 18;  // lot and serial share the limit
// The short form (expiry right after the leading byte, no "$") allows a lot
// of at most 13 bytes.
constexpr std::size_t kMaxLotAfterPlainDate = 13;
constexpr std::size_t kAdditionalDateSize = 8;

// Labeler, product, unit, expiry, quantity, lot or serial, metadata; more only
// with additional segments.
constexpr std::size_t kUsualFieldCount = 8;

// A date flag that is not a digit names no layout.
constexpr int kUnknownDateType = -1;

// Upper case only: the code's character set has no small letters.
bool isCodeAlnum(unsigned char c) {
    return isAsciiDigit(c) || isAsciiUpper(c);
}
bool isCodeAlnum(ParserStringRef text) {
    for (const char c : text.view()) {
        if (!isCodeAlnum(static_cast<unsigned char>(c))) return false;
    }
    return true;
}

ParserStringRef dropLeadingWhitespace(ParserStringRef text) {
    const char* b = text.begin();
    while (b != text.end() && isCSpace(static_cast<unsigned char>(*b))) ++b;
    return ParserStringRef(b, text.end());
}

// Adds a text field of 1 to 18 bytes; false, with nothing added, otherwise.
bool addShortText(const char* name, ParserStringRef text, ParserResult& result) {
    if (text.empty() || text.size() > kMaxLotSize) return false;
    result.addField(name, text.str(), text.str());
    return true;
}

}  // namespace

std::unique_ptr<ParserResult> HIBCParser::parse(ParserStringRef input) {
    const ParserStringRef leadingTrimmed = dropLeadingWhitespace(input);
    std::unique_ptr<ParserResult> result = parseFields(leadingTrimmed);
    if (!result->error) return result;
    // A reader that appends a line end makes the last byte look like the check
    // character; a second try without trailing white space recovers the code.
    // The first try keeps them, since a blank is a valid check character.
    const ParserStringRef trimmed = trimWhitespace(input);
    if (trimmed.size() == leadingTrimmed.size()) return result;  // same view, same outcome
    return parseFields(trimmed);
}

std::unique_ptr<ParserOptionsOutcome> HIBCParser::readOptionsFromJSON(nlohmann::json options) {
    return options::walk(options, [](const std::string& key, const nlohmann::json&) {
        return options::invalidOption(key);
    });
}

nlohmann::json HIBCParser::optionsToJSON() const {
    return nlohmann::json::object();
}

std::unique_ptr<ParserResult> HIBCParser::parseFields(ParserStringRef data) {
    auto result = std::make_unique<ParserResult>();
    // Room for both segments' fields and the metadata.
    result->fields.reserve(kUsualFieldCount);
    if (data.empty()) {
        result->setError("data string is empty");
        return result;
    }
    if (data.front() != '+') {
        result->setError("data string does not start with '+'");
        return result;
    }
    if (data.size() <= 2) {
        result->setError("data string too short");
        return result;
    }

    const unsigned char check = data.back();
    ParserStringRef body = data.drop_back(1);
    if (hibcCheckValue(body) != hibcCharValue(check)) {
        result->setError("invalid checksum");
        return result;
    }

    // Members go in in key order: checksum, link, primary, secondary.
    nlohmann::json metadata = nlohmann::json::object();
    addMember(metadata, "checksum", std::string(1, static_cast<char>(check)));

    if (isAsciiUpper(body[1])) {
        // A primary segment starts with the labeler's letter.
        if (const char* slash = body.find_char('/')) {
            const std::size_t at = body.offsetOf(slash);
            addMember(metadata, "primary", true);
            addMember(metadata, "secondary", true);
            parsePrimary(body.first(at), *result);
            if (result->error) return result;
            parseSecondary(body.drop_front(at), *result);
        } else {
            addMember(metadata, "primary", true);
            addMember(metadata, "secondary", false);
            parsePrimary(body, *result);
        }
    } else {
        // A secondary label on its own: the byte before the check ties it to
        // the primary label it belongs to.
        addMember(metadata, "link", std::string(1, static_cast<char>(body.back())));
        addMember(metadata, "primary", false);
        addMember(metadata, "secondary", true);
        parseSecondary(body.drop_back(1), *result);
    }

    result->addField("metadata", std::string(), std::move(metadata));
    return result;
}

void HIBCParser::parsePrimary(ParserStringRef primary, ParserResult& result) {
    if (primary.size() < kMinPrimarySize || primary.size() > kMaxPrimarySize) {
        result.setError("size of primary data string is illegal");
        return;
    }
    if (!isAsciiUpper(primary[1])) {
        result.setError("first lic character is not alphabetic");
        return;
    }
    const ParserStringRef lic = primary.slice(1, 5);
    if (!isCodeAlnum(lic)) {
        result.setError("lic must be alphanumeric");
        return;
    }
    const ParserStringRef pcn = primary.slice(5, primary.size() - 1);
    if (!isCodeAlnum(pcn)) {
        result.setError("pcn must be alphanumeric");
        return;
    }
    const unsigned char uom = primary.back();
    if (!isAsciiDigit(uom)) {
        result.setError("unit of measure must be a number 0-9");
        return;
    }
    result.addField("lic", lic.str(), lic.str());
    result.addField("pcn", pcn.str(), pcn.str());
    result.addField("uom", std::string(1, static_cast<char>(uom)), uom - '0');
}

void HIBCParser::parseSecondary(ParserStringRef secondary, ParserResult& result) {
    if (secondary.empty()) {
        result.setError("secondary data string is empty");
        return;
    }
    ParserStringRef additional;
    if (const char* slash = secondary.find_char('/', 1)) {
        const std::size_t at = secondary.offsetOf(slash);
        additional = secondary.drop_front(at);
        secondary = secondary.first(at);
    }
    if (secondary.size() < kMinSecondarySize || secondary.size() > kMaxSecondarySize) {
        result.setError("size of secondary data string is illegal");
        return;
    }

    // Without a "$" the segment is a day-of-year expiry and a lot; segments
    // after this short form are not read.
    if (isAsciiDigit(secondary[1])) {
        if (secondary.size() <= 5) {
            result.setError("illegal date size");
            return;
        }
        const ParserStringRef rest =
            getDate(secondary.drop_front(1), static_cast<int>(HIBCDateType::YYJJJ), result);
        if (rest.empty() || result.error) return;
        if (rest.size() <= kMaxLotAfterPlainDate) {
            getLot(rest, result);
        } else {
            result.setError("illegal lot size");
        }
        return;
    }

    const bool dollar = secondary[1] == '$';
    const bool doubleDollar = dollar && secondary[2] == '$';
    if (dollar && isCodeAlnum(secondary[2])) {
        getLot(secondary.drop_front(2), result);
    } else if (dollar && secondary[2] == '+' && isCodeAlnum(secondary[3])) {
        getSerial(secondary.drop_front(3), result);
    } else if (doubleDollar && isAsciiDigit(secondary[3])) {
        if (!parseFlagged(secondary.drop_front(3), false, result)) return;
    } else if (doubleDollar && secondary[3] == '+' && isCodeAlnum(secondary[4])) {
        if (!parseFlagged(secondary.drop_front(4), true, result)) return;
    } else {
        result.setError("illegal secondary data string identifier");
        return;
    }
    // Additional segments are read even after a bad lot or serial, so their
    // own failure is the one reported.
    if (!additional.empty()) parseAdditional(additional, result);
}

bool HIBCParser::parseFlagged(ParserStringRef flagged, bool serial, ParserResult& result) {
    const unsigned char flag = flagged.front();
    ParserStringRef rest = flagged.drop_front(1);
    if (flag <= '7' && isAsciiDigit(flag)) {
        rest = getDate(rest, flag - '0', result);
    } else if (flag == '8' || flag == '9') {
        rest = getQuantity(rest, flag - '0', result);
        if (result.error || rest.empty()) return false;
        const unsigned char dateFlag = rest.front();
        if (!serial && !(isAsciiDigit(dateFlag) && dateFlag <= '7')) {
            result.setError("invalid date specifier");
            return false;
        }
        const int type = isAsciiDigit(dateFlag) ? dateFlag - '0' : kUnknownDateType;
        rest = getDate(rest.drop_front(1), type, result);
    } else if (!serial) {
        result.setError("invalid quantity/date specifier");
        return false;
    }
    // A letter flag of a serial names neither a date nor a quantity: it is
    // passed over and the serial follows it.
    if (result.error || rest.empty()) return false;
    if (serial) {
        getSerial(rest, result);
    } else {
        getLot(rest, result);
    }
    return true;
}

void HIBCParser::parseAdditional(ParserStringRef additional, ParserResult& result) {
    // Segments are read in turn; the first bad one ends the walk.
    for (;;) {
        ParserStringRef segment = additional;
        ParserStringRef next;
        if (const char* slash = additional.find_char('/', 1)) {
            const std::size_t at = additional.offsetOf(slash);
            segment = additional.first(at);
            next = additional.drop_front(at);
        }
        if (segment.size() < 2) {
            result.setError("size of additional data string is illegal");
            return;
        }
        if (segment[1] == 'S') {
            if (!addShortText("serial", segment.drop_front(2), result)) {
                result.setError("illegal serial size");
                return;
            }
        } else if (segment.starts_with("/14D") || segment.starts_with("/16D")) {
            const ParserStringRef digits = segment.drop_front(4);
            if (digits.size() != kAdditionalDateSize) {
                result.setError("illegal date size");
                return;
            }
            nlohmann::json date;
            if (!decodeHIBCDate(digits, HIBCDateType::YYYYMMDD, date)) {
                result.setError("could not parse date");
                return;
            }
            result.addField(segment[2] == '4' ? "expiryDate" : "manufactureDate", digits.str(),
                            std::move(date));
        }
        // Segments of other kinds carry nothing this parser reports.
        if (next.empty()) return;
        additional = next;
    }
}

ParserStringRef HIBCParser::getDate(ParserStringRef data, int type, ParserResult& result) {
    const auto length = static_cast<std::size_t>(hibcDateLength(type));
    if (data.size() < length) {
        result.setError("secondary data too short");
        return data;
    }
    if (!isKnownHIBCDateType(type)) {
        result.setError("illegal date type");
        return data;
    }
    const auto dateType = static_cast<HIBCDateType>(type);
    if (dateType == HIBCDateType::NoDate) return data;
    const ParserStringRef text = data.first(length);
    nlohmann::json date;
    if (!decodeHIBCDate(text, dateType, date)) {
        result.setError("could not parse date");
        return data;
    }
    result.addField("expiryDate", text.str(), std::move(date));
    return data.drop_front(length);
}

ParserStringRef HIBCParser::getQuantity(ParserStringRef data, int flag, ParserResult& result) {
    if (flag != 8 && flag != 9) {
        result.setError("invalid quantity identifier");
        return data;
    }
    const std::size_t length = flag == 8 ? 2 : 5;
    if (data.size() < length) {
        result.setError("quantity too large");
        return data;
    }
    int quantity = 0;
    for (std::size_t i = 0; i < length; ++i) {
        if (!isAsciiDigit(data[i])) {
            result.setError("quantity is not a numeric value");
            return data;
        }
        quantity = quantity * 10 + (data[i] - '0');
    }
    // The raw text is the number as read, so leading zeros do not show.
    result.addField("quantity", std::to_string(quantity), quantity);
    return data.drop_front(length);
}

void HIBCParser::getSerial(ParserStringRef data, ParserResult& result) {
    if (!addShortText("serial", data, result)) result.setError("illegal serial size");
}

void HIBCParser::getLot(ParserStringRef data, ParserResult& result) {
    if (!addShortText("lot", data, result)) result.setError("illegal lot size");
}

}  // namespace parser
