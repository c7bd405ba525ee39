#pragma once

#include <chrono>
#include <functional>

/// Every wait of the plug-in: the calling thread sleeps.
void pauseFor(std::chrono::milliseconds duration);

/// Puts another function in the place of the sleep, for example a counter of virtual time; an empty one
/// restores the sleep.
void installPause(std::function<void(std::chrono::milliseconds)> pause);
