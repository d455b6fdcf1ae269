#include "gs1/gs1_ai_parser.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "common/options.h"
#include "common/text.h"
#include "gs1/gs1_ai_table.h"
#include "gs1/result_builder.h"

namespace parser {

namespace {

constexpr char kGroupSeparator = '\x1d';  // how FNC1 reaches us in the machine form
constexpr std::size_t kLongestAi = 4;
// "(" + at most four digits: a ")" further away does not close an AI.
constexpr std::size_t kFurthestClosingParenthesis = kLongestAi + 1;

// An unknown AI ends the walk: without its length nothing after it can be
// trusted. The field keeps the rest of the input, less as many bytes as the AI
// text has, for the caller to inspect; in parentheses that cut ignores the
// "(", which callers already expect ("(0)12" keeps "0)12").
bool notRecognised(ResultBuilder& builder, ParserStringRef view, ParserStringRef ai) {
    const std::string name = ai.str();
    builder.addFailedField(name, view.drop_front(ai.size()).str(),
                           "GS1 Application Identifier: \"" + name + "\" was not recognized",
                           false);
    return false;
}

}  // namespace

std::unique_ptr<ParserResult> Gs1AiParser::parse(ParserStringRef input) {
    ResultBuilder builder(strictMode);
    // Enough for most codes at once: a field seldom takes fewer than six bytes.
    constexpr std::size_t kMostFieldsReserved = 64;
    builder.result.fields.reserve(std::min(input.size() / 6 + 2, kMostFieldsReserved));
    auto finish = [&builder] { return std::make_unique<ParserResult>(std::move(builder.result)); };

    if (input.size() <= 1) {
        builder.addIssue("data string is too short");
        return finish();
    }
    // A symbology that starts with FNC1 may hand it over as a leading separator.
    input.consume_prefix(kGroupSeparator);

    while (!input.empty()) {
        if (!parseNextAi(builder, input)) return finish();
        builder.finishField();
    }
    if (!outputHumanReadableString) return finish();

    std::string text;
    for (const ParsedField& field : builder.result.fields) {
        // Derived fields such as "310x" have no AI of their own to print.
        if (!isInCharset(ParserStringRef(field.name), Charset::Numeric)) continue;
        text += '(';
        text += field.name;
        text += ')';
        text += field.rawString;
    }
    nlohmann::json value(text);
    builder.addParsedField("humanReadableString", std::move(text), std::move(value));
    return finish();
}

bool Gs1AiParser::parseNextAi(ResultBuilder& builder, ParserStringRef& view) {
    const Gs1AiEntry* entry = nullptr;
    ParserStringRef ai;

    if (allowMachineReadableCodes && !view.starts_with('(')) {
        // Bare AIs carry no delimiter: the shortest key that matches is the
        // AI, so its length comes from the table alone.
        for (std::size_t n = 1; n <= kLongestAi && entry == nullptr; ++n) {
            if (view.size() < n) {
                builder.addIssue("invalid AI");
                return false;
            }
            ai = view.first(n);
            entry = findGs1Ai(ai.view());
        }
        if (entry == nullptr) return notRecognised(builder, view, ai);
        view = view.drop_front(ai.size());
    } else {
        if (!allowHumanReadableCodes || !view.starts_with('(')) {
            return notRecognised(builder, view, ParserStringRef());
        }
        const char* close = view.find_char(')');
        if (close == nullptr || view.offsetOf(close) > kFurthestClosingParenthesis) {
            return notRecognised(builder, view, ParserStringRef());
        }
        const std::size_t closeAt = view.offsetOf(close);
        ai = view.slice(1, closeAt);
        entry = findGs1Ai(ai.view());
        if (entry == nullptr) return notRecognised(builder, view, ai);
        view = view.drop_front(closeAt + 1);
    }

    std::size_t available = view.size();
    if (allowHumanReadableCodes) available = view.offsetOf(builder.nextOpenParenthesis(view));

    if (available < entry->minimumLength) {
        const std::string name = ai.str();
        const std::string raw = humanOnly() ? view.first(available).str() : view.str();
        builder.addFailedField(name, raw,
                               "Data for GS1 Application Identifier: \"" + name + "\" requires " +
                                   std::to_string(entry->minimumLength) + " digits but " +
                                   std::to_string(available) + " digits were detected",
                               false);
        view = view.drop_front(available);
        // The next "(" is a safe place to resume; a bare AI after short data is not.
        return !builder.failed && !allowMachineReadableCodes;
    }

    const std::string key(entry->key());
    if (!entry->decode(key, builder, view, *this)) return false;
    // A separator after a fixed-length value is allowed, though not needed.
    view.consume_prefix(kGroupSeparator);
    if (humanOnly() && !view.empty() && !view.starts_with('(')) {
        // Without a "(" behind it the surplus stays where it is.
        const char* next = builder.nextOpenParenthesis(view);
        if (next != view.data() + view.size()) view = view.drop_front(view.offsetOf(next));
    }
    return true;
}

std::unique_ptr<ParserOptionsOutcome> Gs1AiParser::readOptionsFromJSON(nlohmann::json options) {
    return options::walk(options, [this](const std::string& key, const nlohmann::json& value) {
        if (key == "allowHumanReadableCodes") {
            return options::readBool(value, allowHumanReadableCodes, options::mustBeBoolean(key));
        }
        if (key == "allowMachineReadableCodes") {
            return options::readBool(value, allowMachineReadableCodes, options::mustBeBoolean(key));
        }
        if (key == "outputHumanReadableString") {
            return options::readBool(value, outputHumanReadableString, options::mustBeBoolean(key));
        }
        if (key == "standardExtension") {
            // The message names the option by another word; callers match on the text.
            if (!value.is_string() || value.get_ref<const std::string&>() != "nhs") {
                return std::string(R"(option 'organisation' must be "nhs")");
            }
            standardExtension = Gs1AiStandardExtension::nhs;
            return std::string();
        }
        if (key == "strictMode") {
            return options::readBool(value, strictMode, options::mustBeBoolean(key));
        }
        return options::invalidOption(key);
    });
}

nlohmann::json Gs1AiParser::optionsToJSON() const {
    return nlohmann::json{
        {"allow_human_readable_codes", allowHumanReadableCodes},
        {"allow_machine_readable_codes", allowMachineReadableCodes},
        {"output_human_readable_string", outputHumanReadableString},
        {"standard_extension",
         standardExtension == Gs1AiStandardExtension::nhs ? "nhs" : "unknown"},
        {"strict_mode", strictMode},
    };
}

}  // namespace parser
