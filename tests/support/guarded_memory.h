#pragma once

#include <cstddef>
#include <cstdint>

/// Memory between two pages that nobody may touch. What is placed in it lies right at one of them, and under
/// the address sanitizer the rest of the memory may not be touched either.
class GuardedMemory {
public:
    /// `size` is rounded up to whole pages.
    explicit GuardedMemory(size_t size);
    ~GuardedMemory();
    GuardedMemory(GuardedMemory const&) = delete;
    GuardedMemory& operator=(GuardedMemory const&) = delete;

    [[nodiscard]] size_t size() const { return m_size; }
    /// Room for `bytes` bytes, at most `size()`, right before the rear guard page or right behind the front
    /// one. It takes the place of what was placed before, whose bytes stay.
    [[nodiscard]] uint8_t* placeAtRear(size_t bytes) { return place(m_size - bytes, bytes); }
    [[nodiscard]] uint8_t* placeAtFront(size_t bytes) { return place(0, bytes); }

private:
    [[nodiscard]] uint8_t* place(size_t offset, size_t bytes);

    size_t const m_size;
    uint8_t* const m_first;
};
