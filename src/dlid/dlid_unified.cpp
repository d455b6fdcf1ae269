// The "unified" field: the holder's names, dates, sex, address, height and
// weight in one shape, whatever version or medium the document used.
#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/text.h"
#include "dlid/dlid_issuers.h"
#include "dlid/dlid_parser.h"

namespace parser {

namespace {

using nlohmann::json;
using Names = std::vector<std::string>;

constexpr std::array<std::string_view, 20> kSuffixes = {
    "JR",  "SR", "1ST", "2ND", "3RD", "4TH", "5TH", "6TH", "7TH",  "8TH",
    "9TH", "I",  "II",  "III", "IV",  "V",   "VI",  "VII", "VIII", "IX",
};

bool isSuffix(const std::string& name) {
    std::string upper = name;
    for (char& c : upper) {
        if (isAsciiLower(static_cast<unsigned char>(c))) c = static_cast<char>(c - 'a' + 'A');
    }
    for (const std::string_view suffix : kSuffixes) {
        if (upper == suffix) return true;
    }
    return false;
}

// The fields a unified member is built from.
// clang-format off
enum Id : std::uint8_t {
    DAA, DAB, DAC, DAD, DAG, DAH, DAI, DAJ, DAK, DAL, DAM, DAN, DAO, DAP,
    DAU, DAV, DAW, DAX, DBA, DBB, DBC, DBD, DCE, DCS, DCT, kIdCount
};
// clang-format on
constexpr std::array<std::string_view, kIdCount> kIdNames = {
    "DAA", "DAB", "DAC", "DAD", "DAG", "DAH", "DAI", "DAJ", "DAK", "DAL", "DAM", "DAN", "DAO",
    "DAP", "DAU", "DAV", "DAW", "DAX", "DBA", "DBB", "DBC", "DBD", "DCE", "DCS", "DCT",
};

// Reads the fields of the result, each found once up front: the first field
// of a name counts, as for any lookup by name.
class FieldReader {
  public:
    explicit FieldReader(ParserResult& result) : result_(result) {
        std::array<std::uint32_t, kIdCount> keys{};
        for (std::size_t i = 0; i < kIdCount; ++i) keys[i] = elementKey(kIdNames[i]);
        for (const ParsedField& field : result.fields) {
            if (field.name.size() != 3) {
                if (header_ == nullptr && field.name == "header") header_ = &field;
                continue;
            }
            const std::uint32_t key = elementKey(field.name);
            for (std::size_t i = 0; i < kIdCount; ++i) {
                if (keys[i] == key) {
                    if (fields_[i] == nullptr) fields_[i] = &field;
                    break;
                }
            }
        }
    }

    const ParsedField* field(Id id) const { return fields_[id]; }
    const ParsedField* header() const { return header_; }

    // The text of an element, "" when absent or "NONE". Any other value than a
    // string or an integer is an error of the result.
    std::string text(Id id) const {
        const ParsedField* found = fields_[id];
        if (found == nullptr) return std::string();
        std::string value;
        if (found->parsed.is_string()) {
            value = found->parsed.get_ref<const std::string&>();
        } else if (found->parsed.is_number_integer()) {
            value = found->parsed.dump();
        } else {
            result_.setError("Field \"" + std::string(kIdNames[id]) +
                             "\" type must be string, but is " + found->parsed.type_name());
            return std::string();
        }
        return value == "NONE" ? std::string() : value;
    }

    // The parsed value, or null when the field is absent.
    const json& value(Id id) const {
        static const json kNull;
        const ParsedField* found = fields_[id];
        return found == nullptr ? kNull : found->parsed;
    }

    ParserResult& result() const { return result_; }

