#include "qvx/detect.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

#include "common/text.h"
#include "gs1/gs1_ai_table.h"
#include "vin/vin_parser.h"

namespace qvx {

namespace {

using Bytes = std::string_view;

constexpr bool isDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}
constexpr bool isUpper(char c) noexcept {
    return c >= 'A' && c <= 'Z';
}
constexpr bool isLower(char c) noexcept {
    return c >= 'a' && c <= 'z';
}
constexpr bool isLetter(char c) noexcept {
    return isUpper(c) || isLower(c);
}
constexpr char toUpper(char c) noexcept {
    return isLower(c) ? static_cast<char>(c - 32) : c;
}
// White space as isspace in the "C" locale.
constexpr bool isSpace(char c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

constexpr char kGroupSeparator = '\x1d';

bool allOf(Bytes text, bool (*pred)(char) noexcept) noexcept {
    for (char c : text) {
        if (!pred(c)) return false;
    }
    return true;
}

Bytes trimSpace(Bytes text) noexcept {
    while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back())) text.remove_suffix(1);
    return text;
}

Bytes dropLeadingSpace(Bytes text) noexcept {
    while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
    return text;
}

// Blanks and line feeds that driver-licence readers put before the data.
Bytes dropLeadingBlanksAndLineFeeds(Bytes text) noexcept {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\n')) text.remove_prefix(1);
    return text;
}

bool consumeLineEnd(Bytes& text) noexcept {
    if (text.substr(0, 2) == "\r\n") {
        text.remove_prefix(2);
        return true;
    }
    if (!text.empty() && text.front() == '\n') {
        text.remove_prefix(1);
        return true;
    }
    return false;
}

// ---- machine-readable zones ----------------------------------------------

// The lines of a zone as the travel-document reader sees them: letters,
// digits and "<" count; blanks and carriage returns vanish; a line feed
// ends a line. Any other byte means the text is no zone.
struct ZoneShape {
    static constexpr std::size_t kMaxLines = 3;
    bool clean = true;
    bool hasFiller = false;
    std::size_t lines = 0;
    std::array<std::size_t, kMaxLines> lengths{};
    std::array<std::array<char, 5>, 2> heads{};  // the first bytes of lines 1 and 2, upper case
};

ZoneShape readZoneShape(Bytes text) noexcept {
    ZoneShape shape;
    if (text.empty()) {
        shape.clean = false;
        return shape;
    }
    std::size_t line = 0;
    std::size_t length = 0;
    auto endLine = [&]() {
        if (line < ZoneShape::kMaxLines) shape.lengths[line] = length;
        ++line;
        length = 0;
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\n') {
            endLine();
            continue;
        }
        if (c == ' ' || c == '\r' || c == '\t') continue;
        if (!isLetter(c) && !isDigit(c) && c != '<') {
            shape.clean = false;
            return shape;
        }
        shape.hasFiller = shape.hasFiller || c == '<';
        if (line < 2 && length < 5) shape.heads[line][length] = toUpper(c);
        ++length;
    }
    // A final line feed gives no extra line.
    if (text.back() != '\n') endLine();
    shape.lines = line;
    return shape;
}

bool zoneIs(const ZoneShape& shape, std::size_t lines, std::size_t length) noexcept {
    if (!shape.clean || shape.lines != lines) return false;
    for (std::size_t i = 0; i < lines; ++i) {
        if (shape.lengths[i] != length) return false;
    }
    return true;
}

bool headIs(const ZoneShape& shape, std::size_t line, Bytes prefix) noexcept {
    return Bytes(shape.heads[line].data(), prefix.size()) == prefix;
}

// ---- check characters -----------------------------------------------------

// The mod-10 check digit of GS1 keys: weights 3 and 1 from the right.
bool gs1CheckDigitHolds(Bytes digits) noexcept {
    if (digits.size() < 2 || !allOf(digits, isDigit)) return false;
    int sum = 0;
    int weight = 3;
    for (std::size_t i = digits.size() - 1; i-- > 0;) {
        sum += (digits[i] - '0') * weight;
        weight = 4 - weight;
    }
    return (10 - sum % 10) % 10 == digits.back() - '0';
}

// The mod-43 value of a health-industry code character; other bytes count 0.
int hibcValue(char c) noexcept {
    constexpr Bytes kSymbols = "-. $/+%";
    if (isDigit(c)) return c - '0';
    if (isUpper(c)) return c - 'A' + 10;
    const auto at = kSymbols.find(c);
    return at == Bytes::npos ? 0 : 36 + static_cast<int>(at);
}

