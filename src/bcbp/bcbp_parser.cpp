#include "bcbp/bcbp_parser.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bcbp/bcbp_field_parsers.h"
#include "common/date.h"
#include "common/option_extractors.h"

namespace parser {

namespace {

using nlohmann::json;

constexpr int kHighestSupportedVersion = 8;
// A pass without a conditional part is read as a version 4 pass.
constexpr int kVersionWithoutConditionalData = 4;
constexpr int kLookAheadDefaultVersion = 2;
constexpr int kFirstVersionWithFastTrack = 5;
// The leg-level conditional items without the fast-track flag take 41
// characters; a shorter block carries the flag as its last character.
constexpr std::size_t kFullRepeatedBlock = 41;
// The most fields a pass has: four of the head, the legs, the version, seven
// pass-level items and two of security data.
constexpr std::size_t kPassFieldCapacity = 15;
// The document type is the eighth character of the pass-level block.
constexpr std::size_t kDocumentTypeOffset = 7;

// What has to be known before the first field is read: the version decides
// how baggage tags and the fast-track flag are laid out, and an itinerary
// receipt may leave seats, sequence numbers and the issue date blank.
struct LookAhead {
    int version = kLookAheadDefaultVersion;
    bool itinerary = false;
};

LookAhead lookAhead(ParserStringRef text) {
    LookAhead ahead;
    const char* marker = text.find_char('>');
    if (marker == nullptr || marker + 1 == text.end()) return ahead;
    const ParserStringRef rest(marker + 1, text.end());
    if (rest.size() < 3) return ahead;
    if (rest[0] >= '0' && rest[0] <= '9') ahead.version = rest[0] - '0';
    const std::optional<long> size = readHexNumber(rest.slice(1, 3));
    if (size && *size >= static_cast<long>(kDocumentTypeOffset + 1) &&
        rest.size() - 3 >= static_cast<std::size_t>(*size)) {
        ahead.itinerary = rest[3 + kDocumentTypeOffset] == 'I';
    }
    return ahead;
}

// The field lists. Everything that differs between passes (options, version,
// itinerary flag, reference year) reaches the readers through the context, so
// the lists are constants shared by every parse.
using C = PassCharacters;

constexpr std::array<PassItem, 4> kHead = {{
    {readPassText, "formatCode", 1, {C::Printable}},
    {readPassCount, "numberOfLegsEncoded", 1, {}},
    {readPassengerName, "passengerName", 20, {C::Printable}},
    {readPassText, "electronicTicketIndicator", 1, {C::Printable}},
}};

// An itinerary receipt may be printed before a seat is assigned.
constexpr std::array<PassItem, 10> kLeg = {{
    {readPassText, "operatingCarrierPNR", 7, {C::Printable}},
    {readPassText, "fromAirport", 3, {C::UpperOrBlanks}},
    {readPassText, "toAirport", 3, {C::UpperOrBlanks}},
    {readPassText, "operatingCarrierDesignator", 3, {C::Printable}},
    {readPassText, "flightNumber", 5, {C::Printable}},
    {readPassDate, "flightDate", 3, {}},
    {readPassText, "compartmentCode", 1, {C::UpperOrBlanks}},
    {readPassText, "seatNumber", 4, {C::Seat, true}},
    {readPassText, "checkInSequenceNumber", 5, {C::Printable, true}},
    {readPassText, "passengerStatus", 1, {C::Printable}},
}};

constexpr std::array<PassItem, 7> kUnique = {{
    {readPassText, "passengerDescription", 1, {C::DigitsUpperBlank}},
    {readPassText, "sourceOfCheckIn", 1, {C::Printable}},
    {readPassText, "sourceofBoardingPassIssuance", 1, {C::Printable}},
    {readPassDate, "dateOfIssuance", 4, {C::Any, true}},
    {readPassText, "documentType", 1, {C::Printable}},
    {readPassText, "airlineDesignatorOfIssuer", 3, {C::Printable}},
    {readBaggageTags, "baggageTagLicensePlateNumbers", 13, {}},
}};

constexpr PassItem kFastTrack = {readPassFlag, "fastTrack", 1, {}};

constexpr std::array<PassItem, 10> repeatedItems(std::size_t fastTrackWidth) {
    return {{
        {readPassText, "airlineNumericCode", 3, {C::Digits}},
        {readPassText, "serialNumber", 10, {C::Printable}},
        {readPassText, "selecteeIndicator", 1, {C::Printable}},
        {readPassText, "internationalDocumentationVerification", 1, {C::Printable}},
        {readPassText, "marketingCarrierDesignator", 3, {C::Printable}},
        {readPassText, "frequentFlyerAirlineDesignator", 3, {C::Printable}},
        {readPassText, "frequentFlyerNumber", 16, {C::Printable}},
        {readPassText, "idIndicator", 1, {C::Printable}},
        {readPassText, "freeBaggageAllowance", 3, {C::Printable}},
        {readPassFlag, "fastTrack", fastTrackWidth, {}},
    }};
}

// By the width of the fast-track flag in the leg-level block.
constexpr std::array<std::array<PassItem, 10>, 2> kRepeated = {repeatedItems(0), repeatedItems(1)};

// One parse: what the look-ahead found and the result.
class PassReader {
  public:
    PassReader(const PassContext& context, ParserResult& result)
        : context_(context), result_(result) {}

