#include "common/text.h"