bool hibcCheckHolds(Bytes code) noexcept {
    if (code.size() < 3 || code.front() != '+') return false;
    int sum = 0;
    for (char c : code.substr(0, code.size() - 1)) sum += hibcValue(c);
    return sum % 43 == hibcValue(code.back());
}

bool isHibcChar(char c) noexcept {
    return isDigit(c) || isUpper(c) || Bytes("-. $/+%").find(c) != Bytes::npos;
}

constexpr std::size_t kVinLength = 17;

bool isVinChar(char c) noexcept {
    return parser::isCharInCharset(static_cast<unsigned char>(c), parser::Charset::Vin);
}

// The 17 characters the VIN reader keeps of a label scan.
Bytes vinCore(Bytes text) {
    return parser::vin::stripLabelNoise(text).view();
}

// ---- GS1 element strings --------------------------------------------------

// The element string behind a leading FNC1 separator.
Bytes gs1Body(Bytes text) noexcept {
    if (!text.empty() && text.front() == kGroupSeparator) text.remove_prefix(1);
    return text;
}

// The Application Identifier that opens a machine-form string, found as the
// walk finds it: the shortest prefix that the table knows, with its data.
const parser::Gs1AiEntry* leadingAi(Bytes body) noexcept {
    for (std::size_t n = 2; n <= 4 && n <= body.size(); ++n) {
        if (!isDigit(body[n - 1]) || !isDigit(body[0])) return nullptr;
        if (const auto* row = parser::findGs1Ai(body.substr(0, n))) {
            const std::size_t data = body.size() - n;
            return data > 0 && data >= row->minimumLength ? row : nullptr;
        }
    }
    return nullptr;
}

// ---- the signatures -------------------------------------------------------

// What every matcher may read: the text once, and the few facts that more
// than one signature needs, worked out once per call.
struct Facts {
    Bytes text;
    ZoneShape zone;
    Bytes vin;  // the text with label noise cut, as a VIN reader sees it
};

using Matcher = bool (*)(const Facts&) noexcept;

struct SignatureRow {
    FormatSignature signature;
    Matcher matches;
};

bool aamvaBarcode(const Facts& facts) noexcept {
    Bytes text = dropLeadingBlanksAndLineFeeds(facts.text);
    if (text.empty() || text.front() != '@') return false;
    text.remove_prefix(1);
    if (!consumeLineEnd(text)) return false;
    // Record separator and segment terminator stand before the file type.
    constexpr std::size_t kMaxSeparators = 6;
    const auto fileType = text.substr(0, kMaxSeparators + 5).find('A');
    if (fileType == Bytes::npos) return false;
    text.remove_prefix(fileType);
    return text.substr(0, 4) == "ANSI" || text.substr(0, 5) == "AAMVA";
}

bool aamvaStripe(const Facts& facts) noexcept {
    const Bytes text = dropLeadingBlanksAndLineFeeds(facts.text);
    if (text.empty() || text.front() != '%') return false;
    const auto endSentinel = text.find('?');
    const auto track2 = text.find(';');
    if (endSentinel == Bytes::npos || track2 == Bytes::npos) return false;
    const auto apart = endSentinel > track2 ? endSentinel - track2 : track2 - endSentinel;
    return apart < 3 && allOf(text.substr(track2 + 1, 6), isDigit) && text.size() >= track2 + 7;
}

bool swissQrHeader(const Facts& facts) noexcept {
    Bytes text = facts.text;
    if (text.substr(0, 3) != "SPC") return false;
    text.remove_prefix(3);
    if (!consumeLineEnd(text)) return false;
    if (text.size() < 5 || !allOf(text.substr(0, 4), isDigit)) return false;
    text.remove_prefix(4);
    return text.front() == '\r' || text.front() == '\n';
}

bool swissQrOpening(const Facts& facts) noexcept {
    return facts.text.substr(0, 3) == "SPC";
}

