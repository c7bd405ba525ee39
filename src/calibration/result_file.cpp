#include "calibration/result_file.h"

#include "common/libraries.h"
#include "common/system.h"

namespace {

// The separator is always the host's own system's.
QByteArray resultFilePath(PageCore const& core, ResultFile const& file) {
    auto const part = [&](QByteArray const& name) {
        return file.sanitisesNames ? sanitisedLabel(name) : name;
    };
    std::optional<SensorInfo> const info = core.camera().info();
    if (!core.alive)
        return {};
    return core.widgets.saveDirText().toLocal8Bit() + '\\' + part(core.sensor.fileNamePart) + '_' +
           part(info ? info->name : QByteArray()) + ".ini";
}

} // namespace

void checkSaveDirectory(PageCore& core) {
    PageState& state = core.state;
    if (state.fileState != kNotEvaluated && !isFailed(state.fileState))
        return;
    state.fileState = directoryExists(core.widgets.saveDirText().toLocal8Bit()) ? kReady : kFailed;
}

void saveResultFile(PageCore& core, ResultFile const& file) {
    PageState& state = core.state;
    ShadingHandle const handle = state.shadingHandle;
    if (!handle || isFailed(state.lscStepState))
        return;
    QByteArray const path = resultFilePath(core, file);
    if (!core.alive)
        return;
    state.savedPath = QString::fromLocal8Bit(path);
    int const result = shadefit().sf_DumpRegFile(handle.get(), path.constData(), file.format, 0, 0);
    if (state.shadingHandle == handle) // not reset meanwhile
        state.fileState = result == 0 ? kDone : kFailedOtherwise;
}

QByteArray sanitisedLabel(QByteArray label) {
    for (int i = 0; i < label.size(); ++i) {
        if (beginsTwoByteLetter(label[i])) {
            ++i; // its other half belongs to the letter
            continue;
        }
        switch (char& c = label.data()[i]; c) {
        case '\\':
        case '/':
        case ':':
        case '*':
        case '?':
        case '|':
            c = '-';
            break;
        case '"':
            c = '\'';
            break;
        case '<':
            c = '(';
            break;
        case '>':
            c = ')';
            break;
        default:
            break;
        }
    }
    return label;
}
