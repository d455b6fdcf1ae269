// The AAMVA magnetic stripe: three tracks of fixed and delimited fields, read
// into the same element names as the barcode.
#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "common/date.h"
#include "common/personal_codes.h"
#include "common/text.h"
#include "dlid/dlid_issuers.h"
#include "dlid/dlid_parser.h"

namespace parser {

namespace {

using nlohmann::json;

// The city field holds 13 characters; these names are longer.
constexpr std::pair<std::string_view, std::string_view> kCutCities[] = {
    {"NEW WESTMINST", "NEW WESTMINSTER"},
    {"PORT COQUITLA", "PORT COQUITLAM"},
    {"NORTH VANCOUV", "NORTH VANCOUVER"},
    {"CAMPBELL RIVE", "CAMPBELL RIVER"},
};
constexpr std::size_t kCityWidth = 13;

std::optional<std::size_t> nth(ParserStringRef code, char byte, std::size_t n) {
    const char* found = code.find_nth_of(std::string_view(&byte, 1), n);
    if (found == nullptr) return std::nullopt;
    return code.offsetOf(found);
}

bool near(std::size_t a, std::size_t b) {
    return (a > b ? a - b : b - a) < 3;
}

// Where track 2 ends and track 3 begins: the second '%', or else a '#'.
std::optional<std::size_t> thirdTrackStart(ParserStringRef code) {
    if (auto second = nth(code, '%', 2)) return second;
    return nth(code, '#', 1);
}

json dateObject(const Date& date) {
    json object = json::object();
    addMember(object, "day", date.day);
    addMember(object, "month", date.month);
    addMember(object, "year", date.year);
    return object;
}

// A cursor over one track that records the first shortage in the result.
class Track {
  public:
    Track(ParserStringRef view, ParserResult& result) : view_(view), result_(result) {}

    ParserStringRef& view() { return view_; }
    bool failed() const { return result_.error != nullptr; }

    bool fail(const std::string& message) {
        result_.setError(message);
        return false;
    }
    // Bytes up to the first byte of `stops`, or all that is left.
    ParserStringRef upTo(std::string_view stops) {
        const char* found = view_.find_first_of(stops);
        return view_.take_front(found == nullptr ? view_.size() : view_.offsetOf(found));
    }
    bool skipOne(const char* message) {
        if (view_.empty()) return fail(message);
        view_ = view_.drop_front(1);
        return true;
    }