  private:
    ParserResult& result_;
    std::array<const ParsedField*, kIdCount> fields_{};
    const ParsedField* header_ = nullptr;
};

std::string stripBlanksAndCommas(const std::string& text) {
    std::string stripped = text;
    trimChars(stripped, " ,");
    return stripped;
}

Names splitNames(const std::string& text, char separator) {
    Names names;
    splitByChar(stripBlanksAndCommas(text), separator, names);
    return names;
}

struct NameParts {
    std::string wholeName;
    Names firstNames;
    Names lastNames;
    Names firstNamesWithoutMiddle;
};

void appendAll(std::string& whole, const Names& names) {
    for (const std::string& name : names) {
        whole += name;
        whole += ' ';
    }
}

// The name given element by element, or DAA as "FAMILY,GIVEN".
void namesInParts(const FieldReader& fields, const std::string& fullName, NameParts& parts) {
    const std::size_t comma = fullName.find(',');
    const bool hasComma = comma != std::string::npos;
    // A part of DAA is split on blanks when it holds one.
    auto separatorOf = [](const std::string& part) {
        return part.find(' ') != std::string::npos ? ' ' : ',';
    };
    Names given;
    if (fields.field(DAC) != nullptr) {
        given = splitNames(fields.text(DAC), ',');
    } else if (fields.field(DCT) != nullptr) {
        given = splitNames(fields.text(DCT), ',');
    } else if (hasComma) {
        const std::string part = fullName.substr(comma + 1);
        given = splitNames(part, separatorOf(part));
    }
    parts.firstNamesWithoutMiddle = given;
    parts.firstNames = given;
    const std::string middle = fields.text(DAD);
    if (!middle.empty()) parts.firstNames.push_back(stripBlanksAndCommas(middle));

    if (fields.field(DCS) != nullptr) {
        parts.lastNames = splitNames(fields.text(DCS), ',');
    } else if (fields.field(DAB) != nullptr) {
        parts.lastNames = splitNames(fields.text(DAB), ',');
    } else if (hasComma) {
        const std::string part = fullName.substr(0, comma);
        parts.lastNames = splitNames(part, separatorOf(part));
    }
    appendAll(parts.wholeName, parts.firstNames);
    appendAll(parts.wholeName, parts.lastNames);
}

// The whole name in DAA: "GIVEN MIDDLE FAMILY" with blanks, or
// "FAMILY@GIVEN@MIDDLE" with at signs.
void namesInOneElement(const std::string& fullName, NameParts& parts) {
    const char separator = fullName.find('@') != std::string::npos ? '@' : ' ';
    Names pieces;
    for (const auto piece :
         splitBySubstring(ParserStringRef(fullName), std::string_view(&separator, 1))) {
        if (!piece.empty()) pieces.push_back(piece.str());
    }
    if (pieces.empty()) return;
    const std::size_t n = separator == ' ' && pieces.size() > 2 ? 2 : 1;
    Names front(pieces.begin(), pieces.begin() + static_cast<std::ptrdiff_t>(n));
    Names back(pieces.begin() + static_cast<std::ptrdiff_t>(n), pieces.end());
    if (separator == ' ') {
        parts.firstNames = std::move(front);
        parts.lastNames = std::move(back);
    } else {
        parts.lastNames = std::move(front);
        parts.firstNames = std::move(back);
    }
    parts.firstNamesWithoutMiddle = parts.firstNames;
    if (separator == ' ') {
        appendAll(parts.wholeName, parts.firstNames);
        appendAll(parts.wholeName, parts.lastNames);
        if (!parts.lastNames.empty() && isSuffix(parts.lastNames.back())) {
            std::string suffix = std::move(parts.lastNames.back());
            parts.lastNames.pop_back();
            if (parts.lastNames.empty()) {
                // "JOHN SMITH JR": the family name is the word before the suffix.
                parts.lastNames.push_back(std::move(parts.firstNames.back()));
                parts.firstNames.back() = std::move(suffix);
            } else {
                parts.firstNames.push_back(std::move(suffix));
            }
        }
        return;
    }
    const std::string* lastSuffix = nullptr;
    for (const std::string& name : parts.firstNames) {
        if (isSuffix(name)) {
            lastSuffix = &name;
        } else {
            parts.wholeName += name;
            parts.wholeName += ' ';
        }
    }
    appendAll(parts.wholeName, parts.lastNames);
    if (lastSuffix != nullptr) {
        parts.wholeName += *lastSuffix;
        parts.wholeName += ' ';
    }
}

json namesOrNull(const Names& names) {
    if (names.empty()) return nullptr;
    return json(names);
}

void parseNames(const FieldReader& fields, json& unified) {
    NameParts parts;
    const std::string fullName = fields.text(DAA);
    if (fields.field(DAA) == nullptr || fullName.find(',') != std::string::npos) {
        namesInParts(fields, fullName, parts);
    } else {
        namesInOneElement(fullName, parts);
    }
    std::string withoutMiddle;
    for (const std::string& name : parts.firstNamesWithoutMiddle) {
        if (!withoutMiddle.empty()) withoutMiddle += ' ';
        withoutMiddle += name;
    }
    json name = nullptr;
    if (!parts.wholeName.empty()) {
        parts.wholeName.pop_back();
        name = std::move(parts.wholeName);
    } else if (std::string text = fields.text(DAA); !text.empty()) {
        name = std::move(text);
    }
    unified["firstNames"] = namesOrNull(parts.firstNames);
    unified["firstNameWithoutMiddleNames"] =
        parts.firstNamesWithoutMiddle.empty() ? json(nullptr) : json(withoutMiddle);
    unified["lastNames"] = namesOrNull(parts.lastNames);
    unified["name"] = std::move(name);
}

// The date in a field value; missing or non-integer parts count as 0, and
// are errors when `report` is set.
Date dateOf(const json& value, ParserResult* report) {
    std::array<int, 3> parts = {0, 0, 0};
    static constexpr std::array<const char*, 3> kKeys = {"year", "month", "day"};
    for (std::size_t i = 0; i < kKeys.size(); ++i) {
        const auto member = value.is_object() ? value.find(kKeys[i]) : value.end();
        if (!value.is_object() || member == value.end()) {
            if (report != nullptr) {
                report->setError("Key \"" + std::string(kKeys[i]) + "\" not found");
            }
        } else if (!member->is_number_integer()) {
            if (report != nullptr) {
                report->setError("Key \"" + std::string(kKeys[i]) + "\" is not an integer number");
            }
        } else {
            parts[i] = member->get<int>();
        }
    }
    return Date{parts[0], parts[1], parts[2]};
}

bool issuedInArizona(const ParsedField* header) {
    if (header == nullptr || !header->parsed.is_object()) return false;
    const auto iin = header->parsed.find("IIN");
    return iin != header->parsed.end() && iin->is_string() &&
           dlid::isArizona(iin->get_ref<const std::string&>());
}

void parseDates(const FieldReader& fields, json& unified, const Date& today,
                bool neverExpiresCandidate, const std::string& documentType) {
    json birth = fields.value(DBB);
    json expiry = fields.value(DBA);
    const Date birthDate = birth.is_null() ? Date{} : dateOf(birth, nullptr);
    if (expiry.is_null() && issuedInArizona(fields.header())) {
        // Arizona prints no expiry before the 65th birthday; cards of older
        // holders last five years from issue.
        const Date sixtyFifth = birthDate.addYears(65);
        const json& issue = fields.value(DBD);
        if (sixtyFifth >= today) {
            expiry = dateToJson(sixtyFifth);
        } else if (!issue.is_null()) {
            expiry = dateToJson(dateOf(issue, nullptr).addYears(5));
        }
    }
    const bool neverExpires = neverExpiresCandidate && documentType == "ID" && !birth.is_null() &&
                              birthDate.addYears(65) < today;
    json isExpired = nullptr;
    if (!expiry.is_null()) {
        isExpired = dateOf(expiry, &fields.result()) < today;
    } else if (neverExpires) {
        isExpired = false;
    }
    unified["dateOfBirth"] = std::move(birth);
    unified["expirationDate"] = std::move(expiry);
    unified["isExpired"] = std::move(isExpired);
    unified["neverExpires"] = neverExpires;
}

void parseGender(const FieldReader& fields, json& unified) {
    const json& gender = fields.value(DBC);
    unified["gender"] = gender.is_null() ? json("invalid") : gender;
}

void parseFullAddress(const FieldReader& fields, json& unified, int version) {
    std::string address = fields.text(DAG);
    for (const Id id : {DAH, DAI, DAJ}) {
        const std::string part = fields.text(id);
        if (!part.empty()) address += ", " + part;
    }
    const json& postal = fields.value(DAK);
    if (!postal.is_null()) {
        std::string code;
        if (postal.is_object()) {
            const auto five = postal.find("5digit");
            if (five != postal.end() && five->is_string()) code = five->get<std::string>();
        } else if (postal.is_string()) {
            code = postal.get<std::string>();
        }
        address += ", " + code;
    }
    // Version 1 documents may give only the residence address.
    if (version < 2 && address.empty()) {
        address = fields.text(DAL);
        for (const Id id : {DAM, DAN, DAO}) {
            const std::string part = fields.text(id);
            if (!part.empty()) address += ", " + part;
        }
        const json& residencePostal = fields.value(DAP);
        if (!residencePostal.is_null()) {
            const json five =
                residencePostal.is_object() ? residencePostal.value("5digit", json()) : json();
            if (five.is_string()) {
                address += ", " + five.get<std::string>();
            } else {
                fields.result().setError(
                    std::string("Field \"5digit\" type must be string, but is ") +
                    five.type_name());
            }
        }
    }
    unified["fullAddress"] = std::move(address);
}

void parseHeight(const FieldReader& fields, json& unified) {
    const json& measured = fields.value(DAU).is_null() ? fields.value(DAV) : fields.value(DAU);
    json height = measured;
    if (height.is_null()) {
        height = json::object();
        addMember(height, "cm", 0);
        addMember(height, "inch", 0);
    }
    unified["height"] = std::move(height);
}

int weightBin(long pounds) {
    static constexpr std::array<long, 10> kUpperBounds = {1,   71,  101, 131, 161,
                                                          191, 221, 251, 281, 321};
    for (std::size_t bin = 0; bin < kUpperBounds.size(); ++bin) {
        if (pounds < kUpperBounds[bin]) return static_cast<int>(bin) - 1;
    }
    return 9;
}

void parseWeightRange(const FieldReader& fields, json& unified) {
    int range = -1;
    if (const json& value = fields.value(DCE); value.is_number_integer()) {
        range = value.get<int>();
    }
    if (const json& pounds = fields.value(DAW); pounds.is_number_integer()) {
        range = weightBin(pounds.get<long>());
    }
    if (const json& kilograms = fields.value(DAX); kilograms.is_number_integer()) {
        range = weightBin(
            static_cast<long>(std::roundf(static_cast<float>(kilograms.get<long>()) * 2.20462F)));
    }
    unified["weightRange"] = range;
}

}  // namespace

void DLIDParser::generateUnifiedField(ParserResult& result, int version,
                                      const std::string& documentType,
                                      bool neverExpiresCandidate) const {
    const FieldReader fields(result);
    json unified = json::object();
    parseNames(fields, unified);
    parseDates(fields, unified, currentDate_, neverExpiresCandidate, documentType);
    parseGender(fields, unified);
    parseFullAddress(fields, unified, version);
    parseHeight(fields, unified);
    parseWeightRange(fields, unified);
    unified["documentType"] = documentType;
    result.addField("unified", std::string(), std::move(unified));
}

}  // namespace parser
