#include "bcbp/bcbp_parser.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "bcbp/bcbp_field_parsers.h"
#include "bcbp/bcbp_section.h"
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
// Enough room for the fields of a whole pass and of one leg, so that neither
// list grows field by field.
constexpr std::size_t kPassFieldCapacity = 16;
constexpr std::size_t kLegFieldCapacity = 24;
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

}  // namespace

// Every field list a parse may need. The look-ahead chooses among them: the
// itinerary flag, the version (0-9; it only changes how baggage tags are read)
// and the width of the fast-track flag in the leg-level block.
struct BcbpFieldLists {
    static constexpr int kVersions = 10;

    BcbpFieldLists(bool strictMode, int referenceYear) : strict(strictMode), year(referenceYear) {
        const Date reference{year, 1, 1};
        head = {
            {textFieldParser("formatCode", strict), 1},
            {intFieldParser("numberOfLegsEncoded", true), 1},
            {lastNameFirstNameParser("passengerName", strict, '/'), 20},
            {textFieldParser("electronicTicketIndicator", strict), 1},
        };
        for (const bool itinerary : {false, true}) {
            legs[itinerary] = legSpecs(reference, itinerary);
            for (int version = 0; version < kVersions; ++version) {
                unique[itinerary][version] = uniqueSpecs(reference, itinerary, version);
            }
        }
        for (const std::size_t fastTrackWidth : {0, 1}) {
            repeated[fastTrackWidth] = repeatedSpecs(fastTrackWidth);
        }
    }

    bool strict;
    int year;
    std::vector<BcbpFieldSpec> head;
    std::array<std::vector<BcbpFieldSpec>, 2> legs;
    std::array<std::array<std::vector<BcbpFieldSpec>, kVersions>, 2> unique;
    std::array<std::vector<BcbpFieldSpec>, 2> repeated;
    BcbpFieldParser versionNumber = hexIntFieldParser("versionNumber");
    BcbpFieldParser fastTrack = booleanFieldParser("fastTrack");

  private:
    std::vector<BcbpFieldSpec> legSpecs(Date reference, bool itinerary) const {
        // An itinerary receipt may be printed before a seat is assigned.
        const bool strictSeat = strict && !itinerary;
        return {
            {textFieldParser("operatingCarrierPNR", strict), 7},
            {textFieldParser("fromAirport", strict), 3},
            {textFieldParser("toAirport", strict), 3},
            {textFieldParser("operatingCarrierDesignator", strict), 3},
            {textFieldParser("flightNumber", strict), 5},
            {dateFieldParser("flightDate", reference, true), 3},
            {textFieldParser("compartmentCode", strict), 1},
            {textFieldParser("seatNumber", strictSeat), 4},
            {textFieldParser("checkInSequenceNumber", strictSeat), 5},
            {textFieldParser("passengerStatus", strict), 1},
        };
    }

    std::vector<BcbpFieldSpec> uniqueSpecs(Date reference, bool itinerary, int version) const {
        return {
            {textFieldParser("passengerDescription", strict), 1},
            {textFieldParser("sourceOfCheckIn", strict), 1},
            {textFieldParser("sourceofBoardingPassIssuance", strict), 1},
            {dateFieldParser("dateOfIssuance", reference, !itinerary), 4},
            {textFieldParser("documentType", strict), 1},
            {textFieldParser("airlineDesignatorOfIssuer", strict), 3},
            {baggageTagFieldParser("baggageTagLicensePlateNumbers", version), 13},
        };
    }

    std::vector<BcbpFieldSpec> repeatedSpecs(std::size_t fastTrackWidth) const {
        return {
            {textFieldParser("airlineNumericCode", strict), 3},
            {textFieldParser("serialNumber", strict), 10},
            {textFieldParser("selecteeIndicator", strict), 1},
            {textFieldParser("internationalDocumentationVerification", strict), 1},
            {textFieldParser("marketingCarrierDesignator", strict), 3},
            {textFieldParser("frequentFlyerAirlineDesignator", strict), 3},
            {textFieldParser("frequentFlyerNumber", strict), 16},
            {textFieldParser("idIndicator", strict), 1},
            {textFieldParser("freeBaggageAllowance", strict), 3},
            {booleanFieldParser("fastTrack"), fastTrackWidth},
        };
    }
};

