#include "usid/usid_parser.h"

#include <climits>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <utility>

#include "common/date.h"
#include "common/text.h"

namespace parser {

namespace {

using usid::CodedTable;
using usid::ListedTable;

constexpr std::size_t kHeaderLength = 9;
constexpr std::size_t kDateLength = 9;
constexpr std::size_t kNameLength = 27;

BcbpFieldOutcome success(const char* name, std::string raw, nlohmann::json value) {
    return BcbpFieldOutcome::success(ParsedField(name, std::move(raw), std::move(value)));
}

BcbpFieldOutcome nothing() {
    return success("", std::string(), nullptr);
}

BcbpFieldOutcome failure(std::string message) {
    return BcbpFieldOutcome::failure(std::move(message));
}

ParserStringRef trimTrailing(ParserStringRef text) {
    while (!text.empty() && isCSpace(text.back())) text = text.drop_back(1);
    return text;
}

// Leading white space is skipped; the rest must be digits that fit an int.
std::optional<int> numberFromText(ParserStringRef text) {
    while (!text.empty() && isCSpace(text.front())) text = text.drop_front(1);
    if (text.empty()) return std::nullopt;
    std::int64_t value = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isAsciiDigit(text[i])) return std::nullopt;
        value = value * 10 + (text[i] - '0');
        if (value > INT_MAX) return std::nullopt;
    }
    return static_cast<int>(value);
}

nlohmann::json numberOrNull(ParserStringRef text) {
    const auto number = numberFromText(text);
    return number ? nlohmann::json(*number) : nlohmann::json(nullptr);
}

// A code made only of digits (the DEERS suffix) is reported as a number.
nlohmann::json codeValue(ParserStringRef code) {
    if (!code.empty()) {
        bool digits = true;
        for (std::size_t i = 0; i < code.size() && digits; ++i) digits = isAsciiDigit(code[i]);
        if (digits) {
            if (auto number = numberFromText(code)) return *number;
        }
    }
    return code.str();
}

// The shared start of every table lookup: the length test, then the bytes
// with trailing blanks cut.
result<ParserStringRef, std::string> takeCode(ParserStringRef& view, std::size_t length,
                                              const char* name, ParserStringRef& raw) {
    if (view.size() < length) {
        return result<ParserStringRef, std::string>::failure(
            lengthMismatchMessage(name, length, view.size()));
    }
    raw = view.take_front(length);
    return result<ParserStringRef, std::string>::success(trimTrailing(raw));
}

BcbpFieldOutcome readUsidHeader(ParserStringRef& view, std::size_t length) {
    const ParserStringRef bytes = view.take_front(length);
    // The Common Access Card and the IDCV card carry other layouts in the same
    // symbology; they are told apart by their first bytes.
    if (bytes.starts_with('N')) {
        return failure("Common Access Card (CAC) PDF417 VN is not supported by the parser.");
    }
    if (bytes.starts_with("IDCV")) return failure("IDCV PDF417 is not supported by the parser.");
    nlohmann::json header = {{"identificationCode", bytes.first(4).str()},
                             {"version", numberOrNull(bytes.slice(4, 5))}};
    return success("header", std::string(), std::move(header));
}

// The text data begins with the sponsor flag, a digit; whatever stands between
// the header and it is passed over.
BcbpFieldOutcome skipToFirstDigit(ParserStringRef& view, std::size_t /*length*/) {
    while (!view.empty() && !isAsciiDigit(view.front())) view = view.drop_front(1);
    return nothing();
}

BcbpFieldOutcome skipBytes(ParserStringRef& view, std::size_t length) {
    view.take_front(length);
    return nothing();
}

BcbpFieldOutcome readImage(ParserStringRef& view, std::size_t /*length*/) {
    std::string bytes = view.take_front(view.size()).str();
    std::string encoded = base64Encode(bytes);
    return success("jpegData", std::move(bytes), std::move(encoded));
}

// Version 1 cards have no pay grade at all.
BcbpFieldOutcome readAbsentPayGrade(ParserStringRef& /*view*/, std::size_t /*length*/) {
    return success("payGrade", std::string(), nullptr);
}

