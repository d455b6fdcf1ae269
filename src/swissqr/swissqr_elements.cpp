#include "swissqr/swissqr_elements.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

namespace parser::swissqr {

namespace {

constexpr std::string_view kRoot = "QRCH";
constexpr std::string_view kCurrencyName = "QRCH/CcyAmtDate/Ccy";
constexpr std::string_view kIbanName = "QRCH/CdtrInf/IBAN";
constexpr std::string_view kSecondAddressLine = "BldgNbOrAdrLine2";
constexpr std::string_view kTrailer = "EPD";

// ---- Field makers ----

// The value of a few digits already known to be digits.
int digitsValue(ParserStringRef digits) {
    int value = 0;
    for (const char c : digits.view()) value = value * 10 + (c - '0');
    return value;
}

bool plainField(ParserResult& result, std::string name, ParserStringRef line,
                std::shared_ptr<ParserIssue> pending) {
    result.addField(std::move(name), line.str(), line.str(), std::move(pending));
    return true;
}

bool integerField(ParserResult& result, std::string name, ParserStringRef line,
                  std::shared_ptr<ParserIssue> pending) {
    int value = 0;
    if (!readInt(line.view(), value)) {
        result.error = ParserIssue::elementWrongCharset(name, line.str(), "numeric");
        return false;
    }
    result.addField(std::move(name), line.str(), value, std::move(pending));
    return true;
}

// "YYYY-MM-DD". Only the shape and the digits are checked: a month of 13
// passes, as the bill leaves calendar checks to the bank.
bool dateField(ParserResult& result, std::string name, ParserStringRef line,
               std::shared_ptr<ParserIssue> pending) {
    nlohmann::json parsed;  // null for an empty line
    if (!line.empty()) {
        const bool shaped = line.size() == 10 && line[4] == '-' && line[7] == '-' &&
                            isInCharset(line.first(4), Charset::Numeric) &&
                            isInCharset(line.slice(5, 7), Charset::Numeric) &&
                            isInCharset(line.slice(8, 10), Charset::Numeric);
        if (!shaped) {
            result.error = ParserIssue::invalidDate();
            return false;
        }
        parsed = nlohmann::json::object();
        addMember(parsed, "day", digitsValue(line.slice(8, 10)));
        addMember(parsed, "month", digitsValue(line.slice(5, 7)));
        addMember(parsed, "year", digitsValue(line.first(4)));
    }
    result.addField(std::move(name), line.str(), std::move(parsed), std::move(pending));
    return true;
}

bool trailerField(ParserResult& result, std::string name, ParserStringRef line,
                  std::shared_ptr<ParserIssue> pending) {
    if (line.view() != kTrailer) {
        result.error = ParserIssue::missingEndOfPaymentData();
        return false;
    }
    result.addField(std::move(name), line.str(), line.str(), std::move(pending));
    return true;
}

// IBANs are often printed in groups of four. Outside strict mode the blanks
// of such a copy do not count against the length.
void ibanBlanks(ParserStringRef value, bool strictMode, LengthRule& rule) {
    if (strictMode) return;
    const auto blanks = static_cast<std::size_t>(std::count(value.begin(), value.end(), ' '));
    rule.length += blanks;
    if (blanks > 0) rule.exact = false;
}

// ---- The rows ----

enum Versions : std::uint8_t { kV1 = 1, kV2 = 2, kBoth = kV1 | kV2 };

struct Row {
    const char* path;  // behind "QRCH"; for an address block, the block's own prefix
    FieldMaker maker;
    LengthHook hook;
    std::size_t length;
    Versions versions;
    Status status;
    bool exact;
    Charset charset;
    AddressPart addressPart;
    bool addressBlock;
};

// Columns: versions, path, status (M mandatory, G mandatory once its address is
// begun, O optional, A alternative), length, exact or upper bound, charset,
// then the field maker where it is not plain.
constexpr Status M = Status::Mandatory;
constexpr Status G = Status::MandatoryInGroup;
constexpr Status O = Status::Optional;
constexpr Status A = Status::Alternative;
constexpr bool kExact = true;
constexpr bool kUpTo = false;
constexpr Charset kNum = Charset::Numeric;
constexpr Charset kDec = Charset::Decimal;
constexpr Charset kAlnum = Charset::Alphanumeric;
constexpr Charset kAny = Charset::General;

constexpr Row line(Versions versions, const char* path, Status status, std::size_t length,
                   bool exact, Charset charset, FieldMaker maker = plainField,
                   LengthHook hook = nullptr) {
    return Row{path, maker, hook, length, versions, status, exact, charset, AddressPart::None,
               false};
}

constexpr Row addressLine(Versions versions, const char* part, Status status, std::size_t length,
                          bool exact, Charset charset, AddressPart addressPart) {
    return Row{part,   plainField, nullptr, length,      versions,
               status, exact,      charset, addressPart, false};
}

constexpr Row address(Versions versions, const char* prefix) {
    return Row{prefix, nullptr, nullptr, 0, versions, M, false, kAny, AddressPart::None, true};
}

// Rows follow the data element tables of the Swiss Implementation Guidelines
// for the QR-bill, versions 1 and 2.
// Each of the three parties of a bill: version 1 knows only structured
// addresses, version 2 adds the type line and lets the street lines hold a
// free-form address instead.
// clang-format off
constexpr Row kAddressRows[] = {
    addressLine(kV2,   "AdrTp",            O, 1,  kExact, kAlnum, AddressPart::Type),
    addressLine(kBoth, "Name",             G, 70, kUpTo,  kAny,   AddressPart::NameAndStreet),
    addressLine(kV1,   "StrtNm",           O, 70, kUpTo,  kAny,   AddressPart::NameAndStreet),
    addressLine(kV2,   "StrtNmOrAdrLine1", O, 70, kUpTo,  kAny,   AddressPart::NameAndStreet),
    addressLine(kV1,   "BldgNb",           O, 16, kUpTo,  kAny,   AddressPart::NameAndStreet),
    addressLine(kV2,   "BldgNbOrAdrLine2", O, 16, kUpTo,  kAny,   AddressPart::NameAndStreet),
    addressLine(kBoth, "PstCd",            G, 16, kUpTo,  kAny,   AddressPart::PostalPlace),
    addressLine(kBoth, "TwnNm",            G, 35, kUpTo,  kAny,   AddressPart::PostalPlace),
    addressLine(kBoth, "Ctry",             G, 2,  kExact, kAlnum, AddressPart::None),
};

constexpr Row kBillRows[] = {
    line(kBoth, "Header/QRType",            M, 3,    kExact, kAlnum),
    line(kBoth, "Header/Version",           M, 4,    kExact, kNum),
    line(kBoth, "Header/Coding",            M, 1,    kExact, kNum,   integerField),
    line(kBoth, "CdtrInf/IBAN",             M, 21,   kExact, kAlnum, plainField, ibanBlanks),
    address(kBoth, "CdtrInf/Cdtr"),
    address(kBoth, "UltmtCdtr"),
    line(kBoth, "CcyAmtDate/Amt",           O, 12,   kUpTo,  kDec),
    line(kBoth, "CcyAmtDate/Ccy",           M, 3,    kExact, kAlnum),
    line(kV1,   "CcyAmtDate/ReqdExctnDt",   O, 10,   kExact, kAny,   dateField),
    address(kBoth, "UltmtDbtr"),
    line(kBoth, "RmtInf/Tp",                M, 4,    kUpTo,  kAlnum),
    line(kBoth, "RmtInf/Ref",               O, 27,   kUpTo,  kAlnum),
    line(kV1,   "RmtInf/Ustrd",             O, 1000, kUpTo,  kAny),
    line(kV2,   "RmtInf/AddInf/Ustrd",      O, 1000, kUpTo,  kAny),
    line(kV2,   "RmtInf/AddInf/Trailer",    M, 3,    kExact, kAlnum, trailerField),
    line(kV2,   "RmtInf/AddInf/StrdBkgInf", O, 140,  kUpTo,  kAny),
    line(kV1,   "AltPmtInf/AltPmt",         A, 1000, kUpTo,  kAny),
    line(kV2,   "AltPmtInf/AltPmt",         A, 100,  kUpTo,  kAny),
};
// clang-format on

Element elementOf(const Row& row, std::string name) {
    Element element;
    element.status = row.status;
    element.lengthRule = LengthRule{row.length, row.exact};
    element.charset = row.charset;
    element.addField = row.maker;
    element.lengthHook = row.hook;
    element.addressPart = row.addressPart;
    element.isCurrency = name == kCurrencyName;
    element.isIban = name == kIbanName;
    element.isSecondAddressLine = std::string_view(row.path) == kSecondAddressLine;
    element.name = std::move(name);
    return element;
}

std::string_view parentOf(const std::string& name) {
    return std::string_view(name).substr(0, name.rfind('/'));
}

std::vector<Element> buildElements(Versions version) {
    std::vector<Element> elements;
    const std::string root(kRoot);
    for (const Row& row : kBillRows) {
        if ((row.versions & version) == 0) continue;
        if (!row.addressBlock) {
            elements.push_back(elementOf(row, root + "/" + row.path));
            continue;
        }
        for (const Row& part : kAddressRows) {
            if ((part.versions & version) == 0) continue;
            elements.push_back(elementOf(part, root + "/" + row.path + "/" + part.path));
        }
    }
    for (Element& element : elements) {
        if (element.status != Status::MandatoryInGroup) continue;
        const std::string_view parent = parentOf(element.name);
        for (std::size_t j = 0; j < elements.size(); ++j) {
            if (parentOf(elements[j].name) == parent) element.group.push_back(j);
        }
    }
    return elements;
}

// Stores `issue` as fatal, or keeps it pending when `tolerated`.
bool refuseOrKeep(std::shared_ptr<ParserIssue> issue, bool tolerated,
                  std::shared_ptr<ParserIssue>& pending, ParserResult& result) {
    if (!tolerated) {
        result.error = std::move(issue);
        return false;
    }
    pending = std::move(issue);
    return true;
}

bool onlyBlanksOffCharset(ParserStringRef value, Charset charset) {
    return std::all_of(value.begin(), value.end(), [charset](char c) {
        return c == ' ' || isCharInCharset(static_cast<unsigned char>(c), charset);
    });
}

}  // namespace

const std::vector<Element>& elementsForVersion(unsigned char majorDigit) {
    static const std::vector<Element> version1 = buildElements(kV1);
    static const std::vector<Element> version2 = buildElements(kV2);
    static const std::vector<Element> none;
    switch (majorDigit) {
        case '1':
            return version1;
        case '2':
            return version2;
        default:
            return none;
    }
}

bool readLine(const Element& element, std::string name, ParserStringRef line,
              const LineContext& context, ParserResult& result) {
    const bool strict = context.strictMode;
    const bool combinedPlace =
        context.combinedAddress && element.addressPart == AddressPart::PostalPlace;
    // Each later issue replaces the one before: a field carries one at most.
    std::shared_ptr<ParserIssue> pending;

    if (line.empty()) {
        if (!combinedPlace && !context.mayBeEmpty &&
            !refuseOrKeep(ParserIssue::elementEmpty(name), !strict, pending, result)) {
            return false;
        }
        return element.addField(result, std::move(name), line, std::move(pending));
    }

    LengthRule rule = element.lengthRule;
    if (element.lengthHook != nullptr) element.lengthHook(line, strict, rule);
    const std::size_t length = utf8Length(line.begin(), line.end());
    const int limit = static_cast<int>(rule.length);

    if (rule.exact && length != rule.length &&
        !refuseOrKeep(ParserIssue::elementLengthMismatch(name, line.str(), limit),
                      !strict && element.isCurrency, pending, result)) {
        return false;
    }
    // The upper bound holds for exact elements too, so an overlong currency
    // stays fatal even where a short one is forgiven.
    if (length > rule.length && !(context.combinedAddress && element.isSecondAddressLine)) {
        result.error = ParserIssue::elementTooLong(name, line.str(), limit);
        return false;
    }
    if (combinedPlace &&
        !refuseOrKeep(ParserIssue::elementNotEmpty(name), !strict, pending, result)) {
        return false;
    }
    if (!isInCharset(line, element.charset)) {
        const bool blanks = element.isIban && line.find_char(' ') != nullptr;
        auto issue = blanks ? ParserIssue::elementContainsSpaces(name, line.str())
                            : ParserIssue::elementWrongCharset(name, line.str(),
                                                               charsetName(element.charset));
        const bool tolerated = !strict && (element.isCurrency ||
                                           (blanks && onlyBlanksOffCharset(line, element.charset)));
        if (!refuseOrKeep(std::move(issue), tolerated, pending, result)) return false;
    }
    return element.addField(result, std::move(name), line, std::move(pending));
}

}  // namespace parser::swissqr
