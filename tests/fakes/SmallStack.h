#pragma once

#include <pthread.h>

#include <cstddef>
#include <functional>

namespace Velo::OS::Telemetry::fakes {

#ifdef TELEMETRY_SANITIZED
constexpr size_t kStackSize = 16 << 20;  // a sanitizer's frames are several times as large
#else
constexpr size_t kStackSize = 1 << 20;
#endif

/// Runs the work on a thread with the stack that the platform gives its threads.
inline void onSmallStack(std::function<void()> work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, kStackSize);
    const auto run = [](void* own) -> void* { return (*static_cast<std::function<void()>*>(own))(), nullptr; };
    pthread_t thread{};
    pthread_create(&thread, &attributes, run, &work);
    pthread_join(thread, nullptr);
}

}  // namespace Velo::OS::Telemetry::fakes