bool zoneTd3(const Facts& f) noexcept {
    return zoneIs(f.zone, 2, 44);
}
bool zoneTd1(const Facts& f) noexcept {
    return zoneIs(f.zone, 3, 30);
}
bool zoneTd2(const Facts& f) noexcept {
    return zoneIs(f.zone, 2, 36);
}
bool zoneExitEntry(const Facts& f) noexcept {
    return zoneIs(f.zone, 1, 30) && (headIs(f.zone, 0, "CS") || headIs(f.zone, 0, "CD"));
}
bool zoneSwissLicence(const Facts& f) noexcept {
    const ZoneShape& z = f.zone;
    return z.clean && z.lines == 3 && z.lengths[0] == 9 && z.lengths[1] == 30 &&
           z.lengths[2] == 30 && headIs(z, 1, "FA");
}
bool zoneVietnamese(const Facts& f) noexcept {
    return zoneIs(f.zone, 2, 43) && headIs(f.zone, 0, "P<VNM");
}
bool zoneOther(const Facts& f) noexcept {
    const ZoneShape& z = f.zone;
    if (!z.clean || !z.hasFiller || z.lines == 0 || z.lines > ZoneShape::kMaxLines) return false;
    for (std::size_t i = 0; i < z.lines; ++i) {
        if (z.lengths[i] < 8 || z.lengths[i] > 46) return false;
    }
    return true;
}

bool boardingPassLeg(const Facts& facts) noexcept {
    const Bytes t = facts.text;
    // Head of 23, then the first leg: airports at 30 and 33, day of the year at 44.
    constexpr std::size_t kFirstLegEnd = 58;
    if (t.size() < kFirstLegEnd || t[0] != 'M' || !isDigit(t[1]) || t[1] == '0') return false;
    return allOf(t.substr(30, 6), isLetter) && allOf(t.substr(44, 3), isDigit);
}

bool boardingPassHead(const Facts& facts) noexcept {
    const Bytes t = facts.text;
    constexpr std::size_t kHeadLength = 23;
    if (t.size() < kHeadLength || t[0] != 'M' || !isDigit(t[1])) return false;
    return t.substr(2, 20).find('/') != Bytes::npos && (t[22] == 'E' || t[22] == ' ');
}

bool uniformedServicesId(const Facts& facts) noexcept {
    const Bytes t = facts.text;
    constexpr std::size_t kHeaderLength = 9;
    // From the sponsor flag: name 27, person id 9, family number 1, 9 unused,
    // suffix 2, height 2, weight 3, hair 2, eyes 2, then the birth date.
    constexpr std::size_t kBirthDateOffset = 58;
    constexpr std::size_t kDateLength = 9;
    if (t.size() < kHeaderLength || !allOf(t.substr(0, 4), isLetter)) return false;
    std::size_t flag = kHeaderLength;
    while (flag < t.size() && !isDigit(t[flag])) ++flag;
    if (flag >= t.size() || (t[flag] != '0' && t[flag] != '1')) return false;
    const Bytes date = t.substr(std::min(t.size(), flag + kBirthDateOffset), kDateLength);
    return date.size() == kDateLength && allOf(date.substr(0, 4), isDigit) &&
           allOf(date.substr(4, 3), isLetter) && allOf(date.substr(7, 2), isDigit);
}

bool vinChecked(const Facts& f) noexcept {
    return f.vin.size() == kVinLength && allOf(f.vin, isVinChar) &&
           parser::vin::checkDigitMatches(f.vin);
}

bool vinShaped(const Facts& f) noexcept {
    return f.vin.size() == kVinLength && allOf(f.vin, isVinChar);
}

bool vinLookAlikes(const Facts& f) noexcept {
    if (f.vin.size() != kVinLength) return false;
    for (char c : f.vin) {
        if (!isVinChar(parser::vin::readLookAlike(c))) return false;
    }
    return true;
}

bool hibcChecked(const Facts& facts) noexcept {
    // A blank before the end may itself be the check character.
    return hibcCheckHolds(dropLeadingSpace(facts.text)) || hibcCheckHolds(trimSpace(facts.text));
}

bool hibcOpening(const Facts& facts) noexcept {
    const Bytes code = trimSpace(facts.text);
    return code.size() >= 3 && code.front() == '+' && allOf(code, isHibcChar);
}

bool gs1KeyChecked(const Facts& facts) noexcept {
    const Bytes body = gs1Body(facts.text);
    // SSCC (00) holds 18 digits, GTIN (01) and contained GTIN (02) hold 14.
    if (body.substr(0, 2) == "00") return gs1CheckDigitHolds(body.substr(2, 18));
    if (body.substr(0, 2) == "01" || body.substr(0, 2) == "02") {
        return gs1CheckDigitHolds(body.substr(2, 14)) && body.size() >= 16;
    }
    return false;
}

bool gs1HumanForm(const Facts& facts) noexcept {
    const Bytes text = facts.text;
    if (text.empty() || text.front() != '(') return false;
    const auto close = text.find(')');
    if (close == Bytes::npos || close < 3 || close > 5) return false;
    const Bytes ai = text.substr(1, close - 1);
    return allOf(ai, isDigit) && parser::findGs1Ai(ai) != nullptr && text.size() > close + 1;
}

