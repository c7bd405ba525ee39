#pragma once

#include "common/libraries.h"
#include "tests/support/fake_headboard.h"

#include <deque>
#include <set>
#include <string>
#include <vector>

namespace kestra {
/// What the stand-ins of both libraries answer.
struct LibraryAnswers {
    LibraryAnswers();

    // The camera's side.
    std::set<std::string> bitfields; ///< existing ones, by "register.bitfield"
    bool systemOnChip = false;
    bool hasDescription = true;
    vy_SensorDescription description{};

    // The solver's side.
    bool createsHandle = true;
    int inputAnswer = 1;
    int solutionAnswer = 0;
    int apgaAnswer = 0;
    int fileAnswer = 0;
    bool hasList = true;
    std::vector<sf_RegEntry> entries = {{1, 0x3600, 7}, {0, 0x3602, 8}};
};

/// Stand-ins for both libraries that answer from plain fields, read the frames that they are handed and log
/// their calls into the current `FakeHost`. Installed while it lives; one lives at a time.
class FakeLibraries : public LibraryAnswers {
public:
    FakeLibraries();
    ~FakeLibraries();

    [[nodiscard]] vy_Camera* camera() { return headboard.camera(); }
    /// The answers of the beginning again.
    void resetAnswers();

    FakeHeadboard headboard; ///< registers by name, their bitfields, and the EEPROM
    sf_RegList list{};       ///< of the solver; over `entries` at first
    int handlesAlive = 0;
    /// Every handle that was created, with the bytes of a pixel that its sensor's page hands over as 8 bits;
    /// 0 when it was destroyed.
    std::deque<uint8_t> handles;

    // What the solver was handed last.
    sf_YcbcrInput ycbcrInput{};
    sf_SolutionParams solution{};
    sf_ApgaParams apga{};
    void const* frame = nullptr;
    std::string path;
};
} // namespace kestra
