#pragma once

#include "tests/support/input_reader.h"

/// Delivers a frame whose type, sizes, pitch and pixels come from a fuzz input. When they hold together the
/// pixels are really there and nothing around them may be touched; when they do not, nothing at all may be.
/// Up to four at a time, one inside the delivery of the other.
void deliverFrame(InputReader& input);

/// Delivers displayed frames and raw ones, as good ones are.
void deliverGoodFrames(int displayed, int raw);
