#pragma once

#include "tests/calibration/page_fixture.h"
