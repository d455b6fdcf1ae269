// The subfile directory of an AAMVA barcode. The standard layout is read by
// DLIDStandardFormat; four issuers' documents break it in ways of their own.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "dlid/dlid_state.h"
#include "qvx/parsed.h"

namespace parser {

class DLIDFormat {
  public:
    explicit DLIDFormat(DLIDParserState& state) : state_(state) {}
    DLIDFormat(const DLIDFormat&) = delete;
    DLIDFormat& operator=(const DLIDFormat&) = delete;
    // Fills the state's subfiles; false once the result's issue is set.
    virtual bool parseSubfileDesignators(ParserStringRef code, std::size_t headerSize,
                                         ParserResult& result) = 0;
    virtual ~DLIDFormat() = default;

    // The format for the header's IIN and version.
    static std::unique_ptr<DLIDFormat> choose(DLIDParserState& state);

  protected:
    DLIDParserState& state() { return state_; }
    // Reads the directory, then repairs it against the terminators found.
    bool readDirectory(ParserStringRef code, std::size_t headerSize, std::size_t designatorSize,
                       std::size_t lengthDigits, ParserResult& result);
    // Ignores the directory: the main subfile and the jurisdiction subfile
    // `tag` are found by searching the text.
    bool locateBySearch(ParserStringRef code, std::size_t headerSize, std::string_view tag,
                        ParserResult& result);

  private:
    DLIDParserState& state_;
};

class DLIDStandardFormat : public DLIDFormat {
  public:
    using DLIDFormat::DLIDFormat;
    bool parseSubfileDesignators(ParserStringRef code, std::size_t headerSize,
                                 ParserResult& result) override;
};

// A five-digit length field.
class DLIDSouthCarolinaVersion5Format : public DLIDFormat {
  public:
    using DLIDFormat::DLIDFormat;
    bool parseSubfileDesignators(ParserStringRef code, std::size_t headerSize,
                                 ParserResult& result) override;
};

// One "DL" subfile to the end, whatever the directory says.
class DLIDAlbertaVersion3Format : public DLIDFormat {
  public:
    using DLIDFormat::DLIDFormat;
    bool parseSubfileDesignators(ParserStringRef code, std::size_t headerSize,
                                 ParserResult& result) override;
};

// The directory cannot be trusted at all.
class DLIDColoradoVersion10Format : public DLIDFormat {
  public:
    using DLIDFormat::DLIDFormat;
    bool parseSubfileDesignators(ParserStringRef code, std::size_t headerSize,
                                 ParserResult& result) override;
};

// A two-entry directory whose "ZI" entry is wrong.
class DLIDPennsylvaniaVersion9Format : public DLIDFormat {
  public:
    using DLIDFormat::DLIDFormat;
    bool parseSubfileDesignators(ParserStringRef code, std::size_t headerSize,
                                 ParserResult& result) override;
};

}  // namespace parser