bool gs1WithSeparators(const Facts& facts) noexcept {
    return facts.text.find(kGroupSeparator) != Bytes::npos &&
           leadingAi(gs1Body(facts.text)) != nullptr;
}

bool gs1Opening(const Facts& facts) noexcept {
    return leadingAi(gs1Body(facts.text)) != nullptr;
}

bool digitalLink(const Facts& facts) noexcept {
    // Primary keys of the Digital Link path, as AI numbers and as names.
    constexpr std::array<Bytes, 30> kPrimaryKeys = {
        "01",  "gtin",  "8006", "itip",  "8013", "gmn",  "8010", "cpid", "414",  "gln",
        "417", "party", "8017", "gsrnp", "8018", "gsrn", "255",  "gcn",  "00",   "sscc",
        "253", "gdti",  "401",  "ginc",  "402",  "gsin", "8003", "grai", "8004", "giai"};
    Bytes text = facts.text;
    if (text.substr(0, 8) == "https://") {
        text.remove_prefix(8);
    } else if (text.substr(0, 7) == "http://") {
        text.remove_prefix(7);
    } else {
        return false;
    }
    const auto pathStart = text.find('/');
    if (pathStart == 0 || pathStart == Bytes::npos) return false;
    Bytes path = text.substr(pathStart + 1);
    path = path.substr(0, path.find_first_of("?#"));
    bool afterKey = false;
    while (!path.empty()) {
        const auto slash = path.find('/');
        const Bytes segment = path.substr(0, slash);
        if (afterKey && segment.size() >= 5 && allOf(segment.substr(0, 4), isDigit)) return true;
        afterKey = false;
        for (Bytes key : kPrimaryKeys) afterKey = afterKey || segment == key;
        if (slash == Bytes::npos) break;
        path.remove_prefix(slash + 1);
    }
    return false;
}

using F = ParserDataFormat;
using E = Evidence;

// The signature table. Within one format the stronger rows come first; the
// first row that matches speaks for its format.
// clang-format off
constexpr std::array<SignatureRow, 24> kSignatures = {{
    {{F::Dlid, E::Layout, "starts with the AAMVA compliance indicator and file type"}, aamvaBarcode},
    {{F::Dlid, E::Layout, "magnetic stripe: track 1 after \"%\", then track 2 after \";\" opening with a six-digit issuer number"}, aamvaStripe},
    {{F::SwissQr, E::Layout, "first line \"SPC\", then a four-digit version line"}, swissQrHeader},
    {{F::Mrtd, E::Layout, "two lines of 44 characters in the MRZ alphabet"}, zoneTd3},
    {{F::Mrtd, E::Layout, "three lines of 30 characters in the MRZ alphabet"}, zoneTd1},
    {{F::Mrtd, E::Layout, "two lines of 36 characters in the MRZ alphabet"}, zoneTd2},
    {{F::Mrtd, E::Layout, "one line of 30 characters in the MRZ alphabet opening with the exit-entry permit code \"CS\" or \"CD\""}, zoneExitEntry},
    {{F::Mrtd, E::Layout, "lines of 9, 30 and 30 characters in the MRZ alphabet, the second opening \"FA\""}, zoneSwissLicence},
    {{F::Mrtd, E::Layout, "two lines of 43 characters in the MRZ alphabet opening \"P<VNM\""}, zoneVietnamese},
    {{F::IataBcbp, E::Layout, "format code \"M\", a leg count, and the first leg's airport codes and day of the year at their fixed places"}, boardingPassLeg},
    {{F::UsUsid, E::Layout, "nine-byte header, sponsor flag \"0\" or \"1\", and a birth date such as 1985MAR14 at its fixed place"}, uniformedServicesId},
    {{F::Gs1DigitalLink, E::Layout, "an http(s) URI whose path holds a GS1 primary key and its value"}, digitalLink},
    {{F::Gs1Ai, E::Check, "opens with the key AI 00, 01 or 02 and its GS1 check digit holds"}, gs1KeyChecked},
    {{F::Vin, E::Check, "17 characters in the VIN alphabet and the check digit at position 9 holds"}, vinChecked},
    {{F::Hibc, E::Check, "\"+\" code whose last character is its mod-43 check character"}, hibcChecked},
    {{F::Gs1Ai, E::Shape, "human-readable form: opens with a parenthesised AI of the GS1 table"}, gs1HumanForm},
    {{F::Gs1Ai, E::Shape, "opens with an AI of the GS1 table and holds FNC1 group separators"}, gs1WithSeparators},
    {{F::Vin, E::Shape, "17 characters in the VIN alphabet; the check digit does not hold, as outside North America"}, vinShaped},
    {{F::IataBcbp, E::Shape, "format code \"M\", a leg count and a 20-character passenger name with \"/\""}, boardingPassHead},
    {{F::SwissQr, E::Opening, "starts with \"SPC\" but no version line follows"}, swissQrOpening},
    {{F::Hibc, E::Opening, "starts with \"+\" in the HIBC character set, but the check character fails"}, hibcOpening},
    {{F::Mrtd, E::Opening, "lines in the MRZ alphabet with \"<\" fillers, but in no document's shape"}, zoneOther},
    {{F::Vin, E::Opening, "17 characters in the VIN alphabet once the look-alikes I, O and Q are read as 1, 0 and 9"}, vinLookAlikes},
    {{F::Gs1Ai, E::Opening, "opens with an AI of the GS1 table followed by enough data"}, gs1Opening},
}};
// clang-format on

