#include "mrtd/mrtd_parser.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/options.h"
#include "common/text.h"
#include "mrtd/mrtd_compensator.h"
#include "mrtd/mrtd_parser_helper.h"
#include "mrtd/mrtd_readers.h"
#include "qvx/contract.h"

namespace parser {

const std::string MrtdParser::td1RegexPattern =
    "[AIC][A-Z0-9<]{29}\n[A-Z0-9<]{30}\n[A-Z0-9<]{30}\n?";
const std::string MrtdParser::td2RegexPattern = "[A-Z0-9<]{36}\n[A-Z0-9<]{36}\n?";
const std::string MrtdParser::td3RegexPattern = "P[A-Z0-9<]{43}\n[A-Z0-9<]{44}\n?";
const std::string MrtdParser::mrvRegexPattern =
    "V[A-Z0-9<]{43}\n[A-Z0-9<]{44}\n?|V[A-Z0-9<]{35}\n[A-Z0-9<]{36}\n?";
const std::string MrtdParser::chineseExitEntryMrzRegexPattern =
    "C(S|D)(C|L)[A-Z0-9]{9}<[0-9]{7}<[0-9]{7}<[0-9]\n?";
const std::string MrtdParser::chinaOneWayPermitMrzRegexPattern = "Q[A-Z0-9<]{43}\n[A-Z0-9<]{44}\n?";
const std::string MrtdParser::swissDrivingLicenseRegexPattern =
    "[A-Z0-9<]{7}<<\n[A-Z0-9<]{30}\n[A-Z0<]{30}\n?";
const std::string MrtdParser::universalMrzRegexPattern =
    "[A-Z0-9<]{8,46}(?:\n[A-Z0-9<]{28,46})?(?:\n[A-Z0-9<]{28,46})?\n?";
const std::string MrtdParser::vietnamesePassportRegexPattern =
    "P<VNM[A-Z0-9<]{38}\n[A-Z0-9<]{42}0\n?";
const std::string MrtdParser::borderCrossingCardRegexPattern =
    "VB[A-Z0-9<]{28}\n[A-Z0-9<]{30}\n[A-Z0-9<]{30}\n?";
// Defined after its parts: in one translation unit they are initialised first.
const std::string MrtdParser::strictMrzRegexPattern =
    td1RegexPattern + "|" + td2RegexPattern + "|" + td3RegexPattern + "|" + mrvRegexPattern + "|" +
    swissDrivingLicenseRegexPattern + "|" + chineseExitEntryMrzRegexPattern + "|" +
    chinaOneWayPermitMrzRegexPattern + "|" + vietnamesePassportRegexPattern + "|" +
    borderCrossingCardRegexPattern;

namespace {

bool isKeptCharacter(unsigned char c) {
    return isAsciiDigit(c) || isAsciiUpper(c) || isAsciiLower(c) || c == '<' || c == '\n';
}

// Everything of one parse. Every view points into `workingText`, which is only
// ever rewritten in place, so the views stay valid through repairs.
struct MrtdParseContext {
    explicit MrtdParseContext(bool compensate)
        : nullCompensator(&workingText),
          standardCompensator(&workingText),
          compensator(compensate ? static_cast<MrtdCompensator*>(&standardCompensator)
                                 : &nullCompensator) {}
    MrtdParseContext(const MrtdParseContext&) = delete;
    MrtdParseContext& operator=(const MrtdParseContext&) = delete;

    MrtdCheckResults checkResults;
    std::string workingText;
    // Kept only when a compensator may rewrite the working text.
    std::string pristineText;
    std::vector<ParserStringRef> lines;
    MrtdChecksums checksums;
    NullMrtdCompensator nullCompensator;
    StandardMrtdCompensator standardCompensator;
    MrtdCompensator* compensator;
};

// Recognisers deliver spaces, carriage returns, punctuation and lower case;
// only letters, digits, the filler and line feeds carry meaning.
void normalise(ParserStringRef input, MrtdParseContext& context) {
    std::string& text = context.workingText;
    text.reserve(input.size());
    for (const char c : input.view()) {
        const auto byte = static_cast<unsigned char>(c);
        if (!isKeptCharacter(byte)) continue;
        text.push_back(isAsciiLower(byte) ? static_cast<char>(byte - 'a' + 'A') : c);
    }
    context.lines.reserve(3);
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        context.lines.emplace_back(text.data() + start, text.data() + end);
        start = end + 1;
    }
    if (context.compensator == &context.standardCompensator) context.pristineText = text;
}

struct Shape {
    const std::vector<ParserStringRef>& lines;

