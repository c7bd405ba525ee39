#include "tests/fakes/fake_libraries.h"

#include "tests/fakes/fake_host.h"

namespace {

FakeLibraries* libraries = nullptr;
int handleStandIn = 0;
int cameraStandIn = 0;

void note(std::string const& call) {
    if (FakeHost* const host = FakeHost::current())
        host->note(call);
}

sf_Handle* create(std::string const& call) {
    note(call);
    if (!libraries->createsHandle)
        return nullptr;
    ++libraries->handlesAlive;
    // A new address each time, so that a routine that confuses two calibrations is found out.
    return reinterpret_cast<sf_Handle*>(&libraries->handles.emplace_back());
}

Veyra2 cameraTable() {
    Veyra2 table;
    FakeHeadboard::fillIn(table);
    table.vy_ExistsBitfield = [](vy_Camera*, char const* reg, char const* bitfield) {
        note(std::string("existsBitfield ") + reg + ' ' + bitfield);
        auto const& registers = libraries->headboard.registers;
        auto const found = registers.find(reg);
        return int(libraries->bitfields.contains(std::string(reg) + "." + bitfield) ||
                   (found != registers.end() && found->second.bitfields.contains(bitfield)));
    };
    table.vy_IsSOC = [](vy_Camera*) {
        note("isSOC");
        return int(libraries->systemOnChip);
    };
    table.vy_SensorInfo = [](vy_Camera*) -> vy_SensorDescription const* {
        note("sensorInfo");
        return libraries->hasDescription ? &libraries->description : nullptr;
    };
    return table;
}

Shadefit solverTable() {
    Shadefit table;
    table.sf_Create = [](uint32_t kind, uint32_t variant, int32_t minusOne) {
        return create("create " + std::to_string(kind) + ' ' + std::to_string(variant) + ' ' +
                      std::to_string(minusOne));
    };
    table.sf_Create2 = [](void const* data, uint32_t kind, uint32_t variant, uint32_t bits) {
        return create("create2 " + std::string(data ? "data " : "null ") + std::to_string(kind) + ' ' +
                      std::to_string(variant) + ' ' + std::to_string(bits));
    };
    table.sf_SetInputImage2 = [](sf_Handle*, void const* frame, uint32_t width, uint32_t height,
                                 uint32_t bits, uint32_t phase, uint32_t orientation, uint32_t zero,
                                 int32_t a, int32_t b) {
        libraries->frame = frame;
        std::string call = "setInputImage2";
        for (int64_t const part : {int64_t{width}, int64_t{height}, int64_t{bits}, int64_t{phase},
                                   int64_t{orientation}, int64_t{zero}, int64_t{a}, int64_t{b}})
            call += ' ' + std::to_string(part);
        note(call);
        return libraries->inputAnswer;
    };
    table.sf_SetInputImageYcbcr = [](sf_Handle*, void const* frame, uint32_t, uint32_t,
                                     sf_YcbcrInput const* input, int32_t, int32_t) {
        libraries->frame = frame;
        libraries->ycbcrInput = *input;
        note("setInputImageYcbcr");
        return libraries->inputAnswer;
    };
    table.sf_FindSolution = [](sf_Handle*, sf_SolutionParams const* params) {
        libraries->solution = *params;
        note("findSolution");
        return libraries->solutionAnswer;
    };
    table.sf_FindApga = [](sf_Handle*, sf_ApgaParams const* params) {
        libraries->apga = *params;
        note("findApga");
        return libraries->apgaAnswer;
    };
    table.sf_FindAutoPga = [](sf_Handle*, sf_ApgaParams const* params) {
        libraries->apga = *params;
        note("findAutoPga");
        return libraries->apgaAnswer;
    };
    table.sf_DumpRegList = [](sf_Handle*) -> sf_RegList const* {
        note("dumpRegList");
        return libraries->hasList ? &libraries->list : nullptr;
    };
    table.sf_DumpRegFile = [](sf_Handle*, char const* path, uint32_t format, uint32_t, uint32_t) {
        libraries->path = path;
        note("dumpRegFile " + std::to_string(format));
        return libraries->fileAnswer;
    };
    table.sf_Destroy = [](sf_Handle*) {
        --libraries->handlesAlive;
        note("destroy");
    };
    return table;
}

} // namespace

FakeLibraries::FakeLibraries() {
    libraries = this;
    list = {int32_t(entries.size()), entries.data()};
    description.recordSize = sizeof description;
    description.imageWidth = 1920;
    description.imageHeight = 1080;
    description.name = "PART";
    description.sensorData = &handleStandIn;
    installVeyra2(cameraTable());
    installShadefit(solverTable());
}

FakeLibraries::~FakeLibraries() {
    installVeyra2({});
    installShadefit({});
    libraries = nullptr;
}

vy_Camera* FakeLibraries::camera() {
    return reinterpret_cast<vy_Camera*>(&cameraStandIn);
}
