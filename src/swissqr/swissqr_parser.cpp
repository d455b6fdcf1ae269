#include "swissqr/swissqr_parser.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/options.h"
#include "common/text.h"
#include "swissqr/swissqr_elements.h"

namespace parser {

namespace {

using swissqr::AddressPart;
using swissqr::Element;
using swissqr::Status;

// Shorter than "SPC", a line end and a version: no bill at all.
constexpr std::size_t kShortestCode = 9;
constexpr std::string_view kCodeStart = "SPC";
constexpr std::size_t kVersionLine = 1;
// Only the last element, the alternative procedure, repeats.
constexpr std::size_t kAlternativeElements = 1;
constexpr std::size_t kMostAlternativeProcedures = 2;
constexpr std::int32_t kSupportedMinimalVersions[] = {100, 200, 210};

struct Settings {
    std::int32_t minimalVersion;
    bool strictMode;
};

void fail(ParserResult& result, std::shared_ptr<ParserIssue> issue) {
    result.error = std::move(issue);
}

// A whole address may be left out, but one that is begun must be complete.
bool mayBeEmpty(const Element& element, const std::vector<ParserStringRef>& lines) {
    switch (element.status) {
        case Status::Optional:
        case Status::Alternative:
            return true;
        case Status::Mandatory:
            return false;
        case Status::MandatoryInGroup:
            return std::none_of(element.group.begin(), element.group.end(), [&](std::size_t j) {
                return j < lines.size() && !lines[j].empty();
            });
    }
    return false;
}

// The pieces of `text` between '\n' bytes, into `lines`; returns how many of
// the line ends are "\r\n". The '\r' stays on its line.
std::size_t splitAtLineFeeds(ParserStringRef text, std::vector<ParserStringRef>& lines) {
    const std::string_view bytes = text.view();
    std::size_t crlf = 0;
    std::size_t start = 0;
    for (std::size_t at = bytes.find('\n'); at != std::string_view::npos;
         at = bytes.find('\n', start)) {
        if (at > 0 && bytes[at - 1] == '\r') ++crlf;
        lines.emplace_back(bytes.data() + start, bytes.data() + at);
        start = at + 1;
    }
    lines.emplace_back(bytes.data() + start, bytes.data() + bytes.size());
    return crlf;
}

void readBill(ParserStringRef input, const Settings& settings, ParserResult& result) {
    const bool strict = settings.strictMode;

    if (input.size() < kShortestCode) return fail(result, ParserIssue::stringTooShort());
    if (!input.starts_with(kCodeStart)) {
        return fail(result, ParserIssue::wrongStartingCharacters(input.first(3).str()));
    }

    // Room for every line of a bill, and for the blank ones added below.
    std::vector<ParserStringRef> lines;
    lines.reserve(
        std::max(swissqr::elementsForVersion('1').size(), swissqr::elementsForVersion('2').size()) +
        kMostAlternativeProcedures);
    const std::size_t crlf = splitAtLineFeeds(input, lines);
    // Every "\r\n" holds a "\n": equal counts mean CRLF throughout.
    const std::size_t lf = lines.size() - 1;
    if (lf == 0) return fail(result, ParserIssue::invalidSeparation());
    ParserStringRef text = input;
    std::string withoutCarriageReturns;
    if (crlf == lf) {
        for (std::size_t i = 0; i < lf; ++i) lines[i] = lines[i].drop_back(1);
    } else if (crlf > 0) {
        if (strict) return fail(result, ParserIssue::invalidSeparation());
        // Bills pasted between systems pick up mixed line ends.
        result.addWarning(ParserIssue::invalidSeparation());
        withoutCarriageReturns = input.str();
        withoutCarriageReturns.erase(
            std::remove(withoutCarriageReturns.begin(), withoutCarriageReturns.end(), '\r'),
            withoutCarriageReturns.end());
        text = ParserStringRef(withoutCarriageReturns);
        lines.clear();
        splitAtLineFeeds(text, lines);
    }

    // A line end was found, so the version line exists.
    const ParserStringRef versionLine = lines[kVersionLine];
    const std::vector<Element>& elements =
        swissqr::elementsForVersion(versionLine.size() >= 2 ? versionLine[1] : 0);
    if (!isInCharset(versionLine, Charset::Numeric)) {
        return fail(result, ParserIssue::elementWrongCharset("Version", versionLine.str(),
                                                             charsetName(Charset::Numeric)));
    }
    // Digits only by now: readInt fails on nothing but overflow.
    int version = 0;
    if (!readInt(versionLine.view(), version)) {
        return fail(result, ParserIssue::unsupportedVersion("-1", settings.minimalVersion));
    }
    if (elements.empty() || version < settings.minimalVersion) {
        return fail(result, ParserIssue::unsupportedVersion(std::to_string(version),
                                                            settings.minimalVersion));
    }

    // Generators drop trailing optional lines; stand in empty ones for them.
    const ParserStringRef blank(text.end(), text.end());
    for (std::size_t i = lines.size(); i < elements.size(); ++i) {
        if (elements[i].status == Status::Optional) lines.push_back(blank);
    }
    // The alternative procedure may be missing altogether.
    if (lines.size() + 1 < elements.size()) return fail(result, ParserIssue::incompleteCode());
    const std::size_t lastElement = elements.size() - 1;
    if (lines.size() + kAlternativeElements - elements.size() > kMostAlternativeProcedures) {
        if (strict) return fail(result, ParserIssue::tooManyAlternativeProcedures());
        result.addWarning(ParserIssue::tooManyAlternativeProcedures());
    }

    result.fields.reserve(lines.size());
    bool combinedAddress = false;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const Element& element = elements[std::min(i, lastElement)];
        const ParserStringRef line = lines[i];
        // A line end after the last procedure.
        if (line.empty() && i + 1 == lines.size() && element.status == Status::Alternative) break;
        if (element.addressPart == AddressPart::Type) combinedAddress = line.view() == "K";

        const swissqr::LineContext context{strict, combinedAddress, mayBeEmpty(element, lines)};
        std::string name;
        if (i < lastElement) {
            name = element.name;
        } else {
            // Alternative procedures are numbered from 1.
            const std::string number = std::to_string(i - lastElement + 1);
            name.reserve(element.name.size() + 1 + number.size());
            name.append(element.name).append(1, '/').append(number);
        }
        if (!swissqr::readLine(element, std::move(name), line, context, result)) return;

        // The address type covers its own address only, up to the country.
        if (element.addressPart == AddressPart::None) combinedAddress = false;
    }
}

std::optional<std::int32_t> supportedMinimalVersion(const nlohmann::json& value) {
    // 200.0 compares equal to 200, so the type test comes first.
    if (!value.is_number_integer()) return std::nullopt;
    for (const std::int32_t supported : kSupportedMinimalVersions) {
        if (value == supported) return supported;
    }
    return std::nullopt;
}

}  // namespace

std::unique_ptr<ParserResult> SwissQRParser::parse(ParserStringRef input) {
    auto result = std::make_unique<ParserResult>();
    readBill(input, Settings{minimalVersion_, strictMode_}, *result);
    return result;
}

std::unique_ptr<ParserOptionsOutcome> SwissQRParser::readOptionsFromJSON(nlohmann::json options) {
    return options::walk(options, [this](const std::string& key, const nlohmann::json& value) {
        if (key == "minimalVersion") {
            const std::optional<std::int32_t> version = supportedMinimalVersion(value);
            if (!version) return "option '" + key + "' must be 100, 200 or 210";
            minimalVersion_ = *version;
            return std::string();
        }
        if (key == "strictMode") {
            return options::readBool(value, strictMode_, options::mustBeBoolean(key));
        }
        return options::invalidOption(key);
    });
}

nlohmann::json SwissQRParser::optionsToJSON() const {
    return nlohmann::json{{"minimal_version", minimalVersion_}, {"strict_mode", strictMode_}};
}

}  // namespace parser