    bool is(std::size_t count, std::size_t length) const {
        if (lines.size() != count) return false;
        for (const ParserStringRef& line : lines) {
            if (line.size() != length) return false;
        }
        return true;
    }
    bool prefix(const char* text) const { return lines.front().starts_with(text); }
};

// The first rule that holds decides; the national variants come before the
// ICAO shapes they share.
std::optional<MrtdType> detectType(const std::vector<ParserStringRef>& lines) {
    const Shape shape{lines};
    const bool threeBy30 = shape.is(3, 30);
    const bool twoBy44 = shape.is(2, 44);
    if (threeBy30 && shape.prefix("CR")) return MrtdType::ChinaTravelPermitCR;
    if (threeBy30 && shape.prefix("CF")) return MrtdType::ChinaTravelPermitCF;
    if (threeBy30 && shape.prefix("CT")) return MrtdType::ChinaTravelPermitCT;
    if (shape.is(1, 30) && shape.prefix("CS")) return MrtdType::ChinaExitEntryCS;
    if (shape.is(1, 30) && shape.prefix("CD")) return MrtdType::ChinaExitEntryCD;
    if (threeBy30 && shape.prefix("CP")) return MrtdType::ApecCard;
    if (twoBy44 && shape.prefix("Q<")) return MrtdType::ChinaOneWayFront;
    if (twoBy44 && shape.prefix("QS")) return MrtdType::ChinaOneWayBack;
    if (threeBy30 && shape.prefix("VB")) return MrtdType::BorderCrossingCard;
    const bool mexican = threeBy30 && lines.front().slice(2, 5) == "MEX";
    if (mexican && shape.prefix("CG")) return MrtdType::MexicanConsularCardCG;
    if (mexican && shape.prefix("I<")) return MrtdType::MexicanConsularCardID;
    if (shape.is(2, 36)) return shape.prefix("V") ? MrtdType::MrvB : MrtdType::Td2;
    if (twoBy44) return shape.prefix("V") ? MrtdType::MrvA : MrtdType::Td3;
    if (threeBy30) return MrtdType::Td1;
    if (lines.size() == 3 && lines[0].size() == 9 && lines[1].size() == 30 &&
        lines[2].size() == 30 && lines[1].starts_with("FA")) {
        return MrtdType::SwissDrivingLicense;
    }
    if (shape.is(2, 43) && shape.prefix("P<VNM")) return MrtdType::VietnamesePassport;
    return std::nullopt;
}

// One attempt to read the zone as `type`: "" when every check digit passed,
// possibly after a repair; otherwise the text is restored and the message returned.
std::string validateLayout(MrtdType type, MrtdParseContext& context) {
    const MrtdLayout& layout = mrtdLayout(type);
    context.checksums.reset(layout.checksumCount);
    std::string message =
        walkMrtdLayout(layout, context.lines, context.workingText, *context.compensator,
                       context.checksums, context.checkResults);
    if (message.empty()) return message;
    if (context.compensator->tryCandidates(context.checksums)) {
        for (auto& entry : context.checkResults) entry.second = true;
        return std::string();
    }
    context.checksums.clear();
    if (!context.pristineText.empty()) {
        // Same length, so the line views stay valid.
        context.workingText.replace(0, context.pristineText.size(), context.pristineText);
    }
    context.compensator->reset();
    return message;
}

// Lines two and three of the TD1 card and of the cards built on it.
void extractTd1Lines2And3(const MrtdParseContext& context, MrtdFieldReader& reader) {
    ParserStringRef line = context.lines[1];
    reader.shortDate(line, "birthDate");
    MrtdFieldReader::skip(line, 1);
    reader.sex(line);
    reader.shortDate(line, "expiryDate");
    MrtdFieldReader::skip(line, 1);
    reader.country(line, "nationality");
    reader.text(line, "optional1", 11);
    MrtdFieldReader::skip(line, 1);
    line = context.lines[2];
    reader.name(line, 30);
}

// The first line of the TD1 card and the cards built on it: code, state and a
// number that may continue in the optional data. The border crossing card
// reads its continuation one column further on.
void extractTd1Like(const MrtdParseContext& context, ParserResult& result,
                    std::size_t skipAfterNumber, std::size_t overflowWidth) {
    MrtdDocumentNumberReader reader(result);
    ParserStringRef line = context.lines[0];
    reader.documentCode(line);
    reader.country(line, "issuingState");
    reader.read(line);
    MrtdFieldReader::skip(line, skipAfterNumber);
    reader.overflow(line, overflowWidth);
    reader.text(line, "optional", reader.widthLeft());
    extractTd1Lines2And3(context, reader);
}

void extractTd2(const MrtdParseContext& context, ParserResult& result) {
    MrtdDocumentNumberReader reader(result);
    ParserStringRef line = context.lines[0];
    reader.documentCode(line);
    reader.country(line, "issuingState");
    reader.name(line, 31);
    line = context.lines[1];
    reader.read(line);
    MrtdFieldReader::skip(line, 1);
    reader.country(line, "nationality");
    reader.shortDate(line, "birthDate");
    MrtdFieldReader::skip(line, 1);
    reader.sex(line);
    reader.shortDate(line, "expiryDate");
    MrtdFieldReader::skip(line, 1);
    reader.overflow(line, 7);
    reader.text(line, "optional", reader.widthLeft());
}

void extractFrenchId(const MrtdParseContext& context, ParserResult& result) {
    MrtdFieldReader reader(result);
    ParserStringRef line = context.lines[0];
    reader.documentCode(line);
    reader.text(line, "issuingState", 3);
    // The last six columns hold the department and office of issuance.
    reader.frenchLastName(line, line.size() - 6);
    reader.fixed("nationality", "FRA");
    MrtdFieldReader::skip(line, 3);
    reader.integer(line, "officeOfIssuance", 3);
    line = context.lines[1];
    // The card number is the issuance date, department and centre together.
    const std::string number = line.first(12).str();
    result.addField("documentNumber", number, number);
    reader.yearMonth(line, "dateOfIssuance");
    reader.text(line, "departmentOfIssuance", 3);
    reader.integer(line, "managementCenterSign", 5);
    MrtdFieldReader::skip(line, 1);
    reader.frenchFirstNames(line, 14);
    reader.shortDate(line, "birthDate");
    MrtdFieldReader::skip(line, 1);
    reader.sex(line);
    MrtdFieldReader::skip(line, 1);
}

// Passports, visas and the one-way permits: a name line, then the number,
// nationality, dates and optional data.
void extractPassportLike(const MrtdParseContext& context, ParserResult& result,
                         std::size_t nameWidth, std::size_t optionalWidth, bool gbkName) {
    MrtdDocumentNumberReader reader(result);
    ParserStringRef line = context.lines[0];
    reader.documentCode(line);
    reader.country(line, "issuingState");
    if (gbkName) {
        reader.gbkName(line, 16);
    } else {
        reader.name(line, nameWidth);
    }
    line = context.lines[1];
    reader.read(line);
    reader.truncationTest();
    MrtdFieldReader::skip(line, 1);
    reader.country(line, "nationality");
    reader.shortDate(line, "birthDate");
    MrtdFieldReader::skip(line, 1);
    reader.sex(line);
    reader.shortDate(line, "expiryDate");
    MrtdFieldReader::skip(line, 1);
    reader.text(line, "optional", optionalWidth);
}

void extractSwissDrivingLicense(const MrtdParseContext& context, ParserResult& result) {
    MrtdFieldReader reader(result);
    ParserStringRef line = context.lines[0];
    reader.swissDocumentNumber(line);
    reader.choice(line, "languageCode", 1, {"D", "F", "I", "R"});
    line = context.lines[1];
    reader.documentCode(line);
    reader.choice(line, "issuingState", 3, {"CHE", "LIE"});
    reader.number(line, "pinCode", 9);
    reader.number(line, "versionNumber", 3);
    MrtdFieldReader::skip(line, 2);
    reader.shortDateOfDigits(line, "birthDate");
    line = context.lines[2];
    reader.name(line, 30);
}

// The first line of the CR, CF and CT permits, whose birth digits wait for the
// century letter of the second line.
ParserStringRef extractPermitLine1(ParserStringRef line, MrtdFieldReader& reader,
                                   std::size_t numberWidth, std::size_t skipAfterNumber) {
    reader.documentCode(line);
    reader.text(line, "documentNumber", numberWidth);
    MrtdFieldReader::skip(line, skipAfterNumber);
    reader.digits(line, "renewalTimes", 2);
    MrtdFieldReader::skip(line, 1);
    reader.shortDate(line, "expiryDate");
    MrtdFieldReader::skip(line, 1);
    reader.sex(line);
    return line.first(6);
}

void extractPermitCR(const MrtdParseContext& context, ParserResult& result) {
    MrtdFieldReader reader(result);
    const ParserStringRef birthDigits = extractPermitLine1(context.lines[0], reader, 9, 1);
    ParserStringRef line = context.lines[1];
    reader.gbkName(line, 16);
    reader.omittedCount(line, "omittedCharacterCountInGBKName");
    reader.omittedCount(line, "omittedNameCount");
    reader.centuryDate(birthDigits, line.take_front(1)[0]);
    reader.text(line, "hkMacauIdNumber", 9);
    line = context.lines[2];
    reader.name(line, 30);
    reader.fixed("issuingState", "CHN");
    reader.fixed("nationality", "CHN");
}

void extractPermitCF(const MrtdParseContext& context, ParserResult& result) {
    MrtdFieldReader reader(result);
    const ParserStringRef birthDigits = extractPermitLine1(context.lines[0], reader, 9, 1);
    ParserStringRef line = context.lines[1];
    reader.text(line, "passportNumber", 13);
    MrtdFieldReader::skip(line, 1);
    reader.omittedCount(line, "omittedNameCount");
    reader.text(line, "nationality", 3);
    reader.centuryDate(birthDigits, line.take_front(1)[0]);
    reader.text(line, "hkMacauIdNumber", 9);
    line = context.lines[2];
    reader.name(line, 30);
    reader.fixed("issuingState", "CHN");
}

void extractPermitCT(const MrtdParseContext& context, ParserResult& result) {
    MrtdFieldReader reader(result);
    const ParserStringRef birthDigits = extractPermitLine1(context.lines[0], reader, 8, 2);
    ParserStringRef line = context.lines[1];
    reader.gbkName(line, 16);
    reader.omittedCount(line, "omittedCharacterCountInGBKName");
    reader.omittedCount(line, "omittedNameCount");
    reader.centuryDate(birthDigits, line.take_front(1)[0]);
    reader.text(line, "taiwanIdNumber", 10);
    line = context.lines[2];
    reader.name(line, 26);
    reader.text(line, "issuingAuthorityCode", 4);
    reader.fixed("issuingState", "CHN");
}

void extractExitEntry(const MrtdParseContext& context, ParserResult& result) {
    MrtdFieldReader reader(result);
    ParserStringRef line = context.lines[0];
    reader.documentCode(line);
    reader.text(line, "documentNumber", 9);
    MrtdFieldReader::skip(line, 2);
    reader.shortDate(line, "expiryDate");
    MrtdFieldReader::skip(line, 2);
    reader.shortDate(line, "birthDate");
    reader.fixed("issuingState", "CHN");
    reader.fixed("nationality", "CHN");
}

void extractApecCard(const MrtdParseContext& context, ParserResult& result) {
    MrtdFieldReader reader(result);
    ParserStringRef line = context.lines[0];
    reader.documentCode(line);
    reader.country(line, "issuingState");
    reader.text(line, "documentNumber", 11);
    MrtdFieldReader::skip(line, 2);
    reader.country(line, "passportIssuerIso");
    reader.text(line, "passportNumber", 9);
    line = context.lines[1];
    reader.shortDate(line, "birthDate");
    MrtdFieldReader::skip(line, 1);
    reader.sex(line);
    reader.shortDate(line, "expiryDate");
    MrtdFieldReader::skip(line, 1);
    reader.country(line, "nationality");
    reader.longDate(line, "passportDateOfExpiry");
    MrtdFieldReader::skip(line, 1);
    line = context.lines[2];
    reader.name(line, 30);
}

void extractVisa(MrtdType type, const MrtdParseContext& context, ParserResult& result) {
    if (type == MrtdType::MrvA) return extractPassportLike(context, result, 39, 16, false);
    if (type == MrtdType::MrvB) return extractPassportLike(context, result, 31, 8, false);
    QVX_GUARD(false, "Invalid MRTD type: " + std::to_string(static_cast<int>(type)));
}

void extractFields(MrtdType type, const MrtdParseContext& context, ParserResult& result) {
    QVX_GUARD(static_cast<std::size_t>(type) < kMrtdTypeCount, "unknown MrtdType provided");
    switch (type) {
        case MrtdType::Td1:
        case MrtdType::MexicanConsularCardCG:
        case MrtdType::MexicanConsularCardID:
            return extractTd1Like(context, result, 1, 15);
        case MrtdType::Td2:
            return extractTd2(context, result);
        case MrtdType::Td2FrenchId:
            return extractFrenchId(context, result);
        case MrtdType::Td3:
        case MrtdType::ChinaOneWayBack:
            return extractPassportLike(context, result, 39, 14, false);
        case MrtdType::ChinaOneWayFront:
            return extractPassportLike(context, result, 39, 14, true);
        case MrtdType::MrvA:
        case MrtdType::MrvB:
            return extractVisa(type, context, result);
        case MrtdType::SwissDrivingLicense:
            return extractSwissDrivingLicense(context, result);
        case MrtdType::ChinaTravelPermitCR:
            return extractPermitCR(context, result);
        case MrtdType::ChinaTravelPermitCF:
            return extractPermitCF(context, result);
        case MrtdType::ChinaTravelPermitCT:
            return extractPermitCT(context, result);
        case MrtdType::ChinaExitEntryCS:
        case MrtdType::ChinaExitEntryCD:
            return extractExitEntry(context, result);
        case MrtdType::ApecCard:
            return extractApecCard(context, result);
        case MrtdType::VietnamesePassport:
            return extractPassportLike(context, result, 38, 13, false);
        case MrtdType::BorderCrossingCard:
            return extractTd1Like(context, result, 2, 12);
    }
}

std::unique_ptr<ParserResult> failed(std::unique_ptr<ParserResult> result,
                                     const std::string& message) {
    result->setError(message);
    result->addField("metadata", std::string(), nullptr);
    return result;
}

}  // namespace

