// Public members of plain types that one thread writes while another may read them: both go through here.
#pragma once

#include <atomic>

namespace shared {

template <typename T>
T load(T& member) {
    return std::atomic_ref(member).load(std::memory_order_relaxed);
}

template <typename T>
void store(T& member, T value) {
    std::atomic_ref(member).store(value, std::memory_order_relaxed);
}

}  // namespace shared
