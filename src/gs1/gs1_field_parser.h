// The decoders of GS1 AI data. Each takes the AI's key, the builder, the view
// of the rest of the input (advanced past what it consumes) and the parser
// whose options it follows; it returns true to go on with the next AI.
// The table binds each row's further parameters with a small wrapper.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "qvx/string_ref.h"

class ParserRegex;

namespace parser {

class Gs1AiParser;
class ResultBuilder;

enum class Gs1Charset { numeric = 0, alphanumeric = 1, cset82 = 2, cset39 = 3 };

// The complaint about a byte outside `charset`, or nothing when every byte is allowed.
std::optional<std::string_view> charsetProblem(ParserStringRef view, Gs1Charset charset);

// Distance to the first terminator the parser's forms know (0x1D, "("), or the size.
std::size_t separatorDistance(ParserStringRef view, const Gs1AiParser& parser);

// Percent decoding. Bytes outside a non-empty `allowed` go to `rejected` instead.
std::string decodeUriComponent(ParserStringRef text, std::string_view allowed,
                               std::string& rejected);

// The GS1 mod-10 check digit of `digits` (those before the check digit).
char gs1CheckDigit(ParserStringRef digits);
// The complaint when the digit in the data differs from the computed one.
std::optional<std::string> checkDigitMismatch(char stated, char computed);

bool parseVariableText(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                       const Gs1AiParser& parser, std::size_t minimum, std::size_t maximum,
                       Gs1Charset charset, bool trim);
bool parseFixedText(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                    const Gs1AiParser& parser, std::size_t length, Gs1Charset charset);
// `fieldName` names the field where it is not the key itself (the prefix rows
// 390, 391 and 394 give "390x" and the like); messages still quote the key.
bool parseVariableInteger(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                          const Gs1AiParser& parser, std::size_t minimum, std::size_t maximum,
                          Gs1Charset charset, bool trim,
                          const std::string& fieldName = std::string());
bool parseFixedInteger(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                       const Gs1AiParser& parser, std::size_t length, Gs1Charset charset,
                       const std::string& fieldName = std::string());
bool parsePatternText(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                      const Gs1AiParser& parser, std::size_t minimum, std::size_t maximum,
                      const ParserRegex& pattern);
bool parseEncodedText(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                      const Gs1AiParser& parser, std::size_t maximum);

bool parseGtin(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
               const Gs1AiParser& parser);
bool parseSscc(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
               const Gs1AiParser& parser);
bool parseGsrn(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
               const Gs1AiParser& parser);
bool parseCheckedIdentifier(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                            const Gs1AiParser& parser, std::size_t length, Gs1Charset charset);

bool parseDate(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
               const Gs1AiParser& parser);
bool parseDateTime(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                   const Gs1AiParser& parser);

bool parseDecimal(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                  const Gs1AiParser& parser, std::size_t length);
bool parseVariableDecimal(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                          const Gs1AiParser& parser, std::size_t minimum, std::size_t maximum);
bool parseCurrencyAmount(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                         const Gs1AiParser& parser, std::size_t minimum, std::size_t maximum);

bool parseCountryPostalCode(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                            const Gs1AiParser& parser);
bool parseCountryList(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                      const Gs1AiParser& parser, std::size_t maximum);
bool parseBoolean(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                  const Gs1AiParser& parser);
bool parseTemperature(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                      const Gs1AiParser& parser);

// AIs 90-99; with the NHS extension, 91-93 are patient records.
bool parseInternal(const std::string& key, ResultBuilder& builder, ParserStringRef& view,
                   const Gs1AiParser& parser);

}  // namespace parser
