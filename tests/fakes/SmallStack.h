#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>

namespace Velo::OS::Telemetry::fakes {

/// Runs the work on a thread with the stack of 1 MiB that the platform gives its threads; with more where sanitizers
/// make frames several times as large.
inline void onSmallStack(std::function<void()> work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, TELEMETRY_STACK_MIB << 20), 0);
    const auto run = [](void* own) -> void* { return (*static_cast<std::function<void()>*>(own))(), nullptr; };
    pthread_t thread{};
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
    pthread_join(thread, nullptr);
}

}  // namespace Velo::OS::Telemetry::fakes