  private:
    ParserStringRef view_;
    ParserResult& result_;
};

bool readFirstTrack(ParserStringRef view, ParserResult& result) {
    Track track(view, result);
    ParserStringRef& rest = track.view();
    if (rest.size() < 2) return track.fail("First track too short for DAJ field");
    result.addStringField("DAJ", rest.take_front(2));

    const char* caret = rest.find_char('^');
    const std::size_t caretAt = caret == nullptr ? rest.size() + kCityWidth : rest.offsetOf(caret);
    const std::size_t cityLength = std::min(caretAt, kCityWidth);
    if (rest.size() < cityLength) return track.fail("First track too short for DAI field");
    const ParserStringRef city = rest.take_front(cityLength);
    json cityName = trimWhitespace(city).str();
    for (const auto& [cut, full] : kCutCities) {
        if (city.view() == cut) cityName = std::string(full);
    }
    result.addField("DAI", city.str(), std::move(cityName));
    // A city of the full width has no separator behind it.
    if (caretAt < kCityWidth && !track.skipOne("First track too short")) return false;

    result.addStringField("DCS", track.upTo("$"));
    if (!track.skipOne("First track too short")) return false;
    result.addStringField("DAC", track.upTo(" $^"));
    if (!rest.starts_with('^') && !track.skipOne("First track too short")) return false;
    result.addStringField("DAD", track.upTo("^"));
    if (!track.skipOne("First track too short")) return false;
    // A stripe cannot tell whether a name was truncated.
    for (const char* id : {"DDE", "DDF", "DDG"}) result.addField(id, std::string(), "U");
    result.addStringField("DAG", track.upTo("$^"));
    return true;
}

bool readSecondTrackDates(ParserStringRef expiryText, ParserStringRef birthText,
                          ParserResult& result) {
    auto birth = dateFromYYYYMMDD(birthText);
    if (!birth.ok()) {
        result.setError(birth.error());
        return false;
    }
    const Date birthDate = birth.value();
    const int year = Date::getCurrentYear();
    Date expiry;
    const ParserStringRef kind = expiryText.last(2);
    if (kind == "77") {
        // The document does not expire.
        expiry = Date{9999, 1, 1};
    } else if (kind == "88" || kind == "99") {
        const auto twoDigitYear = readDigits(expiryText.first(2));
        if (!twoDigitYear) {
            result.setError("could not parse an expiry date year");
            return false;
        }
        const int fullYear = yearFromTwoDigits(*twoDigitYear, year);
        // 88: the end of the birth month; 99: the birthday itself.
        expiry = kind == "88" ? Date{fullYear, birthDate.month,
                                     Date::getLastDayOfMonth(birthDate.month, fullYear)}
                              : Date{fullYear, birthDate.month, birthDate.day};
    } else {
        auto yearMonth = dateFromYYMM(expiryText, year);
        if (!yearMonth.ok()) {
            result.setError(yearMonth.error());
            return false;
        }
        expiry = yearMonth.value();
        expiry.day = std::min(birthDate.day, Date::getLastDayOfMonth(expiry.month, expiry.year));
    }
    result.addField("DBA", expiryText.str(), dateObject(expiry));
    result.addField("DBB", birthText.str(), dateObject(birthDate));
    return true;
}

bool readSecondTrack(ParserStringRef view, ParserResult& result, json& header) {
    Track track(view, result);
    ParserStringRef& rest = track.view();
    constexpr const char* kShort = "Second track too short";
    if (rest.size() < 6) return track.fail(kShort);
    const std::string iin = rest.take_front(6).str();
    addMember(header, "IIN", iin);
    addMember(header, "issuer", std::string(dlid::issuerForIin(iin)));
    // The licence number is split around the expiry and birth dates when it
    // is too long for its first part.
    const ParserStringRef numberStart = track.upTo("=");
    if (!track.skipOne(kShort)) return false;
    if (rest.size() < 4) return track.fail(kShort);
    const ParserStringRef expiryText = rest.take_front(4);
    if (rest.size() < 8) return track.fail(kShort);
    const ParserStringRef birthText = rest.take_front(8);
    const char* end = rest.find_first_of("=?");
    if (end == nullptr) return track.fail("missing end sentinel");
    const std::string number = numberStart.str() + rest.first(rest.offsetOf(end)).str();
    result.addField("DAQ", number, number);
    return readSecondTrackDates(expiryText, birthText, result);
}

bool readThirdTrack(ParserStringRef view, ParserResult& result, json& header) {
    Track track(view, result);
    ParserStringRef& rest = track.view();
    if (rest.size() < 2) {
        return track.fail("Third track too short for AAMVA and jurisdiction fields");
    }
    const auto digit = [](unsigned char byte) { return isAsciiDigit(byte) ? byte - '0' : 0; };
    addMember(header, "AAMVAVersion", digit(rest[0]));
    addMember(header, "jurisdictionVersion", digit(rest[1]));
    rest = rest.drop_front(2);

    const auto take = [&](const char* id, std::size_t width) {
        if (rest.size() < width) {
            return track.fail("3rd track too short for " + std::string(id) + " field");
        }
        result.addStringField(id, rest.take_front(width));
        return true;
    };
    const auto consume = [&](const char* id, std::size_t width, json (*reader)(ParserStringRef)) {
        if (rest.size() < width) return track.fail("Third track too short");
        const ParserStringRef bytes = rest.take_front(width);
        result.addField(id, bytes.str(), reader(bytes));
        return true;
    };
    if (!take("DAK", 11) || !take("DCA", 2) || !take("DCB", 10) || !take("DCD", 4)) return false;
    if (!consume("DBC", 1, sexFromCode) || !consume("DAU", 3, heightFromCode) ||
        !consume("DAX", 3, intFieldValue) ||
        // The stripe's hair colour goes through the eye colour table.
        !consume("DAZ", 3, eyeColourFromCode) || !consume("DAY", 3, eyeColourFromCode)) {
        return false;
    }
    if (rest.size() < 10) {
        for (const char* id : {"ZID", "ZRE", "ZSC"}) result.addStringField(id, ParserStringRef());
        return true;
    }
    return take("ZID", 10) && take("ZRE", 22) && take("ZSC", 5);
}

}  // namespace

void DLIDParser::parseMagstripeFormat(ParserStringRef code, ParserResult& result) const {
    result.addField("header", std::string(), nullptr);
    json header = json::object();

    const auto question = nth(code, '?', 1);
    const auto semicolon = nth(code, ';', 1);
    if (!question || !semicolon || !near(*question, *semicolon)) {
        result.setError(
            "First track cannot be localized (does not contain mandatory \"?;\" sequence at the "
            "end of the track).");
        return;
    }
    if (!readFirstTrack(code.slice(1, std::max<std::size_t>(1, *semicolon)), result)) return;

    const auto secondEnd = thirdTrackStart(code);
    const auto secondQuestion = nth(code, '?', 2);
    if (!secondEnd || !secondQuestion || !near(*secondQuestion, *secondEnd)) {
        result.setError(
            "Second track cannot be localized (does not contain mandatory \"?%\"(or \"?#\") "
            "sequence at the end of the track).");
        return;
    }
    if (*semicolon > *secondEnd) {
        result.setError("Second track cannot be localized (\";\" should come before \"?#\")");
        return;
    }
    if (!readSecondTrack(code.slice(*semicolon + 1, *secondEnd), result, header)) return;

    const auto thirdStart = thirdTrackStart(code);
    if (!thirdStart) {
        result.setError(
            "Third track cannot be localized (does not contain mandatory '%' or '#' character).");
        return;
    }
    if (!readThirdTrack(code.drop_front(*thirdStart + 1), result, header)) return;
    result.replaceField(0, "header", std::string(), std::move(header));
}

}  // namespace parser
