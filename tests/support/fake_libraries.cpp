#include "tests/support/fake_libraries.h"

#include "common/system.h"
#include "tests/support/fake_host.h"
#include "tests/support/must_hold.h"

#include <algorithm>
#include <numeric>

namespace kestra {
namespace {
FakeLibraries* libraries = nullptr;
int handleStandIn = 0;
volatile uint32_t sink = 0;

template <typename... Parts>
sf_Handle* create(uint8_t bytesPerPixel, Parts const&... call) {
    noteCall(call...);
    if (!libraries->createsHandle)
        return nullptr;
    ++libraries->handlesAlive;
    // A new address each time, so that a routine that confuses two calibrations is found out.
    return reinterpret_cast<sf_Handle*>(&libraries->handles.emplace_back(bytesPerPixel));
}

uint8_t& bytesPerPixel(sf_Handle* handle) {
    auto& bytes = *reinterpret_cast<uint8_t*>(handle);
    MUST_HOLD(bytes != 0); // else it was destroyed
    return bytes;
}

// The library reads all that it is told of.
void readWhole(void const* frame, uint64_t bytes) {
    libraries->frame = frame;
    auto const* const first = static_cast<uint8_t const*>(frame);
    sink = std::accumulate(first, first + bytes, 0U);
}

int findTable(char const* name, sf_ApgaParams const& params) {
    libraries->apga = params;
    noteCall(name, params.illuminantSlot, params.colourTemperature, params.falloffPercent, params.radius);
    return libraries->apgaAnswer;
}

Veyra2 cameraTable() {
    Veyra2 table;
    FakeHeadboard::fillIn(table);
    table.vy_ExistsBitfield = [](vy_Camera*, char const* reg, char const* bitfield) {
        noteCall("existsBitfield", reg, bitfield);
        auto const& registers = libraries->headboard.registers;
        auto const found = registers.find(reg);
        return int(libraries->bitfields.contains(std::string(reg) + "." + bitfield) ||
                   (found != registers.end() && found->second.bitfields.contains(bitfield)));
    };
    table.vy_IsSOC = [](vy_Camera*) {
        noteCall("isSOC");
        return int(libraries->systemOnChip);
    };
    table.vy_SensorInfo = [](vy_Camera*) -> vy_SensorDescription const* {
        noteCall("sensorInfo");
        return libraries->hasDescription ? &libraries->description : nullptr;
    };
    return table;
}

Shadefit solverTable() {
    Shadefit table;
    table.sf_Create = [](uint32_t kind, uint32_t variant, int32_t minusOne) {
        return create(2, "create", kind, variant, minusOne);
    };
    table.sf_Create2 = [](void const* data, uint32_t kind, uint32_t variant, uint32_t bits) {
        constexpr uint32_t kRgbInputKind = 16;
        return create(kind == kRgbInputKind ? 4 : 1, "create2", data ? "data" : "null", kind, variant, bits);
    };
    table.sf_SetInputImage2 = [](sf_Handle* handle, void const* frame, uint32_t width, uint32_t height,
                                 uint32_t bits, uint32_t phase, uint32_t orientation, uint32_t zero,
                                 int32_t a, int32_t b) {
        uint64_t const pixelBytes = std::max<uint64_t>(bytesPerPixel(handle), bits > 8 ? 2 : 1);
        readWhole(frame, uint64_t{width} * height * pixelBytes);
        noteCall("setInputImage2", width, height, bits, phase, orientation, zero, a, b);
        return libraries->inputAnswer;
    };
    table.sf_SetInputImageYcbcr = [](sf_Handle*, void const* frame, uint32_t width, uint32_t height,
                                     sf_YcbcrInput const* input, int32_t, int32_t) {
        readWhole(frame, uint64_t{width} * height * 2);
        libraries->ycbcrInput = *input;
        noteCall("setInputImageYcbcr", width, height);
        return libraries->inputAnswer;
    };
    table.sf_FindSolution = [](sf_Handle*, sf_SolutionParams const* params) {
        libraries->solution = *params;
        noteCall("findSolution");
        return libraries->solutionAnswer;
    };
    table.sf_FindApga = [](sf_Handle*, sf_ApgaParams const* params) {
        return findTable("findApga", *params);
    };
    table.sf_FindAutoPga = [](sf_Handle*, sf_ApgaParams const* params) {
        return findTable("findAutoPga", *params);
    };
    table.sf_DumpRegList = [](sf_Handle*) -> sf_RegList const* {
        noteCall("dumpRegList");
        return libraries->hasList ? &libraries->list : nullptr;
    };
    table.sf_DumpRegFile = [](sf_Handle*, char const* path, uint32_t format, uint32_t, uint32_t) {
        libraries->path = path;
        noteCall("dumpRegFile", format);
        return libraries->fileAnswer;
    };
    table.sf_Destroy = [](sf_Handle* handle) {
        bytesPerPixel(handle) = 0;
        --libraries->handlesAlive;
        noteCall("destroy");
    };
    return table;
}
} // namespace

LibraryAnswers::LibraryAnswers() {
    description.recordSize = sizeof description;
    description.imageWidth = 1920;
    description.imageHeight = 1080;
    description.name = "PART";
    description.sensorData = &handleStandIn;
}

FakeLibraries::FakeLibraries() {
    libraries = this;
    resetAnswers();
    installVeyra2(cameraTable());
    installShadefit(solverTable());
}

FakeLibraries::~FakeLibraries() {
    installVeyra2({});
    installShadefit({});
    pauseFor.replace({});
    libraries = nullptr;
}

void FakeLibraries::resetAnswers() {
    static_cast<LibraryAnswers&>(*this) = {};
    list = {int32_t(entries.size()), entries.data()};
}
} // namespace kestra
