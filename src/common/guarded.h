#pragma once

#include <QtDebug>
#include <exception>

/// Runs a call and lets nothing that it throws out; the cause is told under `name`. False when the call was
/// cut short.
template <typename Call>
bool guarded(char const* name, Call call) noexcept {
    try {
        call();
        return true;
    } catch (std::exception const& error) {
        qWarning("KestraMfr: %s: %s", name, error.what());
    } catch (...) {
        qWarning("KestraMfr: %s: unknown error", name);
    }
    return false;
}