    void read(ParserStringRef text) {
        result_.fields.reserve(kPassFieldCapacity);
        const LookAhead ahead = lookAhead(text);
        context_.version = ahead.version;
        context_.itinerary = ahead.itinerary;
        FieldTarget pass(result_);
        if (!runFixedWidthSection(kHead, text, true, context_, pass)) return;
        const int legCount = result_.getFieldByName("numberOfLegsEncoded")->parsed.get<int>();
        const char* legsBegin = text.begin();
        json legs = json::array();
        legs.get_ref<json::array_t&>().reserve(static_cast<std::size_t>(std::max(legCount, 0)));
        for (int leg = 0; leg < legCount; ++leg) {
            if (!readLeg(text, legs)) return;
        }
        resolveFlightDates(legs);
        result_.addField("legs", std::string(legsBegin, text.begin()), std::move(legs));
        checkVersion();
        readSecurityData(text);
    }

  private:
    // Reads one leg into its JSON object. Its warnings and its error go to the
    // result at once. Returns false when the parse has to stop.
    bool readLeg(ParserStringRef& text, json& legs) {
        json object = json::object();
        FieldTarget leg(result_, &object.get_ref<json::object_t&>());
        if (!runFixedWidthSection(kLeg, text, true, context_, leg) || !readConditional(text, leg)) {
            return false;
        }
        legs.push_back(std::move(object));
        return true;
    }

    bool readConditional(ParserStringRef& text, FieldTarget& leg) {
        std::optional<ParserStringRef> block = readSectionSize("condition", text, result_, true);
        if (!block) return false;
        if (block->empty()) return true;
        // The items of the pass as a whole travel with the first conditional block.
        if (!uniqueRead_) {
            uniqueRead_ = true;
            if (!readUnique(*block)) return false;
        }
        std::optional<ParserStringRef> repeated =
            readSectionSize("repeated", *block, result_, true);
        if (!repeated) return false;
        if (!repeated->empty() && !readRepeated(*repeated, leg)) return false;
        if (!block->empty()) leg.add("airlineInfo", *block, block->str());
        return true;
    }

    bool readUnique(ParserStringRef& block) {
        if (!block.consume_prefix('>')) {
            result_.setError(
                bcbpFieldError("legs", "condition section did not begin with '>' marker"));
            return false;
        }
        if (block.empty()) {
            result_.setError(bcbpFieldError("versionNumber", "Underflow before version number."));
            return false;
        }
        const ParserStringRef raw = block.take_front(1);
        const std::optional<long> version = readHexNumber(raw);
        if (!version) {
            result_.setError(bcbpFieldError("versionNumber", "cannot read version number"));
            return false;
        }
        result_.addField("versionNumber", raw.str(), *version);
        std::optional<ParserStringRef> unique = readSectionSize("unique", block, result_, false);
        if (!unique) return false;
        FieldTarget pass(result_);
        return unique->empty() || runFixedWidthSection(kUnique, *unique, true, context_, pass);
    }

    bool readRepeated(ParserStringRef block, FieldTarget& leg) {
        const bool withFastTrack = context_.version >= kFirstVersionWithFastTrack;
        std::size_t fastTrackWidth = withFastTrack ? 1 : 0;
        // Short blocks put the flag last, whatever items they leave out.
        if (withFastTrack && block.size() <= kFullRepeatedBlock) {
            ParserStringRef last = block.last(1);
            kFastTrack.read(kFastTrack, last, 1, context_, leg);
            block = block.drop_back(1);
            fastTrackWidth = 0;
        }
        return runFixedWidthSection(kRepeated[fastTrackWidth], block, false, context_, leg);
    }

