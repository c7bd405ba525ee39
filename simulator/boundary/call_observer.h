#pragma once

extern "C" {

/// Who watches the calls on a stand-in library. Each library takes one by an export of its own,
/// `vy_ObserveCalls` and `sf_ObserveCalls`, which is no part of its published interface; null ends the
/// watching. The observer stays the caller's and outlives the watching. Texts are in the local code page and
/// valid during the call; a result is empty when the function has none. A function that another one of the
/// same library uses is not told.
struct CallObserver {
    void* context;
    void (*began)(void* context, char const* function, char const* arguments);
    void (*ended)(void* context, char const* result);
};

using ObserveCalls = void (*)(CallObserver const* observer);

} // extern "C"
