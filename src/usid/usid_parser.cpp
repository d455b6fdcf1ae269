#include "usid/usid_parser.h"

#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "common/date.h"
#include "common/text.h"

namespace parser {

namespace {

using nlohmann::json;

constexpr std::size_t kHeaderLength = 9;
constexpr std::size_t kDateLength = 9;
constexpr std::size_t kNameLength = 27;
// The header, the sponsor flag and the 28 fields of either list.
constexpr std::size_t kMostFields = 30;

ParserStringRef trimTrailing(ParserStringRef text) {
    std::string_view kept = text.view();
    while (!kept.empty() && isCSpace(static_cast<unsigned char>(kept.back()))) {
        kept.remove_suffix(1);
    }
    return ParserStringRef(kept);
}

json numberOrNull(ParserStringRef text) {
    const auto number = readDecimalInt(text);
    return number ? json(*number) : json(nullptr);
}

// A code made only of digits (the DEERS suffix) is reported as a number.
json codeValue(ParserStringRef code) {
    const std::string_view digits = code.view();
    if (!digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos) {
        if (auto number = readDecimalInt(code)) return *number;
    }
    return code.str();
}

// The shared start of every table lookup: the length test, then the bytes
// with trailing blanks cut. Returns false once the error is set.
bool takeCode(const CardItem& item, ParserStringRef& view, std::size_t width, FieldTarget& target,
              ParserStringRef& raw, ParserStringRef& code) {
    if (view.size() < width) {
        return target.fail(lengthMismatchMessage(item.name, width, view.size()));
    }
    raw = view.take_front(width);
    code = trimTrailing(raw);
    return true;
}

bool invalid(const CardItem& item, ParserStringRef code, FieldTarget& target) {
    return target.fail(invalidValueMessage(code.str(), item.name));
}

bool readHeader(const CardItem& /*item*/, ParserStringRef& view, std::size_t width,
                const CardContext& /*context*/, FieldTarget& target) {
    const ParserStringRef bytes = view.take_front(width);
    // The Common Access Card and the IDCV card carry other layouts in the same
    // symbology; they are told apart by their first bytes.
    if (bytes.starts_with('N')) {
        return target.fail("Common Access Card (CAC) PDF417 VN is not supported by the parser.");
    }
    if (bytes.starts_with("IDCV")) {
        return target.fail("IDCV PDF417 is not supported by the parser.");
    }
    json header = json::object();
    auto& members = header.get_ref<json::object_t&>();
    // Members are added in key order, each behind the last.
    members.emplace_hint(members.end(), "identificationCode", bytes.first(4).str());
    members.emplace_hint(members.end(), "version", numberOrNull(bytes.slice(4, 5)));
    target.add("header", ParserStringRef(), std::move(header));
    return true;
}

// The text data begins with the sponsor flag, a digit; whatever stands between
// the header and it is passed over.
bool skipToFirstDigit(const CardItem& /*item*/, ParserStringRef& view, std::size_t /*width*/,
                      const CardContext& /*context*/, FieldTarget& /*target*/) {
    while (!view.empty() && !isAsciiDigit(view.front())) view = view.drop_front(1);
    return true;
}

bool skipBytes(const CardItem& /*item*/, ParserStringRef& view, std::size_t width,
               const CardContext& /*context*/, FieldTarget& /*target*/) {
    view.take_front(width);
    return true;
}

bool readImage(const CardItem& item, ParserStringRef& view, std::size_t /*width*/,
               const CardContext& /*context*/, FieldTarget& target) {
    const ParserStringRef bytes = view.take_front(view.size());
    target.add(item.name, bytes, base64Encode(bytes.view()));
    return true;
}

// Version 1 cards have no pay grade at all.
bool readAbsent(const CardItem& item, ParserStringRef& /*view*/, std::size_t /*width*/,
                const CardContext& /*context*/, FieldTarget& target) {
    target.add(item.name, ParserStringRef(), nullptr);
    return true;
}

// A code with a description: the value carries both, so that callers can
// show the text and still compare the code.
bool readDescribedField(const CardItem& item, ParserStringRef& view, std::size_t width,
                        const CardContext& /*context*/, FieldTarget& target) {
    ParserStringRef raw;
    ParserStringRef code;
    if (!takeCode(item, view, width, target, raw, code)) return false;
    const std::string* text = item.argument.ranges != nullptr
                                  ? usid::findText(*item.argument.ranges, code.view())
                                  : usid::findText(*item.argument.codes, code.view());
    if (text == nullptr) return invalid(item, code, target);
    json value = json::object();
    auto& members = value.get_ref<json::object_t&>();
    members.emplace_hint(members.end(), "code", codeValue(code));
    members.emplace_hint(members.end(), "description", *text);
    target.add(item.name, raw, std::move(value));
    return true;
}

bool readListedField(const CardItem& item, ParserStringRef& view, std::size_t width,
                     const CardContext& /*context*/, FieldTarget& target) {
    ParserStringRef raw;
    ParserStringRef code;
    if (!takeCode(item, view, width, target, raw, code)) return false;
    if (!usid::isListed(*item.argument.values, code.view())) return invalid(item, code, target);
    target.add(item.name, raw, code.str());
    return true;
}

// The row's message is the whole error text: the wording differs between fields.
bool readNumber(const CardItem& item, ParserStringRef& view, std::size_t width,
                const CardContext& /*context*/, FieldTarget& target) {
    const ParserStringRef raw = view.take_front(width);
    const auto value = readDecimalInt(trimTrailing(raw));
    if (!value) return target.fail(item.argument.message);
    target.add(item.name, raw, *value);
    return true;
}

// Names are written "LAST,FIRST"; the list comes last piece first.
bool readName(const CardItem& item, ParserStringRef& view, std::size_t width,
              const CardContext& /*context*/, FieldTarget& target) {
    const ParserStringRef raw = view.take_front(width);
    target.add(item.name, raw, splitToJsonArray(raw, ',', true));
    return true;
}

bool readText(const CardItem& item, ParserStringRef& view, std::size_t width,
              const CardContext& /*context*/, FieldTarget& target) {
    const ParserStringRef raw = view.take_front(width);
    target.add(item.name, raw, trimTrailing(raw).str());
    return true;
}

// YYYYMMMDD with the month as an English abbreviation in capitals. Cards
// without end date say "INDEFINITE" or the like. A date that cannot be read is
// kept as raw text with a null value: it does not make the card unreadable.
bool readDate(const CardItem& item, ParserStringRef& view, std::size_t width,
              const CardContext& /*context*/, FieldTarget& target) {
    const ParserStringRef raw = view.take_front(width);
    json value = nullptr;
    if (raw.size() == kDateLength && !raw.starts_with("INDE")) {
        const auto day = readDecimalInt(raw.slice(7, 9));
        const int month = monthFromName(raw.slice(4, 7));
        const auto year = readDecimalInt(raw.slice(0, 4));
        if (day && month > 0 && year) {
            value = json::object();
            auto& members = value.get_ref<json::object_t&>();
            members.emplace_hint(members.end(), "day", *day);
            members.emplace_hint(members.end(), "month", month);
            members.emplace_hint(members.end(), "year", *year);
        }
    }
    target.add(item.name, raw, std::move(value));
    return true;
}

constexpr CardItem coded(const char* name, const usid::CodedTable& table, std::size_t width) {
    return {readCodedField, name, width, {&table}};
}

constexpr CardItem described(const char* name, const usid::CodedTable& table, std::size_t width) {
    return {readDescribedField, name, width, {&table}};
}

constexpr CardItem described(const char* name, const usid::RangeTable& table, std::size_t width) {
    return {readDescribedField, name, width, {nullptr, &table}};
}

constexpr CardItem listed(const char* name, const usid::ListedTable& table, std::size_t width) {
    return {readListedField, name, width, {nullptr, nullptr, &table}};
}

constexpr CardItem number(const char* name, const char* message, std::size_t width) {
    return {readNumber, name, width, {nullptr, nullptr, nullptr, message}};
}

constexpr CardItem name(const char* field) {
    return {readName, field, kNameLength, {}};
}

constexpr CardItem text(const char* name, std::size_t width) {
    return {readText, name, width, {}};
}

constexpr CardItem date(const char* name) {
    return {readDate, name, kDateLength, {}};
}

constexpr CardItem skip(std::size_t width) {
    return {skipBytes, "", width, {}};
}

constexpr std::array<CardItem, 3> kStart = {{
    {readHeader, "header", kHeaderLength, {}},
    {skipToFirstDigit, "", 0, {}},
    coded("sponsorFlag", usid::kSponsorFlag, 1),
}};

using CardItems = std::array<CardItem, 29>;
using CardTail = std::array<CardItem, 3>;

// Both lists share their first 26 rows and differ in the last three.
// Version 3 widened the form number; version 1 had no pay grade.
constexpr CardItems cardItems(int version, const CardTail& tail) {
    return {{
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
        version == 1 ? CardItem{readAbsent, "payGrade", 0, {}}
                     : listed("payGrade", usid::kPayGrade, 4),
        tail[0],
        tail[1],
        tail[2],
    }};
}

constexpr CardTail kSponsorTail = {{
    listed("genevaConventionCategory", usid::kGenevaConventionCategory, 3),
    coded("bloodType", usid::kBloodType, 3),
    {readImage, "jpegData", 0, {}},
}};

constexpr CardTail kDependentTail = {{
    name("sponsorName"),
    number("sponsorPersonDesignatorIdentifier",
           "sponsorPersonDesignatorIdentifier contains forbidden characters", 9),
    described("relationship", usid::kRelationship, 6),
}};

// Versions 1 and 3, then every other version.
constexpr std::array<CardItems, 3> kSponsorItems = {
    cardItems(1, kSponsorTail), cardItems(3, kSponsorTail), cardItems(0, kSponsorTail)};
constexpr std::array<CardItems, 3> kDependentItems = {
    cardItems(1, kDependentTail), cardItems(3, kDependentTail), cardItems(0, kDependentTail)};

int versionOf(const ParserResult& result) {
    const ParsedField* header = result.getFieldByName("header");
    if (header == nullptr) return 0;
    const auto version = header->parsed.find("version");
    if (version == header->parsed.end() || !version->is_number_integer()) return 0;
    return version->get<int>();
}

bool isSponsor(const ParserResult& result) {
    const ParsedField* flag = result.getFieldByName("sponsorFlag");
    return flag != nullptr && flag->parsed.is_string() &&
           flag->parsed.get_ref<const std::string&>() == "sponsor";
}

}  // namespace

bool readCodedField(const CardItem& item, ParserStringRef& view, std::size_t width,
                    const CardContext& /*context*/, FieldTarget& target) {
    ParserStringRef raw;
    ParserStringRef code;
    if (!takeCode(item, view, width, target, raw, code)) return false;
    const std::string* text = usid::findText(*item.argument.codes, code.view());
    if (text == nullptr) return invalid(item, code, target);
    target.add(item.name, raw, *text);
    return true;
}

std::unique_ptr<ParserResult> UsUsidParser::parse(ParserStringRef input) {
    auto result = std::make_unique<ParserResult>();
    result->fields.reserve(kMostFields);
    ParserStringRef view = input;
    const CardContext context;
    FieldTarget target(*result);
    if (!runFixedWidthSection(kStart, view, true, context, target)) return result;

    const int version = versionOf(*result);
    const std::size_t list = version == 1 ? 0 : version == 3 ? 1 : 2;
    runFixedWidthSection(isSponsor(*result) ? kSponsorItems[list] : kDependentItems[list], view,
                         true, context, target);
    return result;
}

std::unique_ptr<ParserOptionsOutcome> UsUsidParser::readOptionsFromJSON(json /*options*/) {
    // The format has no options; whatever is given is accepted and ignored.
    return ParserOptionsOutcome::success();
}

json UsUsidParser::optionsToJSON() const {
    return json::object();
}

}  // namespace parser
