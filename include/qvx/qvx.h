// Everything a host application needs to parse scanned codes.
#pragma once

#include "qvx/bc_parser.h"
#include "qvx/core/context.h"
#include "qvx/core/json_value.h"
#include "qvx/data_format.h"
#include "qvx/detect.h"
#include "qvx/issue.h"
#include "qvx/parsed.h"
#include "qvx/parser.h"
#include "qvx/parser_deserializer.h"
#include "qvx/result.h"
#include "qvx/string_ref.h"