// Rows of the table as documentation: the signature without its matcher.
constexpr std::array<FormatSignature, kSignatures.size()> kSignatureList = [] {
    std::array<FormatSignature, kSignatures.size()> list{};
    for (std::size_t i = 0; i < kSignatures.size(); ++i) list[i] = kSignatures[i].signature;
    return list;
}();

}  // namespace

bool FormatCandidates::contains(ParserDataFormat format) const noexcept {
    for (const auto& candidate : *this) {
        if (candidate.format == format) return true;
    }
    return false;
}

void FormatCandidates::add(const FormatCandidate& candidate) noexcept {
    std::size_t at = 0;
    while (at < count_ && items_[at].format != candidate.format) ++at;
    if (at < count_) {
        if (items_[at].evidence >= candidate.evidence) return;
        // Take the old entry out; the new one is placed below.
        for (std::size_t i = at; i + 1 < count_; ++i) items_[i] = items_[i + 1];
        --count_;
    }
    if (count_ == kCapacity) return;
    // After every candidate of at least the same evidence: ties keep their order.
    std::size_t place = 0;
    while (place < count_ && items_[place].evidence >= candidate.evidence) ++place;
    for (std::size_t i = count_; i > place; --i) items_[i] = items_[i - 1];
    items_[place] = candidate;
    ++count_;
}

FormatCandidates detectFormats(std::string_view bytes) noexcept {
    Facts facts{bytes, readZoneShape(bytes), vinCore(bytes)};
    FormatCandidates candidates;
    for (const auto& row : kSignatures) {
        if (candidates.contains(row.signature.format)) continue;
        if (row.matches(facts)) {
            candidates.add({row.signature.format, row.signature.evidence, row.signature.reason});
        }
    }
    return candidates;
}

const FormatSignature* formatSignaturesBegin() noexcept {
    return kSignatureList.data();
}
const FormatSignature* formatSignaturesEnd() noexcept {
    return kSignatureList.data() + kSignatureList.size();
}

DetectedParse parseDetected(const std::string& bytes, const ParserForFormat& parserFor) {
    const FormatCandidates candidates = detectFormats(bytes);
    std::optional<ParserDataFormat> failedFormat;
    std::optional<ParseOutcome> failure;
    for (const auto& candidate : candidates) {
        auto parser = parserFor(candidate.format);
        if (!parser) continue;
        ParseOutcome outcome = parser->parse(bytes);
        if (outcome.ok()) return {candidates, candidate.format, std::move(outcome)};
        if (!failure) {
            failedFormat = candidate.format;
            failure = std::move(outcome);
        }
    }
    if (failure) return {candidates, failedFormat, std::move(*failure)};
    std::string message = candidates.empty()
                              ? std::string("no format recognized")
                              : "no parser for the detected format '" +
                                    parser::dataFormatName(candidates[0].format) + "'";
    return {candidates, std::nullopt,
            ParseOutcome::failure(std::make_shared<parser::ParserIssue>(std::move(message)))};
}

DetectedParse parseDetected(const std::string& bytes,
                            const std::shared_ptr<core::Context>& context) {
    return parseDetected(bytes, [&context](ParserDataFormat format) -> std::shared_ptr<Parser> {
        if (!Parser::isFormatAvailable(format)) return nullptr;
        auto created = Parser::create(context, format);
        return created.ok() ? created.value() : nullptr;
    });
}

}  // namespace qvx
