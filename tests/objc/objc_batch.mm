// Answers `qvx-parse --batch` input lines through the Objective-C classes, one
// output line per input line, so that the agreement check can hold them
// against the batch answers. Everything an answer holds is read back from the
// host objects: NSError domains and user info, field properties, the parsed
// value as Foundation objects. QVXParsedData has no warnings, so answers carry
// none. Lines naming a format the host cannot name answer {"skipped": true}.
// GCC's Objective-C++ has no fast enumeration, hence the index loops.
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>

#include "host/objc/QVXParser.h"

namespace {

using nlohmann::json;

std::string str(NSString* text) {
    const char* utf8 = [text UTF8String];
    return utf8 == nullptr ? std::string() : std::string(utf8);
}

NSString* ns(const std::string& text) {
    return [[[NSString alloc] initWithBytes:text.data()
                                     length:text.size()
                                   encoding:NSUTF8StringEncoding] autorelease];
}

bool hostFormat(const std::string& name, QVXParserDataFormat* format) {
    static const std::pair<const char*, QVXParserDataFormat> kFormats[] = {
        {"gs1ai", QVXParserDataFormatGs1Ai},
        {"hibc", QVXParserDataFormatHibc},
        {"swissqr", QVXParserDataFormatSwissQr},
        {"vin", QVXParserDataFormatVin},
        {"iata_bcbp", QVXParserDataFormatIataBcbp},
        {"gs1_digital_link", QVXParserDataFormatGs1DigitalLink},
    };
    for (const auto& [text, value] : kFormats) {
        if (name == text) {
            *format = value;
            return true;
        }
    }
    return false;
}

// Foundation objects as read from JSON back to a JSON value.
json toJson(id value) {
    if (value == nil || [value isKindOfClass:[NSNull class]]) return nullptr;
    if ([value isKindOfClass:[NSString class]]) return str(value);
    if ([value isKindOfClass:[NSNumber class]]) {
        const char* type = [value objCType];
        if (std::string(type) == @encode(BOOL)) return static_cast<bool>([value boolValue]);
        if (std::string(type) == @encode(double) || std::string(type) == @encode(float))
            return [value doubleValue];
        return static_cast<std::int64_t>([value longLongValue]);
    }
    if ([value isKindOfClass:[NSArray class]]) {
        json items = json::array();
        for (NSUInteger i = 0; i < [value count]; ++i)
            items.push_back(toJson([value objectAtIndex:i]));
        return items;
    }
    if ([value isKindOfClass:[NSDictionary class]]) {
        json members = json::object();
        NSArray* keys = [value allKeys];
        for (NSUInteger i = 0; i < [keys count]; ++i) {
            id key = [keys objectAtIndex:i];
            members[str(key)] = toJson([value objectForKey:key]);
        }
        return members;
    }
    return "(unexpected " + str(NSStringFromClass([value class])) + ")";
}

// "QVXParserIssueElementNameErrorKey" → "ElementName", as qvx-parse names it.
std::string infoName(NSString* key) {
    const std::string text = str(key);
    const std::string head = "QVXParserIssue";
    const std::string tail = "ErrorKey";
    if (text.size() > head.size() + tail.size() && text.rfind(head, 0) == 0 &&
        text.compare(text.size() - tail.size(), tail.size(), tail) == 0)
        return text.substr(head.size(), text.size() - head.size() - tail.size());
    return text;
}

json answer(const json& line) {
    QVXParserDataFormat format = QVXParserDataFormatGs1Ai;
    if (!hostFormat(line.value("format", ""), &format)) return {{"skipped", true}};

    NSError* error = nil;
    QVXParser* parser = [QVXParser parserForContext:[QVXTrovaneContext context]
                                             format:format
                                              error:&error];
    if (parser == nil) return {{"ok", false}, {"parserError", str([error localizedDescription])}};

    if (line.contains("options") || line.contains("optionsText")) {
        const std::string text = line.contains("optionsText")
                                     ? line["optionsText"].get<std::string>()
                                     : line["options"].dump();
        NSData* data = [ns(text) dataUsingEncoding:NSUTF8StringEncoding];
        id options = [NSJSONSerialization JSONObjectWithData:data options:0 error:nullptr];
        // The host hands options as a dictionary; texts that are none are not its case.
        if (![options isKindOfClass:[NSDictionary class]]) return {{"skipped", true}};
        // Nor are values a dictionary cannot carry: Foundation numbers keep
        // 100.0 apart from 100.
        NSData* back = [NSJSONSerialization dataWithJSONObject:options options:0 error:nullptr];
        const std::string backText(static_cast<const char*>([back bytes]), [back length]);
        if (json::parse(backText, nullptr, false).dump() !=
            json::parse(text, nullptr, false).dump())
            return {{"skipped", true}};
        if (![parser setOptions:options error:&error]) {
            if (![[error domain] isEqual:QVXParserErrorDomain] || [error code] != 0)
                return {{"ok", false}, {"unexpectedError", str([error domain])}};
            return {{"ok", false}, {"optionsError", str([error localizedDescription])}};
        }
    }

    NSData* bytes = [[[NSData alloc] initWithBase64EncodedString:ns(line.value("dataBase64", ""))
                                                         options:0] autorelease];
    if (bytes == nil) return {{"ok", false}, {"inputError", "dataBase64 is not base64"}};
    QVXParsedData* data = [parser parseRawData:bytes error:&error];
    if (data == nil) {
        if (![[error domain] isEqual:QVXParserIssueErrorDomain])
            return {{"ok", false}, {"unexpectedError", str([error domain])}};
        json info = json::object();
        NSDictionary* userInfo = [error userInfo];
        NSArray* keys = [userInfo allKeys];
        for (NSUInteger i = 0; i < [keys count]; ++i) {
            NSString* key = [keys objectAtIndex:i];
            if ([key isEqual:NSLocalizedDescriptionKey]) continue;
            info[infoName(key)] = str([userInfo objectForKey:key]);
        }
        return {{"ok", false},
                {"error",
                 {{"additionalInfo", info},
                  {"code", static_cast<std::int64_t>([error code])},
                  {"message", str([error localizedDescription])}}}};
    }

    json fields = json::array();
    NSArray* all = [data fields];
    for (NSUInteger i = 0; i < [all count]; ++i) {
        QVXParsedField* field = [all objectAtIndex:i];
        json entry = {{"name", str([field name])},
                      {"parsed", toJson([field parsed])},
                      {"rawString", str([field rawString])}};
        if ([[field issues] count] > 0) {
            json issues = json::array();
            NSArray* texts = [field issues];
            for (NSUInteger k = 0; k < [texts count]; ++k)
                issues.push_back(str([texts objectAtIndex:k]));
            entry["issues"] = issues;
        }
        fields.push_back(entry);
    }
    return {{"fields", fields}, {"ok", true}};
}

}  // namespace

int main() {
    std::string text;
    while (std::getline(std::cin, text)) {
        if (text.empty()) continue;
        NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
        const json line = json::parse(text, nullptr, false);
        const json out = line.is_object() ? answer(line) : json{{"skipped", true}};
        std::cout << out.dump(-1, ' ', false, json::error_handler_t::replace) << '\n';
        [pool release];
    }
    return 0;
}