// A code with a description: the value carries both, so that callers can
// show the text and still compare the code.
template <class Table>
BcbpFieldOutcome readDescribedField(ParserStringRef& view, std::size_t length, const char* name,
                                    const Table& table) {
    ParserStringRef raw;
    auto code = takeCode(view, length, name, raw);
    if (!code.ok()) return failure(code.error());
    const std::string* text = usid::findText(table, code.value().view());
    if (text == nullptr) return failure(invalidValueMessage(code.value().str(), name));
    return success(name, raw.str(),
                   nlohmann::json{{"code", codeValue(code.value())}, {"description", *text}});
}

UsidFieldReader coded(const char* name, const CodedTable& table, std::size_t length) {
    return {[name, &table](ParserStringRef& view, std::size_t width) {
                return readCodedField(view, width, name, table);
            },
            length};
}

template <class Table>
UsidFieldReader described(const char* name, const Table& table, std::size_t length) {
    return {[name, &table](ParserStringRef& view, std::size_t width) {
                return readDescribedField(view, width, name, table);
            },
            length};
}

UsidFieldReader listed(const char* name, const ListedTable& table, std::size_t length) {
    return {[name, &table](ParserStringRef& view, std::size_t width) {
                ParserStringRef raw;
                auto code = takeCode(view, width, name, raw);
                if (!code.ok()) return failure(code.error());
                if (!usid::isListed(table, code.value().view())) {
                    return failure(invalidValueMessage(code.value().str(), name));
                }
                return success(name, raw.str(), code.value().str());
            },
            length};
}

// `message` is the whole error text: the wording differs between fields.
UsidFieldReader number(const char* name, const char* message, std::size_t length) {
    return {[name, message](ParserStringRef& view, std::size_t width) {
                const ParserStringRef raw = view.take_front(width);
                const auto value = numberFromText(trimTrailing(raw));
                if (!value) return failure(message);
                return success(name, raw.str(), *value);
            },
            length};
}

// Names are written "LAST,FIRST"; the list comes last piece first.
UsidFieldReader name(const char* field) {
    return {[field](ParserStringRef& view, std::size_t width) {
                const ParserStringRef raw = view.take_front(width);
                return success(field, raw.str(), splitToJsonArray(raw, ',', true));
            },
            kNameLength};
}

UsidFieldReader text(const char* name, std::size_t length) {
    return {[name](ParserStringRef& view, std::size_t width) {
                const ParserStringRef raw = view.take_front(width);
                return success(name, raw.str(), trimTrailing(raw).str());
            },
            length};
}

// YYYYMMMDD with the month as an English abbreviation in capitals. Cards
// without end date say "INDEFINITE" or the like. A date that cannot be read is
// kept as raw text with a null value: it does not make the card unreadable.
UsidFieldReader date(const char* name) {
    return {[name](ParserStringRef& view, std::size_t width) {
                const ParserStringRef raw = view.take_front(width);
                nlohmann::json value = nullptr;
                if (raw.size() == kDateLength && !raw.starts_with("INDE")) {
                    const auto day = numberFromText(raw.slice(7, 9));
                    const int month = monthFromName(raw.slice(4, 7));
                    const auto year = numberFromText(raw.slice(0, 4));
                    if (day && month > 0 && year) {
                        value = {{"year", *year}, {"month", month}, {"day", *day}};
                    }
                }
                return success(name, raw.str(), std::move(value));
            },
            kDateLength};
}

UsidFieldReader skip(std::size_t length) {
    return {skipBytes, length};
}