namespace {

// One parse: the field lists, what the look-ahead found and the result.
class PassReader {
  public:
    PassReader(const BcbpFieldLists& lists, ParserResult& result)
        : lists_(lists), result_(result) {}

    void read(ParserStringRef text) {
        result_.fields.reserve(kPassFieldCapacity);
        leg_.fields.reserve(kLegFieldCapacity);
        ahead_ = lookAhead(text);
        if (!runBcbpSection(lists_.head, text, true, result_)) return;
        const int legCount = result_.getFieldByName("numberOfLegsEncoded")->parsed.get<int>();
        const char* legsBegin = text.begin();
        json legs = json::array();
        legs.get_ref<json::array_t&>().reserve(static_cast<std::size_t>(std::max(legCount, 0)));
        for (int leg = 0; leg < legCount; ++leg) {
            if (!readLeg(text, legs)) return;
        }
        result_.addField("legs", std::string(legsBegin, text.begin()), std::move(legs));
        resolveFlightDates();
        checkVersion();
        readSecurityData(text);
    }

  private:
    // Reads one leg into its own result, then hands its warnings, its error or
    // its JSON object on. Returns false when the parse has to stop.
    bool readLeg(ParserStringRef& text, json& legs) {
        // One result serves every leg, so its field storage is allocated once.
        ParserResult& leg = leg_;
        leg.fields.clear();
        leg.warnings.clear();
        leg.error.reset();
        const bool read = runBcbpSection(lists_.legs[ahead_.itinerary], text, true, leg) &&
                          readConditional(text, leg);
        for (auto& warning : leg.warnings) result_.addWarning(std::move(warning));
        if (leg.error) {
            result_.error = std::move(leg.error);
            return false;
        }
        if (!read) return false;
        json object = json::object();
        auto& members = object.get_ref<json::object_t&>();
        // A later field of the same name wins, as an assignment would have it.
        for (auto& field : leg.fields) {
            members.insert_or_assign(std::move(field.name), std::move(field.parsed));
        }
        legs.push_back(std::move(object));
        return true;
    }

    bool readConditional(ParserStringRef& text, ParserResult& leg) {
        std::optional<ParserStringRef> block = readSectionSize("condition", text, leg, true);
        if (!block) return false;
        if (block->empty()) return true;
        // The items of the pass as a whole travel with the first conditional block.
        if (!uniqueRead_) {
            uniqueRead_ = true;
            if (!readUnique(*block, leg)) return false;
        }
        std::optional<ParserStringRef> repeated = readSectionSize("repeated", *block, leg, true);
        if (!repeated) return false;
        if (!repeated->empty() && !readRepeated(*repeated, leg)) return false;
        if (!block->empty()) leg.addField("airlineInfo", block->str(), block->str());
        return true;
    }

    bool readUnique(ParserStringRef& block, ParserResult& leg) {
        if (!block.consume_prefix('>')) {
            leg.setError(bcbpFieldError("legs", "condition section did not begin with '>' marker"));
            return false;
        }
        if (block.empty()) {
            leg.setError(bcbpFieldError("versionNumber", "Underflow before version number."));
            return false;
        }
        auto version = lists_.versionNumber(block, 1);
        if (!version.ok()) {
            leg.setError(bcbpFieldError("versionNumber", "cannot read version number"));
            return false;
        }
        result_.addField(std::move(version.value()));
        std::optional<ParserStringRef> unique = readSectionSize("unique", block, result_, false);
        if (!unique) return false;
        return unique->empty() || runBcbpSection(lists_.unique[ahead_.itinerary][ahead_.version],
                                                 *unique, true, result_);
    }

