#include "dlid/dlid_licence_numbers.h"

#include <array>
#include <cstdio>
#include <utility>

#include "common/text.h"

namespace parser::dlid {

namespace {

// Letter to Soundex digit; letters not listed carry no digit.
constexpr std::array<std::pair<char, char>, 18> kSoundexCodes = {{
    {'B', '1'},
    {'F', '1'},
    {'P', '1'},
    {'V', '1'},
    {'C', '2'},
    {'G', '2'},
    {'J', '2'},
    {'K', '2'},
    {'Q', '2'},
    {'S', '2'},
    {'X', '2'},
    {'Z', '2'},
    {'D', '3'},
    {'T', '3'},
    {'L', '4'},
    {'M', '5'},
    {'N', '5'},
    {'R', '6'},
}};

// The digit of a given name's first letter, A to Z.
constexpr std::string_view kFirstNameCodes = "06112223445556667778888999";

// Day of the month 1 to 31. Day 26 is the digit 2, as the issuer prints it.
constexpr std::string_view kDayLetters = "ABCDEFGHZSJKLMNWPQR0123452789TU";

// Month m owns the day codes from entry m - 1 up to, not including, entry m;
// December also owns the last value.
constexpr std::array<int, 13> kMonthBands = {1,   85,  158, 257, 333, 411, 520,
                                             602, 680, 756, 840, 916, 999};

char soundexDigit(char letter) {
    for (const auto& [key, digit] : kSoundexCodes) {
        if (key == letter) return digit;
    }
    return 0;
}

char upper(char c) {
    return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}

bool isLetter(char c) {
    return isAsciiUpper(static_cast<unsigned char>(upper(c)));
}

std::string upperCase(std::string_view text) {
    std::string out(text);
    for (char& c : out) c = upper(c);
    return out;
}

std::string twoDigits(int value) {
    char text[16];
    std::snprintf(text, sizeof text, "%02d", value);
    return text;
}

std::string threeDigits(int value) {
    char text[16];
    std::snprintf(text, sizeof text, "%03d", value);
    return text;
}

bool hasAt(std::string_view number, std::size_t at, std::string_view part) {
    return at <= number.size() && number.substr(at, part.size()) == part;
}

std::string without(std::string_view text, std::string_view drop) {
    std::string out;
    for (char c : text) {
        if (drop.find(c) == std::string_view::npos) out.push_back(c);
    }
    return out;
}

// Soundex at 0 to 3, the given name's digit at 4, the year at 7 and 8 and one
// of two day codes at 9 to 11.
bool commonCheck(std::string_view number, const Date& birth, std::string_view family,
                 std::string_view given, int c1, int c2) {
    if (number.size() < 12 || given.empty()) return false;
    const std::string code = soundex(family);
    const int nameDigit = firstNameCode(static_cast<unsigned char>(given.front()));
    if (code.size() != 4 || nameDigit < 0) return false;
    return hasAt(number, 0, code) && number[4] == static_cast<char>('0' + nameDigit) &&
           hasAt(number, 7, twoDigits(birth.year % 100)) &&
           (hasAt(number, 9, threeDigits(c1)) || hasAt(number, 9, threeDigits(c2)));
}

bool illinoisId(std::string_view number, const Date& birth, std::string_view family,
                std::string_view given) {
    if (number.size() != 12) return false;
    const std::string code = soundex(family);
    if (code.size() != 4) return false;
    int nameDigit = given == "NONE" ? 0 : -1;
    if (nameDigit < 0 && !given.empty()) {
        nameDigit = firstNameCode(static_cast<unsigned char>(given.front()));
    }
    if (nameDigit < 0) return false;
    const int c1 = 31 * birth.month + birth.day - 31;
    return hasAt(number, 0, code.substr(1)) && number[11] == code[0] &&
           number[3] == static_cast<char>('0' + nameDigit) &&
           hasAt(number, 6, twoDigits(birth.year % 100)) &&
           (hasAt(number, 8, threeDigits(c1)) || hasAt(number, 8, threeDigits(c1 + 600)));
}

}  // namespace

std::string soundex(std::string_view name) {
    if (name.empty()) return std::string();
    const std::string text = upperCase(name);
    std::string code(1, text.front());
    char previous = soundexDigit(text.front());
    for (std::size_t i = 1; i < text.size() && code.size() < 4; ++i) {
        const char c = text[i];
        if (!isLetter(c) || c == 'H' || c == 'W') continue;
        const char digit = soundexDigit(c);
        if (digit == 0) {
            previous = 0;  // a vowel lets the same digit follow again
            continue;
        }
        if (digit != previous) code.push_back(digit);
        previous = digit;
    }
    code.resize(4, '0');
    return code;
}

int firstNameCode(unsigned char letter) {
    const char c = upper(static_cast<char>(letter));
    if (!isAsciiUpper(static_cast<unsigned char>(c))) return -1;
    return kFirstNameCodes[static_cast<std::size_t>(c - 'A')] - '0';
}

char dayLetter(int day) {
    if (day < 1 || day > 31) return 0;
    return kDayLetters[static_cast<std::size_t>(day - 1)];
}

int monthOfBandValue(int value) {
    for (std::size_t m = 1; m < kMonthBands.size(); ++m) {
        if (value >= kMonthBands[m - 1] && value < kMonthBands[m]) return static_cast<int>(m);
    }
    return value == kMonthBands.back() ? 12 : 0;
}

bool matchesStateEncoding(std::string_view code, std::string_view number,
                          std::optional<Date> birthDate, std::string_view documentType,
                          std::string_view familyName, std::string_view givenName) {
    const Date birth = birthDate.value_or(Date{2000, 1, 1});
    const std::string id = upperCase(number);
    const std::string family = upperCase(familyName);
    const std::string given = upperCase(givenName);
    const int m = birth.month;
    const int d = birth.day;
    const int yy = birth.year % 100;

    if (code == "CT") {
        return hasAt(id, 0, twoDigits(birth.year % 2 != 0 ? m : m + 12));
    }
    if (code == "FL" || code == "WI") {
        // Wisconsin's number is Florida's with two more digits at the end.
        const std::string bare = without(id, "-");
        if (bare.size() != (code == "FL" ? 13U : 14U) || family.empty() || given.empty()) {
            return false;
        }
        return commonCheck(bare, birth, family, given, 40 * m + d - 40, 40 * m + d + 460);
    }
    if (code == "IL") {
        if (documentType == "ID") return illinoisId(id, birth, family, given);
        if (id.size() != 12 || family.empty() || given.empty()) return false;
        return commonCheck(id, birth, family, given, 31 * m + d - 31, 31 * m + d + 569);
    }
    if (code == "MD" || code == "MI") {
        const std::string bare = without(id, " -");
        if (bare.size() != 13 || family.empty() || given.empty()) return false;
        const std::string sound = soundex(family);
        const auto dayCode = readDigits(ParserStringRef(std::string_view(bare).substr(10, 3)));
        return hasAt(bare, 0, sound) && dayCode && monthOfBandValue(*dayCode) == m;
    }
    if (code == "ND") {
        if (id.size() != 9 || family.empty()) return false;
        std::string letters;
        for (char c : family) {
            if (letters.size() < 3 && isLetter(c)) letters.push_back(c);
        }
        letters.resize(3, 'X');
        return hasAt(id, 0, letters) && hasAt(id, 3, twoDigits(yy));
    }
    if (code == "NJ") {
        if (id.size() != 15 || family.empty()) return false;
        return id[0] == family[0] && hasAt(id, 10, twoDigits(m)) && hasAt(id, 12, twoDigits(yy));
    }
    if (code == "WA") {
        if (id.size() != 12 || family.empty()) return false;
        return hasAt(id, 0, std::string_view(family).substr(0, 5)) &&
               hasAt(id, 7, twoDigits((100 - yy) % 100)) && id[11] == dayLetter(d);
    }
    return false;
}

}  // namespace parser::dlid
