// Fixed-width records read as a table of items. Each row names its reader,
// the field it yields, its width in bytes and a fixed argument of the reader;
// the state of one run (options, what a look-ahead found) travels beside the
// table as a context. Boarding passes and uniformed-services ID cards share
// this runner.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>

#include "qvx/parsed.h"
#include "qvx/string_ref.h"

namespace parser {

// Where the items of a section go: the result's field list, or the members
// of one JSON object, which keeps only names and values (a later name
// replaces an earlier one). Errors and warnings always go to the result.
class FieldTarget {
  public:
    explicit FieldTarget(ParserResult& result, nlohmann::json::object_t* members = nullptr)
        : result_(result), members_(members) {}

    // Adds a field; returns it when it went to the result's list, else null.
    ParsedField* add(const char* name, ParserStringRef raw, nlohmann::json value,
                     const std::string& issueText = std::string());
    // The same with raw bytes the caller already holds as a string.
    ParsedField* add(const char* name, std::string&& raw, nlohmann::json value,
                     const std::string& issueText = std::string());
    // The fatal error of the run; always returns false, for `return fail(...)`.
    bool fail(const std::string& message);

  private:
    ParserResult& result_;
    nlohmann::json::object_t* members_;
};

// One row of a table. `Context` is what the readers learn of the run,
// `Argument` whatever fixed value the row hands its reader.
template <class Context, class Argument>
struct FixedWidthItem {
    // Reads the item from the front of `text`, which it advances. `width` is
    // the row's width, or what is left of the text when that is less and the
    // run allows it. Returns false once it has set the error.
    using Reader = bool (*)(const FixedWidthItem& item, ParserStringRef& text, std::size_t width,
                            const Context& context, FieldTarget& target);

    Reader read = nullptr;
    const char* name = "";
    std::size_t width = 0;
    Argument argument{};
};

// A text shorter than `width` is fatal ("code string is too small") with
// `requireFullWidth`, otherwise `width` shrinks to what is left. Returns false
// when the error was set.
bool fitFixedWidth(std::size_t& width, std::size_t available, bool requireFullWidth,
                   FieldTarget& target);

// Runs the rows of `items` in order over `text`; the first error stops the
// run. Returns false when an error was set.
template <class Items, class Context>
bool runFixedWidthSection(const Items& items, ParserStringRef& text, bool requireFullWidth,
                          const Context& context, FieldTarget& target) {
    for (const auto& item : items) {
        std::size_t width = item.width;
        if (!fitFixedWidth(width, text.size(), requireFullWidth, target)) return false;
        if (!item.read(item, text, width, context, target)) return false;
    }
    return true;
}

}  // namespace parser
