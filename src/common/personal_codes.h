// Decoders of the personal codes that several identity formats share
// (sex, height, eye and hair colour). Anything unknown gives JSON null.
#pragma once

#include <nlohmann/json.hpp>

#include "qvx/string_ref.h"

namespace parser {

// By the first byte: 1/M/m "male", 2/F/f "female", 9 "unspecified".
nlohmann::json sexFromCode(ParserStringRef code);
// {"cm", "inch"} from inches (below 100), centimetres (100 to 300) or feet and
// inches written FII (above 300).
nlohmann::json heightFromCode(ParserStringRef code);
nlohmann::json eyeColourFromCode(ParserStringRef code);
nlohmann::json hairColourFromCode(ParserStringRef code);

}  // namespace parser
