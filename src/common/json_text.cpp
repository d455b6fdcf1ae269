#include "qvx/json_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "qvx/parsed.h"

namespace parser {

namespace {

using json = nlohmann::json;

// Writes into the end of a string through a plain pointer. The string grows
// ahead of the writing (in doublings, so that the cost stays linear) and is
// cut to what was written when the sink goes.
class Sink {
  public:
    explicit Sink(std::string& text) : text_(text), start_(text.size()), used_(text.size()) {}
    ~Sink() { text_.resize(used_); }
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;

    // Where the next `n` bytes go; they count once `commit` is told their end.
    char* claim(std::size_t n) {
        if (text_.size() - used_ < n) grow(n);
        return text_.data() + used_;
    }
    void commit(const char* end) { used_ = static_cast<std::size_t>(end - text_.data()); }

    void append(const char* bytes, std::size_t n) {
        std::memcpy(claim(n), bytes, n);
        used_ += n;
    }
    void push_back(char byte) {
        *claim(1) = byte;
        ++used_;
    }

  private:
    // The room made grows with what this sink has written, so that the bytes
    // cleared ahead of the writing stay in proportion to the bytes written,
    // however long the string was before.
    void grow(std::size_t n) {
        const std::size_t want = used_ + std::max(n, used_ - start_ + 256);
        text_.resize(want);
    }

