// Field readers of machine-readable zones. Each takes its characters off the
// front of a line view, adds its field to the result and reports what it
// finds wrong through the result's error, the last message winning.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

#include "qvx/parsed.h"
#include "qvx/string_ref.h"

namespace parser {

// True for the three characters of a code known to the zone, filler included
// ("D<<" for Germany).
bool isKnownCountry(ParserStringRef code);
// The known codes in the order the table lists them.
const std::string_view* knownCountriesBegin();
std::size_t knownCountryCount();

class MrtdFieldReader {
  public:
    explicit MrtdFieldReader(ParserResult& result) : result_(&result) {}

    static void skip(ParserStringRef& view, std::size_t count) { view.take_front(count); }
    // A field whose raw text and value are given, not read.
    void fixed(const char* name, const char* value);

    void documentCode(ParserStringRef& view);
    void country(ParserStringRef& view, const char* name);
    void text(ParserStringRef& view, const char* name, std::size_t width);
    void sex(ParserStringRef& view);
    void digits(ParserStringRef& view, const char* name, std::size_t width);
    void integer(ParserStringRef& view, const char* name, std::size_t width);
    void number(ParserStringRef& view, const char* name, std::size_t width);
    void choice(ParserStringRef& view, const char* name, std::size_t width,
                std::initializer_list<const char*> allowed);
    void omittedCount(ParserStringRef& view, const char* name);
    // Six characters YYMMDD, the year left as printed.
    void shortDate(ParserStringRef& view, const char* name);
    // The same after a test that all six are digits; on failure the view stays.
    void shortDateOfDigits(ParserStringRef& view, const char* name);
    // Eight characters YYYYMMDD.
    void longDate(ParserStringRef& view, const char* name);
    // The birth date of the Chinese permits: six digits from one line, the
    // century as a letter ("B" for 19, "C" for 20) from the next.
    void centuryDate(ParserStringRef sixDigits, unsigned char centuryLetter);
    void name(ParserStringRef& view, std::size_t width);
    void frenchLastName(ParserStringRef& view, std::size_t width);
    void frenchFirstNames(ParserStringRef& view, std::size_t width);
    void yearMonth(ParserStringRef& view, const char* name);
    // The Chinese name, four letters A-P per GBK code.
    void gbkName(ParserStringRef& view, std::size_t width);
    // Six characters in two halves of three; the second half must be digits.
    void swissDocumentNumber(ParserStringRef& view);

  protected:
    void fail(const std::string& message) { result_->setError(message); }
    ParserResult* result_;
};

// A document number may not fit its nine columns: a filler behind them says
// that it goes on in the optional data, where the next filler ends it.
class MrtdDocumentNumberReader : public MrtdFieldReader {
  public:
    using MrtdFieldReader::MrtdFieldReader;

    void read(ParserStringRef& view);
    // Formats without room for the rest of the number report a cut-off one.
    void truncationTest();
    void overflow(ParserStringRef& view, std::size_t width);
    std::size_t widthLeft() const { return widthLeft_; }

  private:
    const char* fieldName_ = "documentNumber";
    std::string pending_;
    std::size_t widthLeft_ = 0;
};

}  // namespace parser
