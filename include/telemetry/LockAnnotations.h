#pragma once

// Which lock guards what, for clang's -Wthread-safety; nothing to other compilers. Only where the standard library's
// locks are marked as such too, because otherwise clang warns that a mutex is none.
//
// android-base/thread_annotations.h offers the same and does not serve here: g++ warns of each use, and whoever
// includes a public header would have names like REQUIRES as macros.
#if defined(__clang__) && defined(_LIBCPP_ENABLE_THREAD_SAFETY_ANNOTATIONS)
#define TELEMETRY_LOCK_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define TELEMETRY_LOCK_ATTRIBUTE(attribute)
#endif

/// The variable is read and written only by who holds the lock.
#define TELEMETRY_GUARDED_BY(lock) TELEMETRY_LOCK_ATTRIBUTE(guarded_by(lock))

/// The function is called only by who holds the lock.
#define TELEMETRY_REQUIRES(lock) TELEMETRY_LOCK_ATTRIBUTE(requires_capability(lock))

/// The function is not checked. A comment says why it may do without the lock.
#define TELEMETRY_NO_LOCK_CHECK TELEMETRY_LOCK_ATTRIBUTE(no_thread_safety_analysis)