    std::string& text_;
    const std::size_t start_;
    std::size_t used_;
};

// Literals go over with their length known at compile time.
template <std::size_t N>
void put(Sink& out, const char (&literal)[N]) {
    out.append(literal, N - 1);
}

void appendIndent(Sink& out, int width) {
    static constexpr char kSpaces[] =
        "                                                                ";
    auto left = static_cast<std::size_t>(width);
    while (left > 0) {
        const std::size_t chunk = std::min(left, sizeof kSpaces - 1);
        out.append(kSpaces, chunk);
        left -= chunk;
    }
}

// Writes the escape of a quote, a backslash or a control character.
char* writeEscape(char* p, unsigned char byte) {
    static constexpr char kHex[] = "0123456789abcdef";
    *p++ = '\\';
    switch (byte) {
        case '"':
        case '\\':
            *p++ = static_cast<char>(byte);
            return p;
        case '\b':
            *p++ = 'b';
            return p;
        case '\t':
            *p++ = 't';
            return p;
        case '\n':
            *p++ = 'n';
            return p;
        case '\f':
            *p++ = 'f';
            return p;
        case '\r':
            *p++ = 'r';
            return p;
        default:
            *p++ = 'u';
            *p++ = '0';
            *p++ = '0';
            *p++ = kHex[byte >> 4];
            *p++ = kHex[byte & 0x0F];
            return p;
    }
}

constexpr bool isPlain(unsigned char byte) {
    return byte >= 0x20 && byte < 0x80 && byte != '"' && byte != '\\';
}

// Bytes a well-formed sequence with this lead byte has in all, with the range
// its second byte must fall in (overlong forms, surrogates and code points
// above U+10FFFF are not well formed). Zero for a byte that cannot lead.
struct Utf8Lead {
    int length;
    unsigned char low;
    unsigned char high;
};

Utf8Lead utf8Lead(unsigned char lead) {
    if (lead >= 0xC2 && lead <= 0xDF) return {2, 0x80, 0xBF};
    if (lead == 0xE0) return {3, 0xA0, 0xBF};
    if (lead == 0xED) return {3, 0x80, 0x9F};
    if (lead >= 0xE1 && lead <= 0xEF) return {3, 0x80, 0xBF};
    if (lead == 0xF0) return {4, 0x90, 0xBF};
    if (lead >= 0xF1 && lead <= 0xF3) return {4, 0x80, 0xBF};
    if (lead == 0xF4) return {4, 0x80, 0x8F};
    return {0, 0, 0};
}

void writeString(Sink& out, std::string_view text);
void writeValue(Sink& out, const nlohmann::json& value, int indentStep, int currentIndent);

template <class Fields, class Deref>
void writeFields(Sink& out, const Fields& fields, Deref deref, int indentStep, int currentIndent) {
    if (fields.empty()) {
        put(out, "[]");
        return;
    }
    // Room for the usual case: names, raw texts, values of similar size, keys
    // and indentation; one growth at most where values are long.
    std::size_t expected = 0;
    for (const auto& item : fields) {
        const ParsedField& field = deref(item);
        expected += 2 * field.rawString.size() + field.name.size() + 96;
    }
    out.claim(expected);

    const bool pretty = indentStep >= 0;
    const int objectIndent = currentIndent + indentStep;
    const int memberIndent = objectIndent + indentStep;
    // `key` is the member's name in quotes with its colon and blank.
    auto openMember = [&](std::string_view key) {
        if (pretty) {
            appendIndent(out, memberIndent);
            out.append(key.data(), key.size());
        } else {
            out.append(key.data(), key.size() - 1);
        }
    };
    auto closeMember = [&] { pretty ? put(out, ",\n") : put(out, ","); };

    pretty ? put(out, "[\n") : put(out, "[");
    bool first = true;
    for (const auto& item : fields) {
        const ParsedField& field = deref(item);
        if (!first) pretty ? put(out, ",\n") : put(out, ",");
        first = false;
        if (pretty) appendIndent(out, objectIndent);
        pretty ? put(out, "{\n") : put(out, "{");
        if (!field.issues.empty()) {
            openMember(R"("issues": )");
            pretty ? put(out, "[\n") : put(out, "[");
            bool firstIssue = true;
            for (const auto& issue : field.issues) {
                if (!firstIssue) pretty ? put(out, ",\n") : put(out, ",");
                firstIssue = false;
                if (pretty) appendIndent(out, memberIndent + indentStep);
                writeString(out, issue->message);
            }
            if (pretty) {
                out.push_back('\n');
                appendIndent(out, memberIndent);
            }
            out.push_back(']');
            closeMember();
        }
        openMember(R"("name": )");
        writeString(out, field.name);
        closeMember();
        openMember(R"("parsed": )");
        writeValue(out, field.parsed, indentStep, memberIndent);
        closeMember();
        openMember(R"("rawString": )");
        writeString(out, field.rawString);
        if (pretty) {
            out.push_back('\n');
            appendIndent(out, objectIndent);
        }
        out.push_back('}');
    }
    if (pretty) {
        out.push_back('\n');
        appendIndent(out, currentIndent);
    }
    out.push_back(']');
}

void writeString(Sink& out, std::string_view text) {
    // Room for the worst case (every byte a six-byte escape) first, so that
    // the loop writes through a plain pointer; the rest is cut off after.
    char* p = out.claim(2 + 6 * text.size());
    const char* const bytes = text.data();
    const std::size_t size = text.size();
    *p++ = '"';
    std::size_t i = 0;
    while (i < size) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if (isPlain(byte)) {
            *p++ = static_cast<char>(byte);
            ++i;
            continue;
        }
        if (byte < 0x80) {
            p = writeEscape(p, byte);
            ++i;
            continue;
        }
        // A sequence that breaks off is dropped up to the byte that broke it,
        // which is then read afresh: it may well begin a sequence of its own.
        const Utf8Lead lead = utf8Lead(byte);
        if (lead.length == 0) {
            ++i;
            continue;
        }
        std::size_t end = i + 1;
        bool wellFormed = true;
        for (int k = 1; k < lead.length; ++k, ++end) {
            if (end >= size) {
                wellFormed = false;
                break;
            }
            const auto next = static_cast<unsigned char>(bytes[end]);
            const unsigned char low = k == 1 ? lead.low : 0x80;
            const unsigned char high = k == 1 ? lead.high : 0xBF;
            if (next < low || next > high) {
                wellFormed = false;
                break;
            }
        }
        if (wellFormed) {
            for (std::size_t k = i; k < end; ++k) *p++ = bytes[k];
        }
        i = end;
    }
    *p++ = '"';
    out.commit(p);
}

void writeValue(Sink& out, const nlohmann::json& value, int indentStep, int currentIndent) {
    const bool pretty = indentStep >= 0;
    switch (value.type()) {
        case json::value_t::null:
            put(out, "null");
            return;
        case json::value_t::boolean:
            value.get<bool>() ? put(out, "true") : put(out, "false");
            return;
        case json::value_t::number_integer:
        case json::value_t::number_unsigned: {
            char buffer[24];
            auto written =
                value.is_number_unsigned()
                    ? std::to_chars(buffer, buffer + sizeof buffer, value.get<std::uint64_t>())
                    : std::to_chars(buffer, buffer + sizeof buffer, value.get<std::int64_t>());
            out.append(buffer, static_cast<std::size_t>(written.ptr - buffer));
            return;
        }
        case json::value_t::number_float: {
            const double number = value.get<double>();
            if (!std::isfinite(number)) {
                put(out, "null");
                return;
            }
            // The shortest text that reads back as the same double, as the
            // library's own dump writes it.
            char buffer[64];
            char* end = nlohmann::detail::to_chars(buffer, buffer + sizeof buffer, number);
            out.append(buffer, static_cast<std::size_t>(end - buffer));
            return;
        }
        case json::value_t::string:
            writeString(out, value.get_ref<const std::string&>());
            return;
        case json::value_t::array: {
            const auto& items = value.get_ref<const json::array_t&>();
            if (items.empty()) {
                put(out, "[]");
                return;
            }
            pretty ? put(out, "[\n") : put(out, "[");
            bool first = true;
            for (const auto& item : items) {
                if (!first) pretty ? put(out, ",\n") : put(out, ",");
                first = false;
                if (pretty) appendIndent(out, currentIndent + indentStep);
                writeValue(out, item, indentStep, currentIndent + indentStep);
            }
            if (pretty) {
                out.push_back('\n');
                appendIndent(out, currentIndent);
            }
            out.push_back(']');
            return;
        }
        case json::value_t::object: {
            const auto& members = value.get_ref<const json::object_t&>();
            if (members.empty()) {
                put(out, "{}");
                return;
            }
            pretty ? put(out, "{\n") : put(out, "{");
            bool first = true;
            for (const auto& [key, member] : members) {
                if (!first) pretty ? put(out, ",\n") : put(out, ",");
                first = false;
                if (pretty) appendIndent(out, currentIndent + indentStep);
                writeString(out, key);
                pretty ? put(out, ": ") : put(out, ":");
                writeValue(out, member, indentStep, currentIndent + indentStep);
            }
            if (pretty) {
                out.push_back('\n');
                appendIndent(out, currentIndent);
            }
            out.push_back('}');
            return;
        }
        case json::value_t::binary:
        case json::value_t::discarded: {
            // No parser makes these; the library's own printer knows their forms.
            const std::string text =
                value.dump(indentStep, ' ', false, json::error_handler_t::ignore);
            out.append(text.data(), text.size());
            return;
        }
    }
}

}  // namespace

void appendJsonString(std::string& out, std::string_view text) {
    Sink sink(out);
    writeString(sink, text);
}

void appendJsonText(std::string& out, const nlohmann::json& value, int indentStep,
                    int currentIndent) {
    Sink sink(out);
    writeValue(sink, value, indentStep, currentIndent);
}

void appendFieldsJsonText(std::string& out, const std::vector<ParsedField>& fields, int indentStep,
                          int currentIndent) {
    Sink sink(out);
    writeFields(
        sink, fields, [](const ParsedField& field) -> const ParsedField& { return field; },
        indentStep, currentIndent);
}

void appendFieldsJsonText(std::string& out, const std::vector<std::shared_ptr<ParsedField>>& fields,
                          int indentStep, int currentIndent) {
    Sink sink(out);
    writeFields(
        sink, fields,
        [](const std::shared_ptr<ParsedField>& field) -> const ParsedField& { return *field; },
        indentStep, currentIndent);
}

}  // namespace parser
