#include "common/personal_codes.h"