    bool readRepeated(ParserStringRef block, ParserResult& leg) {
        const bool withFastTrack = ahead_.version >= kFirstVersionWithFastTrack;
        std::size_t fastTrackWidth = withFastTrack ? 1 : 0;
        // Short blocks put the flag last, whatever items they leave out.
        if (withFastTrack && block.size() <= kFullRepeatedBlock) {
            ParserStringRef last = block.last(1);
            auto fastTrack = lists_.fastTrack(last, 1);
            if (!fastTrack.ok()) {
                leg.setError(fastTrack.error());
                return false;
            }
            leg.addField(std::move(fastTrack.value()));
            block = block.drop_back(1);
            fastTrackWidth = 0;
        }
        return runBcbpSection(lists_.repeated[fastTrackWidth], block, false, leg);
    }

    // Flight dates carry no year: a flight that falls before the issue date
    // belongs to the following year.
    void resolveFlightDates() {
        const ParsedField* issued = result_.getFieldByName("dateOfIssuance");
        if (issued == nullptr || !issued->parsed.is_object()) return;
        const json& value = issued->parsed;
        const Date issue{value.value("year", 0), value.value("month", 0), value.value("day", 0)};
        const std::size_t legsIndex = result_.fields.size() - 1;
        json legs = std::move(result_.fields[legsIndex].parsed);
        for (auto& leg : legs) {
            const auto found = leg.find("flightDate");
            if (found == leg.end() || !found->is_object()) continue;
            Date flight{issue.year, found->value("month", 0), found->value("day", 0)};
            if (flight < issue) {
                // Counting days from New Year keeps the day of the year across a leap year.
                const int dayOfYear = flight - Date{issue.year, 1, 1};
                flight = Date{issue.year + 1, 1, 1}.addDays(dayOfYear);
            }
            *found = dateToJson(flight);
        }
        std::string raw = std::move(result_.fields[legsIndex].rawString);
        result_.replaceField(legsIndex, "legs", std::move(raw), std::move(legs));
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
        if (lists_.strict) {
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

    const BcbpFieldLists& lists_;
    ParserResult& result_;
    ParserResult leg_;
    LookAhead ahead_;
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

namespace {

// Field lists are shared by all parsers: a host that creates a parser per code
// must not pay for building the lists each time. Few (strict mode, year) pairs
// occur in practice; the cache is emptied when it grows past a handful, and
// parsers holding a set keep it alive.
std::shared_ptr<const BcbpFieldLists> sharedFieldLists(bool strict, int year) {
    constexpr std::size_t kMaxCached = 8;
    static std::mutex mutex;
    static std::map<std::pair<bool, int>, std::shared_ptr<const BcbpFieldLists>> cache;
    const std::lock_guard<std::mutex> lock(mutex);
    auto found = cache.find({strict, year});
    if (found != cache.end()) return found->second;
    if (cache.size() >= kMaxCached) cache.clear();
    auto lists = std::make_shared<const BcbpFieldLists>(strict, year);
    cache.emplace(std::make_pair(strict, year), lists);
    return lists;
}

}  // namespace

IataBcbpParser::IataBcbpParser() = default;

int IataBcbpParser::referenceYear() const {
    return referenceYear_ ? *referenceYear_ : Date::getCurrentYear();
}

std::unique_ptr<ParserResult> IataBcbpParser::parse(ParserStringRef input) {
    auto result = std::make_unique<ParserResult>();
    const int year = referenceYear();
    std::shared_ptr<const BcbpFieldLists> lists = std::atomic_load(&lists_);
    // Without a fixed reference year the lists follow the calendar.
    if (!lists || lists->year != year || lists->strict != strictMode_) {
        lists = sharedFieldLists(strictMode_, year);
        std::atomic_store(&lists_, lists);
    }
    PassReader(*lists, *result).read(input);
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
