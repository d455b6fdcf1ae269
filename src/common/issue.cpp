#include "qvx/issue.h"

namespace parser {

namespace {
using Key = ParserIssueInfoKey;
using Code = ParserIssueCode;

std::shared_ptr<ParserIssue> make(std::string message, Code code, ParserIssue::Info info = {}) {
    return std::make_shared<ParserIssue>(std::move(message), code, std::move(info));
}
}  // namespace

const char* issueInfoKeyName(ParserIssueInfoKey key) noexcept {
    switch (key) {
        case Key::StartingCharacters:
            return "StartingCharacters";
        case Key::Version:
            return "Version";
        case Key::MinimalVersion:
            return "MinimalVersion";
        case Key::ElementName:
            return "ElementName";
        case Key::String:
            return "String";
        case Key::Length:
            return "Length";
        case Key::Charset:
            return "Charset";
    }
    return "";
}

std::shared_ptr<ParserIssue> ParserIssue::generic(std::string message) {
    return make(std::move(message), Code::Generic);
}

std::shared_ptr<ParserIssue> ParserIssue::missingEndOfPaymentData() {
    return make("code does not contain mandatory \"EPD\" string", Code::MissingEndOfPaymentData);
}

std::shared_ptr<ParserIssue> ParserIssue::invalidDate() {
    return make("invalid date", Code::InvalidDate);
}

std::shared_ptr<ParserIssue> ParserIssue::stringTooShort() {
    return make("string too short", Code::StringTooShort);
}

std::shared_ptr<ParserIssue> ParserIssue::wrongStartingCharacters(const std::string& start) {
    return make("Code should start with 'SPC' but starts with '" + start + "' string.",
                Code::WrongStartingCharacters, {{Key::StartingCharacters, start}});
}

std::shared_ptr<ParserIssue> ParserIssue::invalidSeparation() {
    return make("invalid separation between elements", Code::InvalidSeparation);
}

std::shared_ptr<ParserIssue> ParserIssue::unsupportedVersion(const std::string& version,
                                                             int minimalVersion) {
    return make("Version " + version + " is not supported.", Code::UnsupportedVersion,
                {{Key::Version, version}, {Key::MinimalVersion, std::to_string(minimalVersion)}});
}

std::shared_ptr<ParserIssue> ParserIssue::incompleteCode() {
    return make("incomplete code (elements missing)", Code::IncompleteCode);
}

std::shared_ptr<ParserIssue> ParserIssue::elementEmpty(const std::string& element) {
    return make("element content is empty even though it should not: " + element,
                Code::ElementEmpty, {{Key::ElementName, element}});
}

std::shared_ptr<ParserIssue> ParserIssue::elementLengthMismatch(const std::string& element,
                                                                const std::string& value,
                                                                int length) {
    const std::string n = std::to_string(length);
    return make(element + " field which is: '" + value + "' should be of length " + n + ".",
                Code::ElementLengthMismatch,
                {{Key::ElementName, element}, {Key::String, value}, {Key::Length, n}});
}

std::shared_ptr<ParserIssue> ParserIssue::elementTooLong(const std::string& element,
                                                         const std::string& value, int length) {
    const std::string n = std::to_string(length);
    return make(element + " field which is: '" + value + "' should be of length less or equal to " +
                    n + ".",
                Code::ElementTooLong,
                {{Key::ElementName, element}, {Key::String, value}, {Key::Length, n}});
}

std::shared_ptr<ParserIssue> ParserIssue::elementNotEmpty(const std::string& element) {
    return make(element + " is not empty but should be.", Code::ElementNotEmpty,
                {{Key::ElementName, element}});
}

std::shared_ptr<ParserIssue> ParserIssue::elementWrongCharset(const std::string& element,
                                                              const std::string& value,
                                                              const std::string& charset) {
    return make(element + " field which is: '" + value + "' should contain only " + charset +
                    " characters.",
                Code::ElementWrongCharset,
                {{Key::ElementName, element}, {Key::String, value}, {Key::Charset, charset}});
}

std::shared_ptr<ParserIssue> ParserIssue::tooManyAlternativeProcedures() {
    return make("code contains more than two AltPmt fields", Code::TooManyAlternativeProcedures);
}

std::shared_ptr<ParserIssue> ParserIssue::elementContainsSpaces(const std::string& element,
                                                                const std::string& value) {
    return make(element + " should not contain spaces", Code::ElementContainsSpaces,
                {{Key::ElementName, element}, {Key::String, value}});
}

}  // namespace parser