    // Flight dates carry no year: a flight that falls before the issue date
    // belongs to the following year.
    void resolveFlightDates(json& legs) const {
        const ParsedField* issued = result_.getFieldByName("dateOfIssuance");
        if (issued == nullptr || !issued->parsed.is_object()) return;
        const json& value = issued->parsed;
        const Date issue{value.value("year", 0), value.value("month", 0), value.value("day", 0)};
        for (auto& leg : legs) {
            const auto found = leg.find("flightDate");
            if (found == leg.end() || !found->is_object()) continue;
            Date flight{issue.year, found->value("month", 0), found->value("day", 0)};
            if (flight < issue) {
                // Counting days from New Year keeps the day of the year across a leap year.
                const int dayOfYear = flight - Date{issue.year, 1, 1};
                flight = Date{issue.year + 1, 1, 1}.addDays(dayOfYear);
            }
            // The object is the reader's date form; its members are updated in place.
            json::object_t& date = found->get_ref<json::object_t&>();
            date["year"] = flight.year;
            date["month"] = flight.month;
            if (flight.day != 0) {
                date["day"] = flight.day;
            } else {
                date.erase("day");
            }
        }
    }

    void checkVersion() {
        const ParsedField* field = result_.getFieldByName("versionNumber");
        const int version = field != nullptr && field->parsed.is_number_integer()
                                ? field->parsed.get<int>()
                                : kVersionWithoutConditionalData;
        if (version <= kHighestSupportedVersion) return;
        const std::string message = "BCBP version " + std::to_string(version) +
                                    " detected, but parser only supports " +
                                    std::to_string(kHighestSupportedVersion);
        if (context_.strict) {
            result_.setError(message);
        } else {
            result_.addWarning(ParserIssue::generic(message));
        }
    }

    void readSecurityData(ParserStringRef& text) {
        if (result_.error) return;
        ParserStringRef rest = text;
        while (!rest.empty() && rest.back() == ' ') rest = rest.drop_back(1);
        while (!rest.empty() && rest.front() == ' ') rest = rest.drop_front(1);
        if (rest.empty()) return;
        if (text.size() < 4) {
            result_.setError(bcbpFieldError("securityData", "underflow reading security data"));
            return;
        }
        if (!text.consume_prefix('^')) return;
        ParserStringRef type = text.take_front(1);
        if (type.front() == ' ') type = type.drop_front(1);
        result_.addField("securityDataType", type.str(), type.str());
        std::optional<ParserStringRef> block =
            readSectionSize("securityData", text, result_, false);
        if (block) result_.addField("securityData", block->str(), block->str());
    }

    PassContext context_;
    ParserResult& result_;
    bool uniqueRead_ = false;
};

}  // namespace

std::optional<ParserStringRef> readSectionSize(const std::string& name, ParserStringRef& text,
                                               ParserResult& result, bool soft) {
    if (text.size() < 2) {
        result.setError(bcbpFieldError(name, "Underflow reading section size"));
        return std::nullopt;
    }
    const std::optional<long> size = readHexNumber(text.take_front(2));
    if (!size || *size < 0) {
        result.setError(bcbpFieldError(name, "Error reading section size"));
        return std::nullopt;
    }
    const auto wanted = static_cast<std::size_t>(*size);
    if (text.size() < wanted) {
        const std::string message = "Underflow reading '" + name + "' data. Expected " +
                                    std::to_string(wanted) +
                                    ", available: " + std::to_string(text.size()) + ".";
        if (!soft) {
            result.setError(bcbpFieldError(name, message));
            return std::nullopt;
        }
        result.addWarning(ParserIssue::generic(message));
        return text.take_front(text.size());
    }
    return text.take_front(wanted);
}

IataBcbpParser::IataBcbpParser() = default;

int IataBcbpParser::referenceYear() const {
    return referenceYear_ ? *referenceYear_ : Date::getCurrentYear();
}

std::unique_ptr<ParserResult> IataBcbpParser::parse(ParserStringRef input) {
    auto result = std::make_unique<ParserResult>();
    PassContext context;
    context.strict = strictMode_;
    // Without a fixed reference year, dates follow the calendar.
    context.referenceYear = referenceYear();
    PassReader(context, *result).read(input);
    return result;
}

std::unique_ptr<ParserOptionsOutcome> IataBcbpParser::readOptionsFromJSON(nlohmann::json options) {
    OptionExtractor extractor(options);
    // Each value is written as soon as it is read, as with every format's options.
    OptionOutcome outcome = extract_reference_year_to(extractor, "referenceYear", referenceYear_);
    if (outcome.ok()) outcome = extract_to<bool>(extractor, "strictMode", strictMode_);
    if (outcome.ok()) outcome = extractor.refuseLeftovers();
    if (!outcome.ok()) return ParserOptionsOutcome::failure(outcome.error());
    return ParserOptionsOutcome::success();
}

nlohmann::json IataBcbpParser::optionsToJSON() const {
    return {{"reference_year", referenceYear_ ? json(*referenceYear_) : json(nullptr)},
            {"strict_mode", strictMode_}};
}

}  // namespace parser
