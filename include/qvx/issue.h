// ParserIssue: one type for fatal errors, field issues and warnings.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

// What went wrong. `Generic` is carried by every issue of every format except
// the Swiss payment QR bill, whose issues each have a code of their own.
enum class ParserIssueCode : std::int32_t {
    Generic = 2,
    MissingEndOfPaymentData = 1000,
    InvalidDate = 1001,
    StringTooShort = 1002,
    WrongStartingCharacters = 1003,
    InvalidSeparation = 1004,
    UnsupportedVersion = 1005,
    IncompleteCode = 1006,
    ElementEmpty = 1007,
    ElementLengthMismatch = 1008,
    ElementTooLong = 1009,
    ElementNotEmpty = 1010,
    ElementWrongCharset = 1011,
    TooManyAlternativeProcedures = 1012,
    ElementContainsSpaces = 1013,
};

// Keys of the structured details of an issue. Every value is a string.
enum class ParserIssueInfoKey : std::uint8_t {
    StartingCharacters = 0,
    Version = 1,
    MinimalVersion = 2,
    ElementName = 3,
    String = 4,
    Length = 5,
    Charset = 6,
};

namespace parser {

using ::ParserIssueCode;
using ::ParserIssueInfoKey;

// The enumerator name of a key ("StartingCharacters", ...); "" for an unknown value.
const char* issueInfoKeyName(ParserIssueInfoKey key) noexcept;

struct ParserIssue {
    using Info = std::unordered_map<ParserIssueInfoKey, std::string>;

    explicit ParserIssue(std::string message, ParserIssueCode code = ParserIssueCode::Generic,
                         Info additionalInfo = {})
        : message(std::move(message)), code(code), additionalInfo(std::move(additionalInfo)) {}

    std::string message;
    ParserIssueCode code;
    Info additionalInfo;

    // An issue with code Generic and no details.
    static std::shared_ptr<ParserIssue> generic(std::string message);

    // The Swiss payment QR issues, one per code, with their fixed wordings.
    static std::shared_ptr<ParserIssue> missingEndOfPaymentData();
    static std::shared_ptr<ParserIssue> invalidDate();
    static std::shared_ptr<ParserIssue> stringTooShort();
    static std::shared_ptr<ParserIssue> wrongStartingCharacters(const std::string& start);
    static std::shared_ptr<ParserIssue> invalidSeparation();
    static std::shared_ptr<ParserIssue> unsupportedVersion(const std::string& version,
                                                           int minimalVersion);
    static std::shared_ptr<ParserIssue> incompleteCode();
    static std::shared_ptr<ParserIssue> elementEmpty(const std::string& element);
    static std::shared_ptr<ParserIssue> elementLengthMismatch(const std::string& element,
                                                              const std::string& value, int length);
    static std::shared_ptr<ParserIssue> elementTooLong(const std::string& element,
                                                       const std::string& value, int length);
    static std::shared_ptr<ParserIssue> elementNotEmpty(const std::string& element);
    static std::shared_ptr<ParserIssue> elementWrongCharset(const std::string& element,
                                                            const std::string& value,
                                                            const std::string& charset);
    static std::shared_ptr<ParserIssue> tooManyAlternativeProcedures();
    static std::shared_ptr<ParserIssue> elementContainsSpaces(const std::string& element,
                                                              const std::string& value);
};

}  // namespace parser