std::unique_ptr<ParserResult> MrtdParser::parse(ParserStringRef input) {
    auto result = std::make_unique<ParserResult>();
    MrtdParseContext context(allowFalsePositiveCompensation_);
    normalise(input, context);
    if (context.lines.empty()) return failed(std::move(result), "Input is empty.");
    std::optional<MrtdType> detected = detectType(context.lines);
    if (!detected) return failed(std::move(result), "Could not determine MRTD type.");
    MrtdType type = *detected;

    context.checkResults.reserve(16);
    std::string message = validateLayout(type, context);
    // A French identity card has the shape of a TD2 but a layout of its own.
    if (!message.empty() && type == MrtdType::Td2) {
        type = MrtdType::Td2FrenchId;
        message = validateLayout(type, context);
    }
    if (!message.empty() && !relaxedChecksumValidation_) {
        return failed(std::move(result), message);
    }

    result->fields.reserve(20);
    extractFields(type, context, *result);

    nlohmann::json checks;
    if (type != MrtdType::SwissDrivingLicense) {
        checks = nlohmann::json::object();
        for (const auto& [name, passed] : context.checkResults) checks[name] = passed;
    }
    nlohmann::json metadata = nlohmann::json::object();
    metadata["checksumValidation"] = std::move(checks);
    result->addField("documentType", std::string(), mrtdDocumentTypeName(type));
    result->normalizedText = std::move(context.workingText);
    result->addField("metadata", std::string(), std::move(metadata));
    return result;
}

std::unique_ptr<ParserOptionsOutcome> MrtdParser::readOptionsFromJSON(nlohmann::json options) {
    auto outcome =
        options::walk(options, [this](const std::string& key, const nlohmann::json& value) {
            if (key == "relaxedChecksumValidation") {
                return options::readBool(value, relaxedChecksumValidation_,
                                         options::mustBeBoolean(key));
            }
            if (key == "allowFalsePositiveCompensation") {
                return options::readBool(value, allowFalsePositiveCompensation_,
                                         options::mustBeBoolean(key));
            }
            return options::invalidOption(key);
        });
    if (!outcome->ok) return outcome;
    if (relaxedChecksumValidation_ && allowFalsePositiveCompensation_) {
        return ParserOptionsOutcome::failure(
            "relaxedChecksumValidation and allowFalsePositiveCompensation options can not be "
            "enabled at the same time");
    }
    return outcome;
}

nlohmann::json MrtdParser::optionsToJSON() const {
    return nlohmann::json{{"allow_false_positive_compensation", allowFalsePositiveCompensation_},
                          {"relaxed_checksum_validation", relaxedChecksumValidation_}};
}

}  // namespace parser
