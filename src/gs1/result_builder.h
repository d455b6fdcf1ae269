// The bookkeeping of one GS1 parse: fields, the issue waiting for the next
// field, and whether a strict parse has already failed.
#pragma once

#include <array>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "qvx/issue.h"
#include "qvx/parsed.h"
#include "qvx/string_ref.h"

namespace parser {

class ResultBuilder {
  public:
    explicit ResultBuilder(bool strict) : strict(strict) {}

    // Strict: the text becomes the fatal error. Lax: it waits for the next field.
    void addIssue(const std::string& text);
    // Records a field whose data is unusable: its raw text doubles as its value.
    // With `nameTheAi`, a strict parse stops with " (AI: name)" behind the text,
    // while a lax one keeps the bare text on the field.
    void addFailedField(const std::string& name, std::string raw, const std::string& text,
                        bool nameTheAi);
    void addParsedField(std::string name, std::string raw, nlohmann::json value);
    // Moves what a decoder left behind (its message, a pending issue) to the warnings.
    void finishField();

    // The year two-digit years are placed around, read from the clock once per parse.
    int currentYear();
    // The next byte at or behind the start of `view` that is a group separator
    // (when `groupSeparator`) or a "(" (when `openParenthesis`), or the view's
    // end. Remembered, so that a walk over a long input does not search its
    // whole rest again for every AI.
    const char* nextTerminator(ParserStringRef view, bool groupSeparator, bool openParenthesis);
    const char* nextOpenParenthesis(ParserStringRef view) {
        return nextTerminator(view, false, true);
    }

    ParserResult result;
    std::shared_ptr<ParserIssue> pendingIssue;
    bool failed = false;
    bool strict;
    std::string message;

  private:
    std::optional<int> currentYear_;
    // The last search for each set of bytes: from where, up to which end, and
    // what it found.
    struct Search {
        const char* from = nullptr;
        const char* end = nullptr;
        const char* found = nullptr;
    };
    std::array<Search, 4> searches_{};
};

}  // namespace parser
