#pragma once

#include "headboard/record_format.h"

/// The record "Time Stamp" of the current UTC time, as text such as "2024/05/31 23:59:07" with its NUL.
[[nodiscard]] EepromRecord makeTimeStamp();