// Both lists share their first 26 readers and differ in the last three.
// Version 3 widened the form number; version 1 had no pay grade.
std::vector<UsidFieldReader> fieldList(int version, std::initializer_list<UsidFieldReader> tail) {
    std::vector<UsidFieldReader> readers;
    readers.reserve(26 + tail.size());
    readers.insert(
        readers.end(),
        {
            name("name"),
            number("personDesignatorIdentifier",
                   "personDesignatorIdentifier contains forbidden characters", 9),
            number("familySequenceNumber", "familySequenceNumber contains forbidden characters", 1),
            skip(9),
            described("deersDependentSuffix", usid::kDeersDependentSuffix, 2),
            number("height", "height should contain only numerical characters", 2),
            number("weight", "weight should contain only numerical characters", 3),
            coded("hairColor", usid::kHairColor, 2),
            coded("eyeColor", usid::kEyeColor, 2),
            date("birthDate"),
            described("directCareFlag", usid::kDirectCareFlag, 1),
            described("civilianHealthCare", usid::kCivilianHealthCare, 1),
            described("commissary", usid::kCommissary, 1),
            described("mwr", usid::kMwr, 1),
            described("exchange", usid::kExchange, 1),
            date("champusEffectiveDate"),
            date("champusExpirationDate"),
            text("formNumber", version == 3 ? 6 : 4),
            date("cardIssueDate"),
            date("cardExpirationDate"),
            text("securityCode", 4),
            listed("serviceCode", usid::kServiceCode, 1),
            described("status", usid::kStatus, 6),
            listed("branchOfService", usid::kBranchOfService, 5),
            text("rank", 6),
            version == 1 ? UsidFieldReader{readAbsentPayGrade, 0}
                         : listed("payGrade", usid::kPayGrade, 4),
        });
    readers.insert(readers.end(), tail);
    return readers;
}

std::vector<UsidFieldReader> sponsorReaders(int version) {
    return fieldList(version,
                     {listed("genevaConventionCategory", usid::kGenevaConventionCategory, 3),
                      coded("bloodType", usid::kBloodType, 3),
                      {readImage, 0}});
}

std::vector<UsidFieldReader> dependentReaders(int version) {
    return fieldList(version,
                     {name("sponsorName"),
                      number("sponsorPersonDesignatorIdentifier",
                             "sponsorPersonDesignatorIdentifier contains forbidden characters", 9),
                      described("relationship", usid::kRelationship, 6)});
}

int versionOf(const ParserResult& result) {
    const ParsedField* header = result.getFieldByName("header");
    if (header == nullptr) return 0;
    const auto version = header->parsed.find("version");
    if (version == header->parsed.end() || !version->is_number_integer()) return 0;
    return version->get<int>();
}

}  // namespace

void readUsidFields(const std::vector<UsidFieldReader>& list, ParserStringRef& view,
                    ParserResult& result) {
    runBcbpSection(list, view, true, result);
}

BcbpFieldOutcome readCodedField(ParserStringRef& view, std::size_t length, const char* name,
                                const CodedTable& table) {
    ParserStringRef raw;
    auto code = takeCode(view, length, name, raw);
    if (!code.ok()) return failure(code.error());
    const std::string* text = usid::findText(table, code.value().view());
    if (text == nullptr) return failure(invalidValueMessage(code.value().str(), name));
    return success(name, raw.str(), *text);
}

std::unique_ptr<ParserResult> UsUsidParser::parse(ParserStringRef input) {
    auto result = std::make_unique<ParserResult>();
    ParserStringRef view = input;
    readUsidFields({{readUsidHeader, kHeaderLength},
                    {skipToFirstDigit, 0},
                    coded("sponsorFlag", usid::kSponsorFlag, 1)},
                   view, *result);
    if (result->error) return result;

    const int version = versionOf(*result);
    const ParsedField* flag = result->getFieldByName("sponsorFlag");
    const bool sponsor = flag != nullptr && flag->parsed == "sponsor";
    readUsidFields(sponsor ? sponsorReaders(version) : dependentReaders(version), view, *result);
    return result;
}

std::unique_ptr<ParserOptionsOutcome> UsUsidParser::readOptionsFromJSON(
    nlohmann::json /*options*/) {
    // The format has no options; whatever is given is accepted and ignored.
    return ParserOptionsOutcome::success();
}

nlohmann::json UsUsidParser::optionsToJSON() const {
    return nlohmann::json::object();
}

}  // namespace parser
