/// The type vocabulary of values: the coarse main kind of a value (LxMainTypeKind.h).
#pragma once

#include "lorvane/types/LxMainTypeKind.h"
