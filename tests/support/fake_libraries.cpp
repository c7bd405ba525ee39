#include "tests/support/fake_libraries.h"

#include "common/system.h"
#include "tests/support/fake_host.h"

namespace kestra {
namespace {
FakeLibraries* libraries = nullptr;
int handleStandIn = 0;

template <typename... Parts>
sf_Handle* create(Parts const&... call) {
    noteCall(call...);
    if (!libraries->createsHandle)
        return nullptr;
    ++libraries->handlesAlive;
    // A new address each time, so that a routine that confuses two calibrations is found out.
    return reinterpret_cast<sf_Handle*>(&libraries->handles.emplace_back());
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
        return create("create", kind, variant, minusOne);
    };
    table.sf_Create2 = [](void const* data, uint32_t kind, uint32_t variant, uint32_t bits) {
        return create("create2", data ? "data" : "null", kind, variant, bits);
    };
    table.sf_SetInputImage2 = [](sf_Handle*, void const* frame, uint32_t width, uint32_t height,
                                 uint32_t bits, uint32_t phase, uint32_t orientation, uint32_t zero,
                                 int32_t a, int32_t b) {
        libraries->frame = frame;
        noteCall("setInputImage2", width, height, bits, phase, orientation, zero, a, b);
        return libraries->inputAnswer;
    };
    table.sf_SetInputImageYcbcr = [](sf_Handle*, void const* frame, uint32_t width, uint32_t height,
                                     sf_YcbcrInput const* input, int32_t, int32_t) {
        libraries->frame = frame;
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
    table.sf_Destroy = [](sf_Handle*) {
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
