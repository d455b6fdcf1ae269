#include "dlid/dlid_format.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/date.h"
#include "common/text.h"
#include "dlid/dlid_issuers.h"

namespace parser {

namespace {

// A terminator this far before or after where a subfile's length says it
// ends still counts: lengths are often wrong by a byte or two.
constexpr std::int64_t kLengthTolerance = 3;

enum class DesignatorOutcome : std::uint8_t { Read, ListEnded, Failed };

DesignatorOutcome readDesignator(ParserStringRef& rest, std::size_t lengthDigits,
                                 const std::string& documentType,
                                 std::vector<DLIDSubfile>& subfiles, std::string& message) {
    if (rest.starts_with('\n') || rest.starts_with(' ') || rest.starts_with('\r')) {
        rest = rest.drop_front(1);
    }
    if (rest.size() < lengthDigits + 6) {
        message = "subfile too short";
        return DesignatorOutcome::Failed;
    }
    const std::string type = rest.take_front(2).str();
    std::size_t digits = lengthDigits;
    if (!isInCharset(rest.first(lengthDigits + 4), Charset::Numeric)) {
        std::size_t run = 0;
        while (run < rest.size() && isAsciiDigit(rest[run])) ++run;
        // The directory announced more entries than it holds: this is where
        // the first subfile begins.
        if (type == documentType) return DesignatorOutcome::ListEnded;
        if (run >= 5 && run < lengthDigits + 5) {
            digits = run - 4;
        } else {
            message =
                "could not parse subfile designator offset and/or length must be numeric: \"" +
                type + "\", subfile content: \"" + rest.first(lengthDigits + 4).str() + "\"";
            return DesignatorOutcome::Failed;
        }
    }
    // Both parts are digits by now.
    const int offset = readDigits(rest.take_front(4)).value_or(0);
    const int size = readDigits(rest.take_front(digits)).value_or(0);
    if (size == 0) {
        message = "size is zero for subfile type:" + type;
        return DesignatorOutcome::Failed;
    }
    subfiles.push_back({type, static_cast<std::size_t>(offset), static_cast<std::size_t>(size)});
    return DesignatorOutcome::Read;
}

bool isTerminatorAt(ParserStringRef code, std::int64_t index, int terminator) {
    return index >= 0 && index < static_cast<std::int64_t>(code.size()) &&
           code[static_cast<std::size_t>(index)] == terminator;
}

// Subfiles follow one another from the end of the directory; each length may
// be off by up to three bytes, and the error carries over to the next.
bool repairByTolerance(ParserStringRef code, std::size_t designatorsEnd, int terminator,
                       std::vector<DLIDSubfile>& subfiles) {
    static constexpr std::int64_t kSearch[] = {0, 1, -1, 2, -2, 3, -3};
    static_assert(sizeof(kSearch) / sizeof(kSearch[0]) == 2 * kLengthTolerance + 1);
    const auto length = static_cast<std::int64_t>(code.size());
    std::vector<DLIDSubfile> repaired = subfiles;
    std::int64_t start = static_cast<std::int64_t>(designatorsEnd);
    std::int64_t carry = 0;
    for (std::size_t k = 0; k < repaired.size(); ++k) {
        std::int64_t size = static_cast<std::int64_t>(repaired[k].size) - carry;
        const std::int64_t end = start + size;
        std::int64_t delta = 0;
        bool hit = false;
        for (const std::int64_t candidate : kSearch) {
            if (isTerminatorAt(code, end - 1 + candidate, terminator)) {
                delta = candidate;
                hit = true;
                break;
            }
        }
        const bool good = hit && end - 1 >= 0 && end - 1 < length;
        if (!good) {
            if (k + 1 != repaired.size()) return false;
            // The last subfile runs to the end of the code.
            delta = length - end;
        }
        size += delta;
        if (size < 0 || start < 0) return false;
        repaired[k].offset = static_cast<std::size_t>(start);
        repaired[k].size = static_cast<std::size_t>(size);
        carry = delta;
        start += size;
    }
    subfiles = std::move(repaired);
    return true;
}

// Lengths and offsets both wrong: the subfiles end where terminators stand.
void repairByScanning(ParserStringRef code, std::size_t designatorsEnd, int terminator,
                      std::size_t entries, std::vector<DLIDSubfile>& subfiles) {
    const std::size_t length = code.size();
    const bool endsWithLineAndTerminator =
        length >= 2 && code[length - 2] == '\n' && code[length - 1] == terminator;
    std::vector<std::size_t> ends;
    for (std::size_t i = std::max<std::size_t>(designatorsEnd, 1); i < length; ++i) {
        if (code[i - 1] == '\n' && code[i] == terminator) ends.push_back(i);
    }
    if (ends.size() + 1 == entries && endsWithLineAndTerminator) ends.clear();
    if (ends.size() + 1 == entries && length > 0) ends.push_back(length - 1);
    if (ends.size() != entries) {
        ends.clear();
        for (std::size_t i = designatorsEnd; i < length; ++i) {
            if (code[i] == terminator) ends.push_back(i);
        }
        if (ends.size() + 1 == entries && length > 0 && code[length - 1] == terminator) {
            ends.clear();
        }
        if (ends.size() + 1 == entries && length > 0) ends.push_back(length - 1);
        if (ends.size() != entries) return;
    }
    std::size_t start = designatorsEnd;
    for (std::size_t k = 0; k < ends.size() && k < subfiles.size(); ++k) {
        subfiles[k].offset = start;
        subfiles[k].size = ends[k] + 1 - start;
        start = ends[k] + 1;
    }
}

}  // namespace

std::unique_ptr<DLIDFormat> DLIDFormat::choose(DLIDParserState& state) {
    const std::string& iin = state.iin;
    const int version = state.aamvaVersion;
    if (dlid::isSouthCarolina(iin) && version == 5) {
        return std::make_unique<DLIDSouthCarolinaVersion5Format>(state);
    }
    if (dlid::isAlbertaVersion3(iin, version)) {
        return std::make_unique<DLIDAlbertaVersion3Format>(state);
    }
    if (dlid::isColorado(iin) && version == 10) {
        return std::make_unique<DLIDColoradoVersion10Format>(state);
    }
    if (dlid::isPennsylvania(iin) && version == 9) {
        return std::make_unique<DLIDPennsylvaniaVersion9Format>(state);
    }
    return std::make_unique<DLIDStandardFormat>(state);
}

bool DLIDFormat::readDirectory(ParserStringRef code, std::size_t headerSize,
                               std::size_t designatorSize, std::size_t lengthDigits,
                               ParserResult& result) {
    DLIDParserState& s = state();
    const auto entries = static_cast<std::size_t>(s.numberOfEntries);
    ParserStringRef rest = code.drop_front(std::min(headerSize, code.size()));
    if (rest.size() < 2 || rest.size() / designatorSize < entries) {
        result.setError("could not parse subfile designators: string too short");
        return false;
    }
    if (rest.starts_with("DL") || rest.starts_with("EN")) {
        s.documentType = "DL";
    } else if (rest.starts_with("ID")) {
        s.documentType = "ID";
    }
    for (std::size_t k = 0; k < entries; ++k) {
        std::string message;
        const DesignatorOutcome outcome =
            readDesignator(rest, lengthDigits, s.documentType, s.subfiles, message);
        if (outcome == DesignatorOutcome::Failed) {
            result.setError(message);
            return false;
        }
        if (outcome == DesignatorOutcome::ListEnded) break;
    }
    const std::size_t designatorsEnd = headerSize + entries * designatorSize;
    if (!repairByTolerance(code, designatorsEnd, s.segmentTerminator, s.subfiles)) {
        repairByScanning(code, designatorsEnd, s.segmentTerminator, entries, s.subfiles);
    }
    return true;
}

bool DLIDFormat::locateBySearch(ParserStringRef code, std::size_t headerSize, std::string_view tag,
                                ParserResult& result) {
    const std::size_t length = code.size();
    const std::size_t from = headerSize + 10;
    DLIDSubfile jurisdiction{std::string(tag), length == 0 ? 0 : length - 1, 0};
    std::string lineAndTag = "\n";
    lineAndTag.append(tag);
    const char* found = code.find_substring(lineAndTag, from);
    const bool hasJurisdiction = found != code.end();
    if (hasJurisdiction) {
        const std::size_t p = code.offsetOf(found);
        jurisdiction.offset = p + 1;
        jurisdiction.size = length - p - 1;
    }
    std::string type = "DL";
    const char* main = code.find_substring("DL", from);
    if (main == code.end()) {
        type = "ID";
        main = code.find_substring("ID", from);
    }
    if (main == code.end()) {
        result.setError("DL/ID subfile not found");
        return false;
    }
    const std::size_t offset = code.offsetOf(main) + 2;
    const std::size_t size = jurisdiction.offset > offset ? jurisdiction.offset - offset : 0;
    state().subfiles.push_back({type, offset, size});
    if (hasJurisdiction) state().subfiles.push_back(std::move(jurisdiction));
    return true;
}

bool DLIDStandardFormat::parseSubfileDesignators(ParserStringRef code, std::size_t headerSize,
                                                 ParserResult& result) {
    return readDirectory(code, headerSize, 10, 4, result);
}

bool DLIDSouthCarolinaVersion5Format::parseSubfileDesignators(ParserStringRef code,
                                                              std::size_t headerSize,
                                                              ParserResult& result) {
    return readDirectory(code, headerSize, 11, 5, result);
}

bool DLIDAlbertaVersion3Format::parseSubfileDesignators(ParserStringRef code,
                                                        std::size_t /*headerSize*/,
                                                        ParserResult& /*result*/) {
    const char* found = code.find_substring("DL", 2);
    // Without a "DL" the entry points past the end, and the subfile reader
    // refuses it.
    const std::size_t offset = found == code.end() ? code.size() + 1 : code.offsetOf(found) + 2;
    const std::size_t size = found == code.end() ? code.size() + 1 : code.size() - offset;
    state().subfiles.push_back({"DL", offset, size});
    return true;
}

bool DLIDColoradoVersion10Format::parseSubfileDesignators(ParserStringRef code,
                                                          std::size_t headerSize,
                                                          ParserResult& result) {
    return locateBySearch(code, headerSize, "ZC", result);
}

bool DLIDPennsylvaniaVersion9Format::parseSubfileDesignators(ParserStringRef code,
                                                             std::size_t headerSize,
                                                             ParserResult& result) {
    if (!readDirectory(code, headerSize, 10, 4, result)) return false;
    auto& subfiles = state().subfiles;
    if (subfiles.size() == 2 && subfiles[1].type == "ZI") {
        subfiles.clear();
        return locateBySearch(code, headerSize, "ZI", result);
    }
    return true;
}

}  // namespace parser
